#pragma once

#include "../serialization/BuiltInTraitsBodies.h"
#include "../serialization/ElementBlock.h"
#include "../serialization/ValueSerializer.h"

#include <QorCore/BoundedStreams.h>
#include <Tivor/ArrayDataObjects.h>

#include <array>

namespace Qor::Tivor {

/// How the positions of a T along one dimension are asked for.
template <class T>
struct StoredPositions {
    Core::QorConstPtr<Core::UnitDescriptor> (T::*getUnits)() const;
    Core::QorConstArray<double> (T::*getPositions)() const;
};

/// The same as they were read.
struct ReadPositions {
    std::shared_ptr<Core::UnitDescriptor> units = Core::UnitDescriptor::Create({}, {});
    boost::shared_array<double> positions;
    std::uint64_t size = 0;
};

/// For each dimension a row of `StoredPositions`, and how to `Make` a T from as many `ReadPositions`.
template <class T>
struct PositionStorage;

/// Data block: for each dimension the unit, a 64-bit count, and the positions as they lie in memory.
template <class T>
class ArrayPositionSerializer final : public ValueSerializer<T> {
public:
    using ValueSerializer<T>::ValueSerializer;

    std::uint64_t DataFromBinary(std::uint64_t size, Core::BinaryInputStream& binaryStream) override {
        Core::BoundedInputStream block(binaryStream, size); // no length inside may lead out of it
        std::array<ReadPositions, rows.size()> dimensions;
        for (ReadPositions& dimension : dimensions)
            Input(dimension, block, size);
        this->m_object.SetValue(std::apply(&PositionStorage<T>::Make, dimensions));
        return size - block.Remaining();
    }

    std::uint64_t DataToBinary(Core::BinaryOutputStream& binaryStream) override {
        const auto lock = this->m_object.GetDataLock();
        const T& value = this->m_object.GetValue();
        Core::DataOutputStream stream(binaryStream);
        for (const StoredPositions<T>& row : rows) {
            const Core::QorConstArray<double> positions = (value.*row.getPositions)();
            stream.Write(*(value.*row.getUnits)());
            stream.Write(std::uint64_t{positions.size()});
            binaryStream.Write(positions.get(), positions.size() * sizeof(double));
        }
        return GetStoredSize(value);
    }

private:
    static constexpr auto& rows = PositionStorage<T>::rows;

    // What `InputWhole` fills.
    struct FreshPositions {
        double* data() { return positions.get(); }
        boost::shared_array<double> positions;
    };

    void Input(ReadPositions& dimension, Core::BoundedInputStream& block, std::uint64_t size) const {
        Core::DataInputStream stream(block);
        if (!stream.Read(*dimension.units))
            RaiseEndOfData(this->m_object, size - block.Remaining(), size);
        dimension.size = ReadCount(this->m_object, stream, block.Remaining(), sizeof(double));
        dimension.positions =
            InputWhole(this->m_object, block, dimension.size * sizeof(double), [&] {
                return FreshPositions{AllocateArray<double>(static_cast<std::size_t>(dimension.size))};
            }).positions;
    }

    std::uint64_t GetStoredSize(const T& value) const override {
        std::uint64_t size = 0;
        for (const StoredPositions<T>& row : rows)
            size += (value.*row.getUnits)()->GetSerializedSize() + sizeof(std::uint64_t) +
                    (value.*row.getPositions)().size() * sizeof(double);
        return size;
    }
};

template <class T>
std::shared_ptr<Serializer> BuiltInTraits<T>::MakeSerializer(DataOf<T>& object) {
    return std::make_shared<ArrayPositionSerializer<T>>(object);
}

} // namespace Qor::Tivor
