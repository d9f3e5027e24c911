// Data block of a matrix: both extents as 64-bit counts, then the elements in the storage order of the matrix. One call
// writes the elements from where they stand, and one call reads them to where they will stay.

#include "BuiltInTraitsBodies.h"
#include "ElementBlock.h"
#include "ValueSerializer.h"

namespace Qor::Tivor {

namespace {

constexpr std::uint64_t extentsSize = 2 * sizeof(std::uint64_t);

template <class T>
class MatrixSerializer final : public ValueSerializer<T> {
public:
    using ValueSerializer<T>::ValueSerializer;
    using Element = typename T::value_type;

    std::uint64_t DataFromBinary(std::uint64_t size, Core::BinaryInputStream& binaryStream) override {
        Core::DataInputStream stream(binaryStream);
        std::uint64_t size1 = 0;
        std::uint64_t size2 = 0;
        if (size < extentsSize)
            RaiseInvalidSize(this->m_object, size);
        if (!stream.Read(size1) || !stream.Read(size2))
            RaiseEndOfData(this->m_object, 0, size);
        const std::uint64_t bytes =
            RequireElements(this->m_object, {size1, size2}, sizeof(Element), size - extentsSize, binaryStream);
        this->m_object.SetValue(InputWhole(this->m_object, binaryStream, bytes, [&] {
            return T(static_cast<std::size_t>(size1), static_cast<std::size_t>(size2));
        }));
        return extentsSize + bytes;
    }

    std::uint64_t DataToBinary(Core::BinaryOutputStream& binaryStream) override {
        const auto lock = this->m_object.GetDataLock();
        const T& matrix = this->m_object.GetValue();
        Core::DataOutputStream stream(binaryStream);
        stream.Write(std::uint64_t{matrix.size1()});
        stream.Write(std::uint64_t{matrix.size2()});
        binaryStream.Write(matrix.data(), matrix.size() * sizeof(Element));
        return GetStoredSize(matrix);
    }

private:
    std::uint64_t GetStoredSize(const T& matrix) const override {
        return extentsSize + matrix.size() * sizeof(Element);
    }
};

} // namespace

template <class T>
std::shared_ptr<Serializer> BuiltInTraits<T>::MakeSerializer(DataOf<T>& object) {
    return std::make_shared<MatrixSerializer<T>>(object);
}

#define TIVOR_VALUE TIVOR_DEFINE_VALUE
TIVOR_MATRIX_VALUES

} // namespace Qor::Tivor
