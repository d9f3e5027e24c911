// Data block of a matrix: both extents as 64-bit counts, then the elements in the storage order of the matrix. One call
// writes the elements from where they stand, and one call reads them to where they will stay.

#include "BuiltInTraitsBodies.h"
#include "ValueSerializer.h"

#include <QorCore/DataStreams.h>

#include <algorithm>

namespace Qor::Tivor {

namespace {

constexpr std::uint64_t extentsSize = 2 * sizeof(std::uint64_t);

template <class T>
class MatrixSerializer final : public ValueSerializer<T> {
public:
    using ValueSerializer<T>::ValueSerializer;
    using Element = std::remove_cvref_t<decltype(*std::declval<T&>().data())>;

    std::uint64_t GetDataSize_bytes() const override {
        const auto lock = this->m_object.GetDataLock();
        return extentsSize + this->m_object.GetValue().size() * sizeof(Element);
    }
    bool DataSizeIsConstant() const override { return false; }

    std::uint64_t DataFromBinary(std::uint64_t size, Core::BinaryInputStream& binaryStream) override {
        Core::DataInputStream stream(binaryStream);
        std::uint64_t size1 = 0;
        std::uint64_t size2 = 0;
        if (size < extentsSize)
            this->RaiseInvalidSize(size);
        if (!stream.Read(size1) || !stream.Read(size2))
            this->RaiseEndOfStream(0, size);
        const std::uint64_t bytes = RequireBytes(size1, size2, size - extentsSize, binaryStream);
        T matrix = InputElements(size1, size2, bytes, stream);
        this->m_object.SetValue(std::move(matrix));
        return extentsSize + bytes;
    }

    std::uint64_t DataToBinary(Core::BinaryOutputStream& binaryStream) override {
        const auto lock = this->m_object.GetDataLock();
        const T& matrix = this->m_object.GetValue();
        Core::DataOutputStream stream(binaryStream);
        stream.Write(std::uint64_t{matrix.size1()});
        stream.Write(std::uint64_t{matrix.size2()});
        binaryStream.Write(matrix.data(), matrix.size() * sizeof(Element));
        return extentsSize + matrix.size() * sizeof(Element);
    }

private:
    // Where nobody knows how much will come, the elements get their place when they have all arrived.
    T InputElements(std::uint64_t size1, std::uint64_t size2, std::uint64_t bytes,
                    Core::DataInputStream& stream) const {
        std::string arrived;
        const bool gathers = !stream.GetStream().BytesLeft();
        if (gathers && !stream.ReadBytes(arrived, bytes))
            this->RaiseEndOfStream(extentsSize + arrived.size(), extentsSize + bytes);
        T matrix(static_cast<std::size_t>(size1), static_cast<std::size_t>(size2));
        if (gathers)
            std::copy_n(arrived.data(), arrived.size(), reinterpret_cast<char*>(matrix.data()));
        else if (const std::uint64_t got = stream.GetStream().Read(matrix.data(), bytes); got < bytes)
            this->RaiseEndOfStream(extentsSize + got, extentsSize + bytes);
        return matrix;
    }

    // The bytes of the elements, checked against the block and against what the stream still has: nothing is allocated
    // on the word of two numbers.
    std::uint64_t RequireBytes(std::uint64_t size1, std::uint64_t size2, std::uint64_t available,
                               const Core::BinaryInputStream& stream) const {
        std::uint64_t bytes = 0;
        if (__builtin_mul_overflow(size1, size2, &bytes) || __builtin_mul_overflow(bytes, sizeof(Element), &bytes) ||
            bytes > available)
            Core::Error::RaiseError(Core::IOError(Core::FormatText(
                                        "A %1% of %2% x %3% elements of %4% bytes does not fit its block of %5% "
                                        "bytes",
                                        {this->m_object.GetTypeName(), size1, size2, sizeof(Element), available})),
                                    QOR_CODE_CONTEXT("Serializer"), "Qor.Tivor.Serializer");
        if (const std::optional<std::uint64_t> left = stream.BytesLeft(); left && *left < bytes)
            this->RaiseEndOfStream(extentsSize + *left, extentsSize + bytes);
        return bytes;
    }
};

} // namespace

template <class T, ETypeID id>
std::shared_ptr<Serializer> BuiltInTraits<T, id>::MakeSerializer(Data<T>& object) {
    return Details::MakePooled<id, EPooled::serializer, MatrixSerializer<T>>(object);
}

TIVOR_BUILT_IN_MATRICES

} // namespace Qor::Tivor
