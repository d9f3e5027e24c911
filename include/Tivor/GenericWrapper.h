#pragma once

#include <QorCore/Pointers.h>
#include <Tivor/DataObject.h>
#include <Tivor/Serializer.h>

#include <functional>
#include <utility>

namespace Qor::Tivor {

/// What makes a T a data object, and the only thing to write for a new wrapped type:
/// * `static ETypeID GetTypeID()` and `static std::string GetTypeName()`: identifier and class name; classes outside
///   this library use `eNO_TYPE`.
/// * `static std::shared_ptr<T> Clone(const T&)`: a deep copy; `static void Assign(T& target, const T&)`: the same into
///   a value that exists.
/// * `static std::shared_ptr<T> CreateDefault()`: the default value.
/// * `static boost::logic::tribool Equal(const T&, const T&)`: indeterminate where values cannot be compared.
/// * `static std::string ToString(const T&)`: the textual form.
/// * `static std::shared_ptr<Serializer> MakeSerializer(DataOf<T>&)`.
/// * `template <class... A> static std::shared_ptr<DataOf<T>> MakeData(A&&...)`: a new wrapper.
/// * where the base data type is not T itself: `static void GetBaseDataTypeInfo(ETypeID&, std::string&)`.
/// * containers, which guard themselves against other threads: `static constexpr bool guardsItself = true`.
/// * where the parts of a value stand in a container: `static std::shared_ptr<DataContainer> GetContent(const T&)`,
///   the same one for the whole life of the value. The object then counts as a container in all that concerns
///   nesting, change reports and locks.
template <class T>
struct ValueTraits;

/// The type of the wrapper that holds a T: T itself, or a base of it that was chosen by a specialisation, which stands
/// in front of the traits.
template <class T>
struct WrappedAs : std::type_identity<T> {};

/// The class of the data objects that hold a T.
template <class T>
using DataOf = Data<T, GenericWrapper<typename WrappedAs<T>::type>>;

namespace Details {

/// The locks of both objects, taken as one set: two threads that compare in opposite order do not block each other.
TIVOR_API std::vector<std::shared_ptr<Core::Lock>> LockBoth(const DataObject& one, const DataObject& other);
[[noreturn]] TIVOR_API void RaiseNoValue(const DataObject& object);

/// A data object whose value has its parts in a container.
class TIVOR_API ContentHolder {
public:
    virtual std::shared_ptr<DataContainer> GetContent() const = 0;
    /// The locks of the content and of all that is in it.
    virtual void AcquireContentLocks(std::vector<std::shared_ptr<Core::Lock>>& locks) const = 0;

protected:
    ~ContentHolder() = default;
};

/// Carries out `exchange`, by which the holder gets other content. Raises `LogicError`, changing nothing, where that
/// must not stand in the containers in which the holder stands.
TIVOR_API void ExchangeContent(const MutexLockableDataObject& holder, const std::shared_ptr<DataContainer>& former,
                               const std::shared_ptr<DataContainer>& next, const std::function<void()>& exchange);

template <class T>
concept HasContent = requires(const T& value) {
    ValueTraits<T>::GetContent(value);
};

template <class T>
class WrapperWithContent : public MutexLockableDataObject, public ContentHolder {
public:
    std::shared_ptr<DataContainer> GetContent() const override {
        const auto& wrapper = static_cast<const GenericWrapper<T>&>(*this);
        return wrapper.m_data ? ValueTraits<T>::GetContent(*wrapper.m_data) : nullptr;
    }
    void AcquireContentLocks(std::vector<std::shared_ptr<Core::Lock>>& locks) const override {
        if (const auto content = GetContent())
            content->AcquireLocks(locks);
    }

protected:
    WrapperWithContent() = default;
    WrapperWithContent(const WrapperWithContent&) = default;
    ~WrapperWithContent() override = default;
};

template <class T>
using WrapperBase = std::conditional_t<HasContent<T>, WrapperWithContent<T>, MutexLockableDataObject>;

} // namespace Details

/// Holds a T by shared pointer and gives it the protocol of a data object, but no serializer. Empty means no value.
///
/// Thread rule: with locking enabled every operation here holds the object's lock; what `GetData` hands out is the
/// caller's to guard by `GetDataLock`.
template <class T>
class GenericWrapper : public Details::WrapperBase<T> {
public:
    using ValueType = T;

    static std::shared_ptr<GenericWrapper> Create(std::shared_ptr<T> data) {
        return std::make_shared<GenericWrapper>(std::move(data));
    }

    explicit GenericWrapper(std::shared_ptr<T> data = nullptr) : m_data(std::move(data)) {
        this->m_holdsContainer = guardsItself || Details::HasContent<T>;
    }
    /// The copy holds a copy of the value; of an abstract T, which is only read through this class, it shares the
    /// value.
    GenericWrapper(const GenericWrapper& other) : GenericWrapper(other, other.template CopyValue<T>()) {}
    ~GenericWrapper() override = default;

