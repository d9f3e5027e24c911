#pragma once

#include <Nalix/Matrix.h>
#include <QorCore/ObjectPool.h>
#include <Tivor/GenericWrapper.h>

#include <string>

namespace Qor::Tivor {

template <class T>
using RowMajorMatrix = Nalix::Matrix<T, Nalix::basic_row_major>;
/// Columns one after the other; its class name is "FortranMatrix".
template <class T>
using ColumnMajorMatrix = Nalix::Matrix<T, Nalix::basic_column_major>;

enum class EPooled : std::uint8_t { object, value, serializer };
/// The pool of one built-in class, or of what goes with its objects. Pools live as long as the process.
TIVOR_API Core::ObjectPoolBase& GetBuiltInPool(ETypeID id, EPooled what);

namespace Details {

template <ETypeID id, EPooled what>
Core::ObjectPoolBase& PoolOf() {
    static Core::ObjectPoolBase& pool = GetBuiltInPool(id, what);
    return pool;
}

/// A shared object of the built-in class `id`, from the class's pool where it has one.
template <ETypeID id, EPooled what, class T, class... Arguments>
std::shared_ptr<T> MakePooled(Arguments&&... arguments) {
    if constexpr (GetPoolKind(id) == EPool::none)
        return std::make_shared<T>(std::forward<Arguments>(arguments)...);
    else
        return std::allocate_shared<T>(Core::PoolAllocator<T, &PoolOf<id, what>>(),
                                       std::forward<Arguments>(arguments)...);
}

} // namespace Details

/// Traits of the value types whose class follows from their type code.
template <class T, ETypeID id>
struct BuiltInTraits {
    static ETypeID GetTypeID() { return id; }
    static std::string GetTypeName() { return std::string(FindTypeFacts(id)->className); }
    /// A matrix's element type; any other type is its own.
    static void GetBaseDataTypeInfo(ETypeID& typeID, std::string& typeName);
    static std::shared_ptr<T> Clone(const T& value) {
        if constexpr (requires { value.Clone(); })
            return MakeValue(value.Clone());
        else
            return MakeValue(value);
    }
    static void Assign(T& target, const T& value) {
        if constexpr (requires { value.Clone(); })
            target = value.Clone();
        else
            target = value;
    }
    static std::shared_ptr<T> CreateDefault() { return MakeValue(T{}); }
    template <class... Arguments>
    static std::shared_ptr<T> MakeValue(Arguments&&... arguments) {
        return Details::MakePooled<id, EPooled::value, T>(std::forward<Arguments>(arguments)...);
    }
    template <class... Arguments>
    static std::shared_ptr<Data<T>> MakeData(Arguments&&... arguments) {
        return Details::MakePooled<id, EPooled::object, Data<T>>(std::forward<Arguments>(arguments)...);
    }

    /// NaN equals NaN: a value that nobody changed is the same value.
    static boost::logic::tribool Equal(const T& left, const T& right);
    static std::string ToString(const T& value);
    static std::shared_ptr<Serializer> MakeSerializer(Data<T>& object);
};

/// The value types that are data objects by this header: expands TIVOR_VALUE(type, identifier) for each.
#define TIVOR_BUILT_IN_SCALARS TIVOR_SCALAR_TYPES(TIVOR_SCALAR_VALUE)
#define TIVOR_BUILT_IN_STRINGS TIVOR_VALUE(std::string, eASCII_STRING) TIVOR_VALUE(std::wstring, eUNICODE_STRING)
#define TIVOR_BUILT_IN_MATRICES TIVOR_MATRIX_ELEMENT_TYPES(TIVOR_MATRIX_VALUES)
#define TIVOR_BUILT_IN_VALUES TIVOR_BUILT_IN_SCALARS TIVOR_BUILT_IN_STRINGS TIVOR_BUILT_IN_MATRICES

#define TIVOR_SCALAR_VALUE(T, STEM, code, position, name) TIVOR_VALUE(T, e##STEM)
#define TIVOR_MATRIX_VALUES(T, STEM, code, position, name)                                                             \
    TIVOR_VALUE(RowMajorMatrix<T>, eMATRIX_##STEM) TIVOR_VALUE(ColumnMajorMatrix<T>, eFORTRAN_MATRIX_##STEM)

#define TIVOR_VALUE(T, id)                                                                                             \
    extern template struct TIVOR_API BuiltInTraits<T, id>;                                                             \
    template <>                                                                                                        \
    struct ValueTraits<T> : BuiltInTraits<T, id> {};                                                                   \
    extern template class TIVOR_API GenericWrapper<T>;                                                                 \
    extern template class TIVOR_API Data<T>;
TIVOR_BUILT_IN_VALUES
#undef TIVOR_VALUE

/// A new data object that holds the value, from the class's pool where it has one: a deep copy, or, of a temporary, the
/// value itself.
template <class T>
std::shared_ptr<Data<T>> MakeData(const T& value) {
    return ValueTraits<T>::MakeData(ValueTraits<T>::Clone(value));
}
template <class T>
requires(!std::is_reference_v<T> && !std::is_const_v<T>) std::shared_ptr<Data<T>> MakeData(T&& value) {
    return ValueTraits<T>::MakeData(ValueTraits<T>::MakeValue(std::move(value)));
}

} // namespace Qor::Tivor
