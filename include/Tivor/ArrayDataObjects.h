#pragma once

#include <QorCore/Pointers.h>
#include <Tivor/BuiltInDataObjects.h>

#include <span>

namespace Qor::Tivor {

/// A shared one-dimensional array of numbers as a data object: the samples of profiles, positions, masks. T is one of
/// the thirteen element types of `TIVOR_ARRAY_ELEMENT_TYPES`.
///
/// Stored form: the element's width (32 bits), the count (64 bits), the elements as they lie in memory, a bool as one
/// byte 0 or 1.
///
/// Thread rule: with locking enabled every operation here holds the object's lock; the elements that `GetData` and
/// `GetElements` hand out are the caller's to guard by `GetDataLock`.
template <class T>
class Array final : public MutexLockableDataObject {
public:
    using ElementType = T;

    /// `count` zeros.
    explicit Array(std::size_t count = 0);
    /// Shares the elements with the caller. Raises `NullPointerError` for elements that are not there.
    Array(boost::shared_array<T> elements, std::size_t count);
    /// A copy of the elements.
    explicit Array(std::span<const T> elements);
    Array(const Array& other);
    Array& operator=(const Array&) = delete;
    ~Array() override;

    using DataObject::Clone;
    using DataObject::GetTypeID;
    using DataObject::HoldsSameValueAs;
    using DataObject::ToString;

    ETypeID GetTypeID() override;
    /// The element type.
    void GetBaseDataTypeInfo(ETypeID& typeID, std::string& typeName) const override;
    std::string GetTypeName() const override;
    /// True for `boost::shared_array<T>`.
    bool HoldsType(const std::type_info& type) const override;
    bool HoldsSameTypeAs(const DataObject& other) const override;
    /// Same count and same elements; NaN equals NaN.
    boost::logic::tribool HoldsSameValueAs(const DataObject& other) override;
    bool EnableSerialization(bool enable) override;
    std::shared_ptr<Serializer> GetSerializer() override;
    std::shared_ptr<DataObject> Clone() override;
    std::string ToString() override;

    /// Makes the object refer to other elements, shared with the caller; raises like the constructor.
    bool SetData(boost::shared_array<T> elements, std::size_t count);
    /// Copies the elements: over the ones that are here, so that all who share them see it, when there are as many,
    /// else into a new array.
    void SetValue(std::span<const T> elements);

    std::size_t GetCount() const;
    /// Shared with this object; may be null where there are no elements.
    boost::shared_array<T> GetData();
    Core::QorConstArray<T> GetData() const;
    /// The elements, for as long as this object holds them.
    std::span<T> GetElements();
    std::span<const T> GetElements() const;

private:
    class ArraySerializer;

    boost::shared_array<T> m_elements;
    std::size_t m_count;
};

/// An array of `count` elements that are not set, aligned and backed by huge pages as matrices are.
template <class T>
boost::shared_array<T> AllocateArray(std::size_t count) {
    Nalix::Vector<T> block(count);
    return boost::shared_array<T>(block.data(), [block](T*) {});
}

/// Whether the object is an `Array` of some type, by its identifier: an array whose class is not known is one too.
TIVOR_API bool IsScalarArrayData(const DataObject& object);
/// Whether the object holds a matrix of either storage order.
TIVOR_API bool IsMatrixData(const DataObject& object);

#define TIVOR_ROW(T, STEM, code, position, name) extern template class TIVOR_API Array<T>;
TIVOR_ARRAY_ELEMENT_TYPES(TIVOR_ROW)
#undef TIVOR_ROW

/// A new data object that holds a copy of the elements.
template <class T>
std::shared_ptr<Array<std::remove_const_t<T>>> MakeArray(std::span<T> elements) {
    return std::make_shared<Array<std::remove_const_t<T>>>(std::span<const T>(elements));
}

} // namespace Qor::Tivor
