#pragma once

#include <Nalix/Matrix.h>
#include <Nalix/Vector.h>
#include <QorCore/ObjectPool.h>
#include <QorCore/Time.h>
#include <QorCore/UnitizedValue.h>
#include <Tivor/GenericWrapper.h>

#include <string>

namespace Qor::Tivor {

template <class T>
using RowMajorMatrix = Nalix::Matrix<T, Nalix::basic_row_major>;
/// Columns one after the other; its class name is "FortranMatrix".
template <class T>
using ColumnMajorMatrix = Nalix::Matrix<T, Nalix::basic_column_major>;

using UnitizedDouble = Core::UnitizedValue<double>;

/// A complex number was read whose data is not that of two numbers.
QOR_DECLARE_ALERT(TIVOR_API, InvalidComplexType, Core::IOError);

/// The standard unit that is closest to the given one: of the same dimensions, which gives an empty pointer where there
/// is none; with the same scale and offset, else with the same scale, else with the scale that differs by the smallest
/// factor, either way. Among equals, the first of `Core::UnitDictionary::GetStandardUnits`.
TIVOR_API Core::QorConstPtr<Core::UnitDescriptor>
GetClosestStandardUnit(const Core::QorConstPtr<Core::UnitDescriptor>& unit);

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

/// The position in `builtInTypeFacts` of the row that describes the class of a T.
template <class T>
inline constexpr std::size_t rowOf = builtInTypeFacts.size();

/// Traits of the value types whose class is a row of `builtInTypeFacts`.
template <class T>
struct BuiltInTraits {
    static_assert(rowOf<T> < builtInTypeFacts.size(), "no data object of this library holds such a value");
    static constexpr const TypeFacts& facts = builtInTypeFacts[rowOf<T>];

    static ETypeID GetTypeID() { return facts.id; }
    static std::string GetTypeName() { return std::string(facts.className); }
    /// The element type of a matrix, a vector or a collection; any other type is its own.
    static void GetBaseDataTypeInfo(ETypeID& typeID, std::string& typeName);
    static std::shared_ptr<T> Clone(const T& value) {
        if constexpr (requires { T(value.Clone()); })
            return MakeValue(value.Clone());
        else
            return MakeValue(value);
    }
    static void Assign(T& target, const T& value) {
        if constexpr (requires { T(value.Clone()); })
            target = value.Clone();
        else
            target = value;
    }
    static std::shared_ptr<T> CreateDefault() { return MakeValue(); }
    /// Of the values that have their parts in a container.
    template <class Value = T>
    static auto GetContent(const Value& value) -> decltype(value.GetContent()) {
        return value.GetContent();
    }
    template <class... Arguments>
    static std::shared_ptr<T> MakeValue(Arguments&&... arguments) {
        return Details::MakePooled<facts.id, EPooled::value, T>(std::forward<Arguments>(arguments)...);
    }
    template <class... Arguments>
    static std::shared_ptr<DataOf<T>> MakeData(Arguments&&... arguments) {
        return Details::MakePooled<facts.id, EPooled::object, DataOf<T>>(std::forward<Arguments>(arguments)...);
    }

