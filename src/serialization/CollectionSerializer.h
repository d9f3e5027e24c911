#pragma once

#include "BuiltInTraitsBodies.h"
#include "ElementBlock.h"
#include "SortedTexts.h"
#include "StoredElement.h"
#include "ValueSerializer.h"

#include <QorCore/BoundedStreams.h>

#include <optional>
#include <vector>

namespace Qor::Tivor {

/// Warns that a collection holds fewer elements than were stored.
void WarnOfShrinking(const DataObject& object, std::uint64_t stored, std::uint64_t kept);

/// Data block of a vector or a collection: a 64-bit count, then the elements; of maps, key and value each. Elements
/// that lie in memory as they are stored are written by one call from where they stand, and read by one call to where
/// they will stay.
template <class T>
class CollectionSerializer final : public ValueSerializer<T> {
public:
    using ValueSerializer<T>::ValueSerializer;

    std::uint64_t DataFromBinary(std::uint64_t size, Core::BinaryInputStream& binaryStream) override {
        Core::BoundedInputStream block(binaryStream, size); // no length inside may lead out of it
        Core::DataInputStream stream(block);
        const std::uint64_t count = ReadCount(this->m_object, stream, size, GetLeastSize());
        T collection = InputElements(block, count, size);
        if (collection.size() < count)
            WarnOfShrinking(this->m_object, count, collection.size());
        this->m_object.SetValue(std::move(collection));
        return size - block.Remaining();
    }

    std::uint64_t DataToBinary(Core::BinaryOutputStream& binaryStream) override {
        const auto lock = this->m_object.GetDataLock();
        const T& collection = this->m_object.GetValue();
        Core::DataOutputStream stream(binaryStream);
        stream.Write(std::uint64_t{collection.size()});
        if constexpr (isBlock)
            binaryStream.Write(collection.data(), collection.size() * sizeof(Element));
        else if constexpr (isStoredAsIs)
            for (const Element& element : collection)
                Details::WriteElement(stream, element);
        else
            WriteSorted(stream, collection);
        return GetStoredSize(collection);
    }

private:
    using Element = typename T::value_type;

    static constexpr bool isMap = Details::IsMap<T>;
    static constexpr bool isBlock = Details::isStoredRaw<Element> && requires(T & t) { t.data(); };
    static constexpr bool isFixedSize = std::is_trivially_copyable_v<Element> || Details::isStoredRaw<Element>;
    // What has no order of its own, and wide texts, whose own order depends on the platform, is sorted by UTF-8 bytes.
    static constexpr bool isStoredAsIs = !Details::IsSortedWhenStored<T>;

    static std::uint64_t GetLeastSize() {
        if constexpr (isMap)
            return 2 * Details::GetLeastSize<typename T::key_type>();
        else
            return Details::GetLeastSize<Element>();
    }

    std::uint64_t GetStoredSize(const T& collection) const override {
        std::uint64_t size = sizeof(std::uint64_t);
        if constexpr (isFixedSize)
            return size + collection.size() * sizeof(Element);
        else
            for (const Element& element : collection) {
                if constexpr (isMap)
                    size += Details::GetStoredSize(element.first) + Details::GetStoredSize(element.second);
                else
                    size += Details::GetStoredSize(element);
            }
        return size;
    }

    static void WriteSorted(Core::DataOutputStream& stream, const T& collection) {
        if constexpr (isMap)
            WriteSortedPairs(stream, collection);
        else
            WriteSortedTexts(stream, collection);
    }

    T InputElements(Core::BoundedInputStream& block, std::uint64_t count, std::uint64_t size) const {
        if constexpr (isBlock) {
            return InputWhole(this->m_object, block, count * sizeof(Element),
                              [&] { return T(static_cast<std::size_t>(count)); });
        } else if constexpr (requires(T & t, Element e) { t.insert(t.end(), e); }) {
            T collection;
            InputEach(collection, block, count, size);
            return collection;
        } else {
            std::vector<Element> elements;
            InputEach(elements, block, count, size);
            T collection(elements.size());
            std::move(elements.begin(), elements.end(), collection.begin());
            return collection;
        }
    }

    static bool HasNoPlace(const Element& element) {
        if constexpr (std::is_floating_point_v<Element> && requires { typename T::key_type; })
            return element != element;
        else
            return false;
    }

    // Memory is taken as elements arrive, in step with the bytes that they take in the stream.
    template <class Collection>
    void InputEach(Collection& collection, Core::BoundedInputStream& block, std::uint64_t count,
                   std::uint64_t size) const {
        Core::DataInputStream stream(block);
        const auto require = [&](bool arrived) {
            if (!arrived)
                RaiseEndOfData(this->m_object, size - block.Remaining(), size);
        };
        if constexpr (isMap) {
            typename T::key_type key;
            typename T::mapped_type value;
            for (; count > 0; --count) {
                require(Details::ReadElement(stream, key) && Details::ReadElement(stream, value));
                collection.insert_or_assign(collection.end(), std::move(key), std::move(value));
            }
        } else {
            Element element{}; // one for all: unitized values share their unit with the one before
            std::optional<Element> unordered;
            for (; count > 0; --count) {
                require(Details::ReadElement(stream, element));
                if (!HasNoPlace(element))
                    collection.insert(collection.end(), element);
                else if (!unordered)
                    unordered = element;
            }
            if (unordered) // NaN goes where nothing else is, or else would keep all others away
                collection.insert(collection.end(), *unordered);
        }
    }
};

template <class T>
std::shared_ptr<Serializer> BuiltInTraits<T>::MakeSerializer(DataOf<T>& object) {
    return std::make_shared<CollectionSerializer<T>>(object);
}

} // namespace Qor::Tivor