    using DataObject::Clone;
    using DataObject::GetTypeID;
    using DataObject::HoldsSameValueAs;
    using DataObject::ToString;

    ETypeID GetTypeID() override { return ValueTraits<T>::GetTypeID(); }
    void GetBaseDataTypeInfo(ETypeID& typeID, std::string& typeName) const override {
        if constexpr (requires { ValueTraits<T>::GetBaseDataTypeInfo(typeID, typeName); }) {
            ValueTraits<T>::GetBaseDataTypeInfo(typeID, typeName);
        } else {
            typeID = ValueTraits<T>::GetTypeID();
            typeName = ValueTraits<T>::GetTypeName();
        }
    }
    std::string GetTypeName() const override { return ValueTraits<T>::GetTypeName(); }
    bool HoldsType(const std::type_info& type) const override { return type == typeid(T); }
    bool HoldsSameTypeAs(const DataObject& other) const override {
        return typeid(other) == typeid(*this) || dynamic_cast<const GenericWrapper*>(&other) != nullptr;
    }
    boost::logic::tribool HoldsSameValueAs(const DataObject& other) override;
    std::shared_ptr<DataObject> Clone() override { return std::make_shared<GenericWrapper>(*this); }
    std::string ToString() override;

    /// Makes the object refer to another value, or to none; returns whether the class allows that.
    virtual bool SetData(std::shared_ptr<T> data);

    bool IsEmpty() const { return LoadData() == nullptr; }
    std::shared_ptr<T> GetData() { return LoadData(); }
    Core::QorConstPtr<T> GetData() const { return LoadData(); }
    static constexpr bool SupportsSetValue() { return false; }

protected:
    /// The settings of the other object, and this value.
    GenericWrapper(const GenericWrapper& other, std::shared_ptr<T> data)
        : Details::WrapperBase<T>(other), m_data(std::move(data)) {
        this->m_holdsContainer = guardsItself || Details::HasContent<T>;
    }

    /// Exchanges the pointer and does nothing else: no lock, no report. Of values with content it raises where that
    /// must not stand, and then changes nothing.
    std::shared_ptr<T> ExchangeData(std::shared_ptr<T> data) {
        if constexpr (Details::HasContent<T>)
            Details::ExchangeContent(*this, this->GetContent(), data ? ValueTraits<T>::GetContent(*data) : nullptr,
                                     [&] { m_data.swap(data); });
        else if constexpr (guardsItself)
            data = std::atomic_exchange(&m_data, std::move(data));
        else
            m_data.swap(data);
        return data;
    }

    /// Gives an empty object the default value of its class; a bare wrapper has none.
    virtual void CreateDefaultData() {}

    /// Guards the value as far as it does not do so itself: then two values are never locked together.
    std::shared_ptr<Core::Lock> LockValue() const {
        if constexpr (guardsItself)
            return nullptr;
        else
            return const_cast<GenericWrapper*>(this)->GetDataLock();
    }

    /// A copy of the value, which is of type U.
    template <class U>
    std::shared_ptr<T> CopyValue() const {
        const auto lock = LockValue();
        const auto& data = LoadData();
        if constexpr (std::is_abstract_v<U>)
            return data;
        else
            return data ? ValueTraits<U>::Clone(static_cast<const U&>(*data)) : nullptr;
    }

private:
    template <class, class>
    friend class Data;
    template <class>
    friend class Details::WrapperWithContent;

    static constexpr bool guardsItself = requires { ValueTraits<T>::guardsItself; };

    // Without a lock that guards the value the pointer must be safe by itself.
    decltype(auto) LoadData() const {
        if constexpr (guardsItself)
            return std::atomic_load(&m_data);
        else
            return static_cast<const std::shared_ptr<T>&>(m_data);
    }

    std::shared_ptr<T> m_data;
};

namespace Details {

/// A wrapper whose value is always of a class T that derives from the wrapper's type: it answers for T.
template <class T, class Wrapper>
class WrapperOfDerived : public Wrapper {
    static_assert(std::is_base_of_v<typename Wrapper::ValueType, T>);

public:
    using Wrapper::Wrapper;
    WrapperOfDerived(const WrapperOfDerived& other) : Wrapper(other, other.template CopyValue<T>()) {}