    /// NaN equals NaN: a value that nobody changed is the same value.
    static boost::logic::tribool Equal(const T& left, const T& right);
    /// Of collections the first elements.
    static std::string ToString(const T& value);
    static std::shared_ptr<Serializer> MakeSerializer(DataOf<T>& object);
};

/// The value types that are data objects by this header: expands TIVOR_VALUE(type, identifier, class name) for each.
#define TIVOR_SCALAR_VALUES TIVOR_SCALAR_TYPES(TIVOR_PLAIN_VALUE)
#define TIVOR_COMPLEX_VALUES TIVOR_COMPLEX_TYPES(TIVOR_COMPLEX_VALUE)
#define TIVOR_STRING_VALUES TIVOR_STRING_TYPES(TIVOR_PLAIN_VALUE)
#define TIVOR_CORE_VALUES                                                                                              \
    TIVOR_VALUE(Core::Time, eTIME, )                                                                                   \
    TIVOR_VALUE(Core::Elapse, eELAPSE, )                                                                               \
    TIVOR_VALUE(Core::Error, eERROR, )                                                                                 \
    TIVOR_VALUE(Core::UnitDescriptor, eUNIT_DESCRIPTOR, )                                                              \
    TIVOR_VALUE(UnitizedDouble, eUNITIZED_VALUE, )
#define TIVOR_VECTOR_VALUES                                                                                            \
    TIVOR_MATRIX_ELEMENT_TYPES(TIVOR_VECTOR_VALUE)                                                                     \
    TIVOR_VALUE(Nalix::Vector<UnitizedDouble>, eVECTOR_UNITIZED, )
#define TIVOR_MATRIX_VALUES TIVOR_MATRIX_ELEMENT_TYPES(TIVOR_MATRIX_VALUE)
#define TIVOR_BUILT_IN_VALUES                                                                                          \
    TIVOR_SCALAR_VALUES TIVOR_COMPLEX_VALUES TIVOR_STRING_VALUES TIVOR_CORE_VALUES TIVOR_VECTOR_VALUES                 \
        TIVOR_MATRIX_VALUES

#define TIVOR_PLAIN_VALUE(T, STEM, code, position, name) TIVOR_VALUE(T, e##STEM, name)
#define TIVOR_COMPLEX_VALUE(T, name) TIVOR_VALUE(std::complex<T>, eCOMPLEX, name)
#define TIVOR_VECTOR_VALUE(T, STEM, code, position, name) TIVOR_VALUE(Nalix::Vector<T>, eVECTOR_##STEM, )
#define TIVOR_MATRIX_VALUE(T, STEM, code, position, name)                                                              \
    TIVOR_VALUE(RowMajorMatrix<T>, eMATRIX_##STEM, )                                                                   \
    TIVOR_VALUE(ColumnMajorMatrix<T>, eFORTRAN_MATRIX_##STEM, )

/// What a header says of one value type; its instantiations stand in one source of the library.
#define TIVOR_DECLARE_VALUE(T, id, name)                                                                               \
    template <>                                                                                                        \
    inline constexpr std::size_t rowOf<T> = FindTypeRow(id, "" name);                                                  \
    extern template struct TIVOR_API BuiltInTraits<T>;                                                                 \
    template <>                                                                                                        \
    struct ValueTraits<T> : BuiltInTraits<T> {};                                                                       \
    extern template class TIVOR_API GenericWrapper<T>;                                                                 \
    extern template class TIVOR_API Data<T>;

/// The same of a class that is wrapped as its base; the base has a wrapper of its own.
#define TIVOR_DECLARE_DERIVED_VALUE(Base, T, id, name)                                                                 \
    template <>                                                                                                        \
    inline constexpr std::size_t rowOf<T> = FindTypeRow(id, "" name);                                                  \
    template <>                                                                                                        \
    struct WrappedAs<T> : std::type_identity<Base> {};                                                                 \
    extern template struct TIVOR_API BuiltInTraits<T>;                                                                 \
    template <>                                                                                                        \
    struct ValueTraits<T> : BuiltInTraits<T> {};                                                                       \
    extern template class TIVOR_API Details::WrapperOfDerived<T, GenericWrapper<Base>>;                                \
    extern template class TIVOR_API Data<T, GenericWrapper<Base>>;

#define TIVOR_VALUE TIVOR_DECLARE_VALUE
TIVOR_BUILT_IN_VALUES
#undef TIVOR_VALUE

/// A new data object that holds the value, from the class's pool where it has one: a deep copy, or, of a temporary, the
/// value itself.
template <class T>
std::shared_ptr<DataOf<T>> MakeData(const T& value) {
    return ValueTraits<T>::MakeData(ValueTraits<T>::Clone(value));
}
template <class T>
requires(!std::is_reference_v<T> && !std::is_const_v<T>) std::shared_ptr<DataOf<T>> MakeData(T&& value) {
    return ValueTraits<T>::MakeData(ValueTraits<T>::MakeValue(std::move(value)));
}

} // namespace Qor::Tivor