    using DataObject::GetTypeID;
    ETypeID GetTypeID() override { return ValueTraits<T>::GetTypeID(); }
    std::string GetTypeName() const override { return ValueTraits<T>::GetTypeName(); }
    bool HoldsType(const std::type_info& type) const override { return type == typeid(T) || Wrapper::HoldsType(type); }
    /// Refuses a value of another class.
    bool SetData(std::shared_ptr<typename Wrapper::ValueType> data) override {
        return (!data || dynamic_cast<const T*>(data.get()) != nullptr) && Wrapper::SetData(std::move(data));
    }
};

template <class T, class Wrapper>
using WrapperFor =
    typename std::conditional_t<std::is_same_v<T, typename Wrapper::ValueType>, std::type_identity<Wrapper>,
                                std::type_identity<WrapperOfDerived<T, Wrapper>>>::type;

} // namespace Details

/// A wrapper that can be written and read: the class that the library creates, stores and serializes. T equals the type
/// of its wrapper or derives from it; then the object answers for T, and holds a T always.
template <class T, class Wrapper>
class Data : public Details::WrapperFor<T, Wrapper> {
    using Base = Details::WrapperFor<T, Wrapper>;

public:
    explicit Data(const T& value) : Base(ValueTraits<T>::Clone(value)) {}
    explicit Data(std::shared_ptr<T> data = nullptr) : Base(std::move(data)) {}
    Data(const Data& other) : Base(other) {}
    ~Data() override = default;

    using DataObject::Clone;

    bool EnableSerialization(bool enable) override {
        this->m_serializationEnabled = enable;
        this->NoteChange();
        this->ReportChange(EDataChange::value);
        return true;
    }
    bool SerializationIsEnabled() const override { return this->m_serializationEnabled && !this->IsEmpty(); }
    std::shared_ptr<Serializer> GetSerializer() override {
        return SerializationIsEnabled() && IsSerializable() ? CreateSerializer() : nullptr;
    }
    std::shared_ptr<DataObject> Clone() override { return ValueTraits<T>::MakeData(*this); }

    /// Changes the value in place, so that all who share it see it; an empty object gets a new one. The object keeps
    /// nothing of the argument.
    void SetValue(const T& value) {
        Change([&](T& place) { ValueTraits<T>::Assign(place, value); }, [&] { return ValueTraits<T>::Clone(value); });
    }
    /// The same, taking over what the argument holds.
    void SetValue(T&& value) {
        Change([&](T& place) { place = std::move(value); }, [&] { return std::make_shared<T>(std::move(value)); });
    }
    /// Raises `NullPointerError` when the object is empty.
    const T& GetValue() const;
    static constexpr bool SupportsSetValue() { return true; }

protected:
    void CreateDefaultData() override {
        if (this->IsEmpty())
            this->ExchangeData(ValueTraits<T>::CreateDefault());
    }

private:
    virtual bool IsSerializable() { return true; }
    virtual std::shared_ptr<Serializer> CreateSerializer() { return ValueTraits<T>::MakeSerializer(*this); }

    template <class InPlace, class Make>
    void Change(InPlace inPlace, Make make);
};

namespace Details {

/// The value that a data object holds, if that is a T; only const values of const objects.
template <class T, class Object>
std::shared_ptr<T> GetHeld(const std::shared_ptr<Object>& object) {
    using Value = std::remove_const_t<T>;
    using Wrapper = GenericWrapper<typename WrappedAs<Value>::type>;
    const auto wrapper =
        std::dynamic_pointer_cast<std::conditional_t<std::is_const_v<T>, const Wrapper, Wrapper>>(object);
    if constexpr (std::is_same_v<Value, typename Wrapper::ValueType>)
        return wrapper ? wrapper->GetData() : nullptr;
    else
        return wrapper ? std::dynamic_pointer_cast<T>(wrapper->GetData()) : nullptr;
}

} // namespace Details

template <class T>
boost::logic::tribool GenericWrapper<T>::HoldsSameValueAs(const DataObject& other) {
    const auto* same = dynamic_cast<const GenericWrapper*>(&other);
    if (same == nullptr)
        return false;
    const auto locks = Details::LockBoth(*this, *same);
    const auto& mine = LoadData();
    const auto& theirs = same->LoadData();
    if (mine == theirs)
        return true;
    if (!mine || !theirs)
        return false;
    return ValueTraits<T>::Equal(*mine, *theirs);
}

template <class T>
std::string GenericWrapper<T>::ToString() {
    const auto lock = LockValue();
    const auto& data = LoadData();
    return data ? ValueTraits<T>::ToString(*data) : std::string();
}

template <class T>
bool GenericWrapper<T>::SetData(std::shared_ptr<T> data) {
    {
        const auto lock = this->GetDataLock();
        data = ExchangeData(std::move(data));
        this->NoteChange();
    }
    this->ReportChange(EDataChange::reference);
    return true;
}

template <class T, class Wrapper>
template <class InPlace, class Make>
void Data<T, Wrapper>::Change(InPlace inPlace, Make make) {
    EDataChange change = EDataChange::value;
    {
        const auto lock = this->LockValue();
        if (const auto& data = this->LoadData()) {
            inPlace(static_cast<T&>(*data));
        } else {
            this->ExchangeData(make());
            change = EDataChange::reference;
        }
        this->NoteChange();
    }
    this->ReportChange(change);
}

template <class T, class Wrapper>
const T& Data<T, Wrapper>::GetValue() const {
    if (this->IsEmpty())
        Details::RaiseNoValue(*this);
    return static_cast<const T&>(*this->m_data);
}

} // namespace Qor::Tivor
