#pragma once

#include <QorCore/Callback.h>
#include <QorCore/Notification.h>
#include <QorCore/ReadersWriterMutex.h>
#include <Tivor/DataContainer.h>
#include <Tivor/ScalarData.h>

#include <array>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Qor::Tivor {

class PropertyContainer;
class PropertyChangeEvent;

/// A caller has used the library in a way that it does not allow.
QOR_DECLARE_ALERT(TIVOR_API, LogicError, Core::LogicError);
QOR_DECLARE_ALERT(TIVOR_API, NoSuchProperty, LogicError);
/// A property was offered a value of another type than it has.
QOR_DECLARE_ALERT(TIVOR_API, PropertyTypeMismatch, LogicError);
QOR_DECLARE_ALERT(TIVOR_API, SetAttemptedForNonExistantProperty, Core::Warning);
QOR_DECLARE_ALERT(TIVOR_API, SetReadOnlyProperty, Core::Warning);
/// The properties of another object stand among those that are written, and are left out.
QOR_DECLARE_ALERT(TIVOR_API, OmittingSubProperties, Core::Warning);
/// A value that cannot be stored stands among those that are written, and is left out.
QOR_DECLARE_ALERT(TIVOR_API, OmittingProperty, Core::Warning);

/// The keys of the attributes. Whatever else a program stores beside them is kept.
extern TIVOR_API const std::string sPROPERTY_PERMISSIONS;       ///< scalar `PropertyContainer::EPermissions`
extern TIVOR_API const std::string sPROPERTY_DISPLAY_NAME;      ///< text in place of the name
extern TIVOR_API const std::string sPROPERTY_CATEGORY;          ///< text, groups properties
extern TIVOR_API const std::string sPROPERTY_DESCRIPTION;       ///< text for help
extern TIVOR_API const std::string sPROPERTY_DEFAULT;           ///< of the type of the value
extern TIVOR_API const std::string sSELECTABLE_PROPERTY_VALUES; ///< container: all values that are allowed, by text
extern TIVOR_API const std::string sSUGGESTED_PROPERTY_VALUES;  ///< container: values to choose from
extern TIVOR_API const std::string sIS_FILENAME;                ///< bool: the text names a file
extern TIVOR_API const std::string sIS_DIRECTORY;               ///< bool: the text names a directory
extern TIVOR_API const std::string sHAS_TOLERANCES;             ///< bool
extern TIVOR_API const std::string sUPPER_TOLERANCE;
extern TIVOR_API const std::string sLOWER_TOLERANCE;
extern TIVOR_API const std::string sUPPER_TOLERANCE_COMPARISON;
extern TIVOR_API const std::string sLOWER_TOLERANCE_COMPARISON;
extern TIVOR_API const std::string sHAS_CUSTOM_EDITOR;     ///< bool: there is `LaunchCustomPropertyEditor`
extern TIVOR_API const std::string sBROWSE_PERMISSIONS;    ///< scalar `EBrowsePermissions`
extern TIVOR_API const std::string sIS_RGB_COLOR;          ///< bool: the value is a colour
extern TIVOR_API const std::string sCATEGORY_STRING_TABLE; ///< the string table with the names of categories

/// What a browser may do with a property; not interpreted here.
enum EBrowsePermissions : std::uint32_t {
    eNO_BROWSE_PERMISSIONS = 0,
    eBROWSE_READABLE = 1,
    eBROWSE_WRITABLE = 2,
    eBROWSE_READABLE_WRITABLE = 3
};

/// What a change handler says of a change; with any other value the change stands, and no event tells of it.
enum EPropertyChangeResult : std::uint32_t {
    eACCEPT_CHANGE = 0,
    eREFUSE_CHANGE = 1,  ///< the former value comes back; a property that had none is removed
    eREMOVE_PROPERTY = 2 ///< the change is refused, and the property removed
};

/// Hears of changes of properties.
class TIVOR_API PropertyChangeListener : public Core::NotificationListener {
public:
    ~PropertyChangeListener() override;
    /// Called by the thread that made the change, with no lock held.
    virtual void PropertyChanged(const PropertyChangeEvent& event) = 0;
};

/// A property has got another value.
class TIVOR_API PropertyChangeEvent {
public:
    PropertyChangeEvent(PropertyContainer& changed, std::string name, Core::QorConstPtr<DataObject> newValue,
                        Core::QorConstPtr<DataObject> oldValue);

    const std::string& GetPropertyName() const { return m_name; }
    /// Empty when the property was removed.
    const Core::QorConstPtr<DataObject>& GetNewValue() const { return m_newValue; }
    /// Empty when the property is new.
    const Core::QorConstPtr<DataObject>& GetOldValue() const { return m_oldValue; }
    bool IsNewProperty() const { return m_oldValue == nullptr; }
    /// To be used while it is alive.
    PropertyContainer& GetChangedObject() const { return m_changed; }
    bool ChangedObjectIsAlive() const { return !m_life.expired(); }
    void Notify(PropertyChangeListener& listener) const { listener.PropertyChanged(*this); }

private:
    PropertyContainer& m_changed;
    std::weak_ptr<const void> m_life;
    std::string m_name;
    Core::QorConstPtr<DataObject> m_newValue;
    Core::QorConstPtr<DataObject> m_oldValue;
};

/// Forwards events to callbacks that wait for the change of one property.
///
/// Thread rule: may be used by any number of threads.
class TIVOR_API PropertyChangeDelegator final : public PropertyChangeListener {
public:
    using Delegate = Core::CallbackArg<const PropertyChangeEvent&>;

    ~PropertyChangeDelegator() override;

    void Add(const std::string& name, std::shared_ptr<Delegate> delegate);
    /// Removes those that are equal to the delegate.
    void Remove(const std::string& name, const Delegate& delegate);
    bool IsEmpty() const { return m_count.load(std::memory_order_relaxed) == 0; }
    /// Calls the delegates of the event's property, in the order in which they were added. One whose target is gone is
    /// a `NullPointerError`; whatever one of them raises, the others are called, and the first exception is raised
    /// again at the end.
    void PropertyChanged(const PropertyChangeEvent& event) override;

private:
    using Delegates = std::vector<std::shared_ptr<Delegate>>;

    mutable std::mutex m_mutex;
    std::unordered_map<std::string, Delegates> m_delegates;
    std::atomic<std::size_t> m_count{0};
};

/// Gives an object named properties: each is a data object, with attributes that describe it to a browser, guarded by
/// validators and handlers, and every accepted change is told to listeners and delegates.
///
/// Changes are told when the outermost update that they belong to ends, in their order, after the lock was released;
/// each operation that changes properties is an update. When a listener raises, the others still hear of all changes,
/// and the first exception is raised again at the end.
///
/// Values are stored as they are given, and shared: whoever changes one in place goes past validators and listeners.
///
/// Thread rule: every operation holds the container's lock, which is re-entrant; validators and handlers are called by
/// the thread that makes the change while it is held, listeners and delegates after that. All of them may use the
/// container, and drop the last reference to one that is owned by a `std::shared_ptr`.
class TIVOR_API PropertyContainer : public std::enable_shared_from_this<PropertyContainer> {
public:
    enum EPermissions : std::uint32_t { eNO_PERMISSIONS = 0, eREADABLE = 1, eWRITABLE = 2, eREADABLE_WRITABLE = 3 };

    /// Says whether a property may be read.
    using ReadHandler = Core::CallbackRetArg<bool, const std::string&>;
    /// A name with the value that is offered.
    using OfferedValue = std::pair<const std::string, std::shared_ptr<DataObject>>;
    /// Refuses a value by raising an error; may replace it by another one.
    using Validator = Core::CallbackArg<OfferedValue&>;
    /// Says whether a change stands that was made.
    using ChangeHandler = Core::CallbackRetArg<EPropertyChangeResult, const PropertyChangeEvent&>;
    using ChangeDelegate = PropertyChangeDelegator::Delegate;

    class RestorePoint;
    class MultiPropertyUpdateSentry;

    /// Whether `SetProperty` makes properties that do not exist.
    explicit PropertyContainer(bool allowSetOfNonExistingProperties);
    PropertyContainer(const PropertyContainer&) = delete;
    PropertyContainer& operator=(const PropertyContainer&) = delete;
    virtual ~PropertyContainer();

    /// Offers a property another value and returns whether it was taken. A text that is one of the property's
    /// selectable values stands for the value that it names. False, with the warnings
    /// `SetAttemptedForNonExistantProperty` and `SetReadOnlyProperty`, for properties that do not exist or are not
    /// writable, and when the change handler refuses. Raises `NullPointerError` for null, `PropertyTypeMismatch`, and
    /// what validators and handlers raise; the property then has its former value.
    virtual bool SetProperty(const std::string& name, std::shared_ptr<DataObject> value);
    virtual std::uint64_t NumProperties() const;
    /// Replaces the content of the map.
    virtual void EnumProperties(std::map<std::string, EPermissions>& permissions) const;
    /// Appends the names, in the order of the properties.
    virtual void EnumProperties(std::vector<std::string>& names) const;
    virtual bool PropertyExists(const std::string& name) const;
    /// 0 for a property that does not exist, 3 for one without the attribute.
    virtual EPermissions GetPermissions(const std::string& name) const;
    /// Whether anybody hears of changes: listeners or delegates.
    virtual bool HasPropertyChangeListeners() const;
    virtual void AddPropertyChangeListener(PropertyChangeListener& listener);
    virtual void RemovePropertyChangeListener(PropertyChangeListener& listener);
    /// Sets many properties, as one change: validators see all values in place. Leaves out, without a warning, those
    /// that are not writable, unless they are properties of another object, and those that do not exist where that is
    /// not allowed. Returns the number that changed. Whatever is raised, all properties have their former values, and
    /// no event tells of any.
    virtual std::uint64_t SetProperties(const DataContainer& values);
    /// The same for values that were stored: permissions do not matter, properties that do not exist are made, and the
    /// order becomes that of the values.
    virtual void InputProperties(const DataContainer& values);
    /// Write the values in the form of a `DataContainer`; nothing when there are no properties. Properties of other
    /// objects are left out, with the warning `OmittingSubProperties`, and values that cannot be stored, with
    /// `OmittingProperty`.
    virtual void OutputProperties(std::ostream& stream, Core::XMLWriter& writer) const;
    virtual std::uint64_t OutputProperties(Core::BinaryOutputStream& stream) const;
    virtual void Output(std::ostream& stream, Core::XMLWriter& writer, const std::string& name) const;
    /// Puts clones of the values into another container.
    virtual void CloneProperties(DataContainer& target, bool serializableOnly) const;
    virtual void LaunchCustomPropertyEditor(const std::string& name);

protected:
    /// Tells listeners, then delegates.
    virtual void FirePropertyChange(std::shared_ptr<PropertyChangeEvent> event);
    /// Stores a value without asking anybody; a property that does not exist is added, readable only if `readOnly`.
    virtual void UpdateProperty(const std::string& name, std::shared_ptr<DataObject> value, bool readOnly);
    virtual bool SettingNonExistentPropertiesIsAllowed() const;
    /// Makes a property, or makes it anew. The value, which is stored itself, is its default too. Raises
    /// `NullPointerError` for a null value.
    virtual void AddProperty(const std::string& name, std::shared_ptr<DataObject> value, EPermissions permissions,
                             std::shared_ptr<ReadHandler> readHandler, std::shared_ptr<Validator> validator,
                             std::shared_ptr<ChangeHandler> changeHandler);
    /// A property was made by `SetProperty` or its like; asked instead of a change handler.
    virtual EPropertyChangeResult OnExternalPropertyAdded(const PropertyChangeEvent& event);

public:
    bool IsReadable(const std::string& name) const { return (GetPermissions(name) & eREADABLE) != 0; }
    bool IsWritable(const std::string& name) const { return (GetPermissions(name) & eWRITABLE) != 0; }
    /// Whether the value equals the default. Raises `NoSuchProperty`.
    bool IsDefault(const std::string& name) const;
    /// Sets the property to a copy of its default; returns whether it was taken. Raises as `SetProperty`, and
    /// `NoSuchProperty`.
    bool RestoreDefault(const std::string& name);
    bool IsSubPropertyContainer(const std::string& name) const;
    /// Whether both have the same properties with surely the same values; attributes do not matter.
    bool HoldsSameProperties(const PropertyContainer& other) const;
    bool HasCustomPropertyEditor(const std::string& name) const;
    EBrowsePermissions GetBrowsePermissions(const std::string& name) const;
    /// The value, or an empty pointer when there is none or it may not be read.
    Core::QorConstPtr<DataObject> GetPropertyByName(const std::string& name) const;
    /// What a browser shows of the value: the text that names it among the selectable values, or else its own text;
    /// empty where `GetPropertyByName` is. `SetProperty` accepts the former.
    std::string GetPropertyText(const std::string& name) const;
    /// An attribute, or an empty pointer.
    std::shared_ptr<DataObject> GetAttributeByPropertyName(const std::string& name,
                                                           const std::string& attributeKey) const;
    /// The other object whose properties stand under that name, or an empty pointer.
    Core::QorConstPtr<PropertyContainer> GetSubProperties(const std::string& name) const;
    std::shared_ptr<PropertyContainer> GetSubProperties(const std::string& name);
    /// Appends the keys of a container that are properties here, in its order, and returns their number.
    std::uint64_t EnumProperties(std::vector<std::string>& names, const DataContainer& container) const;
    void AddPropertyChangeDelegate(const std::string& name, std::shared_ptr<ChangeDelegate> delegate);
    /// Removes those that are equal.
    void RemovePropertyChangeDelegate(const std::string& name, std::shared_ptr<ChangeDelegate> delegate);

    /// The value as a T, or empty when none of exactly this type may be read there; of a registered enumeration, its
    /// value.
    template <class T>
    std::optional<T> GetValue(const std::string& name) const;
    /// `SetProperty` with a new data object that holds the value (`MakePropertyValue`).
    template <class T>
    bool SetValue(const std::string& name, const T& value) {
        return SetProperty(name, MakePropertyValue(value));
    }
    /// The data object that holds a value: a scalar for registered enumerations, else what `MakeData` gives.
    template <class T>
    static std::shared_ptr<DataObject> MakePropertyValue(const T& value) {
        if constexpr (std::is_enum_v<T>)
            return MakeScalar(value);
        else if constexpr (std::is_convertible_v<const T&, const char*>)
            return MakeData(std::string(value));
        else
            return MakeData(T(value));
    }

protected:
    /// A line of the table that describes an object's properties. Empty texts make no attribute.
    struct Description {
        std::string name;
        std::shared_ptr<DataObject> value;
        EPermissions permissions = eREADABLE_WRITABLE;
        std::string displayName{};
        std::string category{};
        std::string description{};
        std::shared_ptr<DataObject> defaultValue{}; ///< empty: the value
        std::shared_ptr<Validator> validator{};
    };

    /// What a browser shows beside a property.
    struct Texts {
        using Attributes = std::array<std::pair<const std::string*, const char*>, 3>;

        /// By their keys.
        Attributes GetAttributes() const;

        const char* displayName = nullptr;
        const char* category = "";
        const char* description = "";
    };

    /// `AddProperty` for each line, as one update.
    void AddProperties(std::span<const Description> descriptions);
    void AddProperty(const std::string& name, std::shared_ptr<DataObject> value, EPermissions permissions);
    /// False when there is none. No event tells of it.
    bool RemoveProperty(const std::string& name);
    /// Raises `NoSuchProperty`, `NullPointerError`, and `AssertionError` for a value of another type than the default.
    void SetPropertyDefault(const std::string& name, std::shared_ptr<DataObject> value);
    /// Without effect on a property that does not exist, as the next two.
    void SetPermissions(const std::string& name, EPermissions permissions);
    void SetAttribute(const std::string& name, const std::string& attributeKey, std::shared_ptr<DataObject> value);
    void SetAttribute(const std::string& name, const std::string& attributeKey, const char* text);
    /// Attributes that are made when somebody looks at them. The texts must stay where they are.
    void SetTexts(const std::string& name, const Texts& texts);
    /// Adds the entries to the attributes.
    void SetAttributes(const std::string& name, const DataContainer& attributes);
    /// Adds the attributes to a container. Raises `NoSuchProperty`.
    void GetAttributes(const std::string& name, DataContainer& attributes) const;

    /// Appends a validator; false for null, and for a property that does not exist.
    bool AddValidator(const std::string& name, std::shared_ptr<Validator> validator);
    /// Removes those that are equal.
    void RemoveValidator(const std::string& name, std::shared_ptr<Validator> validator);
    /// The next five raise `NoSuchProperty`, except those that get a handler: of no property there is none.
    void GetValidators(const std::string& name, std::list<std::shared_ptr<Validator>>& validators) const;
    void SetReadHandler(const std::string& name, std::shared_ptr<ReadHandler> handler);
    std::shared_ptr<ReadHandler> GetReadHandler(const std::string& name) const;
    void SetChangeHandler(const std::string& name, std::shared_ptr<ChangeHandler> handler);
    std::shared_ptr<ChangeHandler> GetChangeHandler(const std::string& name) const;

    std::shared_ptr<PropertyChangeEvent> CreateChangeEvent(const std::string& name,
                                                           Core::QorConstPtr<DataObject> newValue,
                                                           Core::QorConstPtr<DataObject> oldValue);
    /// Shows the properties of another object as one property of this one. An empty category is "External", an empty
    /// description "Properties for an external object aggregated by this object". Raises `NullPointerError`, and
    /// `LogicError` for an object that is this one or shows it.
    void Aggregate(std::shared_ptr<PropertyContainer> subContainer, const std::string& name,
                   const std::string& displayName, const std::string& category, const std::string& description);
    void AllowSetOfNonExistingProperties(bool allow);
    /// Removes all properties. No event tells of it.
    void Clear();
    /// Replaces all properties by clones of the other container's: values and attributes are cloned, validators shared,
    /// handlers left out, since they act on the other container. Listeners stay.
    void CloneContents(const PropertyContainer& other) { CopyContents(other, true); }
    /// The same, sharing the values with the other container unless they are to be cloned.
    void CopyContents(const PropertyContainer& other, bool cloneValues);
    /// Makes a property that is a clone of another one, in the place of what had its name; false when the source does
    /// not exist.
    bool CloneProperty(const std::string& sourceName, const std::string& targetName);
    bool PerformingMultiPropertyUpdate() const;
    void RemoveAllPropertyChangeListeners();
    /// The event that is being delivered, or null; for those who are told of it.
    const PropertyChangeEvent* GetActiveChangeEvent() const { return m_activeEvent.load(std::memory_order_relaxed); }
    /// The values, which are read and changed past permissions, validators and listeners.
    static std::shared_ptr<DataContainer> GetPropertyData(PropertyContainer& container);

    /// Holds the lock and is an update, from its construction to its end: for operations of derived classes.
    class Update;
    /// Warns of each value that cannot be stored.
    void WarnOfOmissions() const;

private:
    friend class PropertyChangeEvent;
    class PropertyAttributes;
    using Lock = Core::WriterLock;
    struct Values final : DataContainer {
        using DataContainer::Atomically;
    };
    struct NameHash {
        std::size_t operator()(const std::string& name) const;
    };
    using AttributeTable = std::unordered_map<std::string, std::shared_ptr<PropertyAttributes>, NameHash>;

    /// Whether the property may be read now.
    virtual bool VerifyPropertyRead(const std::string& name) const;

    /// Null when there is no such property. One that nobody has described or changed yet has no record until this
    /// makes it: it may be read and written, and its default is its value.
    PropertyAttributes* FindAttributes(const std::string& name) const;
    /// The record if there is one.
    std::shared_ptr<PropertyAttributes> FindSpecialAttributes(const std::string& name) const;
    PropertyAttributes& RequireAttributes(const std::string& name, const char* operation) const;
    std::shared_ptr<DataObject> FindValue(const std::string& name) const { return m_propertyData->Get(name); }
    std::shared_ptr<DataContainer> SelectableValues(const std::string& name) const;
    std::shared_ptr<DataObject> NamedValue(const std::string& name, const std::shared_ptr<DataObject>& value) const;

    void SetPropertyValue(const std::string& name, std::shared_ptr<DataObject> value);
    bool ValidateAndSetValue(const std::string& name, std::shared_ptr<DataObject> newValue,
                             std::shared_ptr<DataObject> oldValue, const PropertyAttributes* attributes);
    bool Validate(OfferedValue& offered, const PropertyAttributes* attributes);
    bool NobodyAsks(const std::shared_ptr<DataObject>& oldValue, const PropertyAttributes* attributes) const;
    bool SettleChange(const std::string& name, const std::shared_ptr<DataObject>& newValue,
                      const std::shared_ptr<DataObject>& oldValue, const PropertyAttributes* attributes);
    EPropertyChangeResult AskForConsent(const PropertyChangeEvent& event, ChangeHandler* handler);
    void PutBack(const std::string& name, const std::shared_ptr<DataObject>& oldValue);
    std::uint64_t MultiplePropertySet(const DataContainer& values, bool applyPermissions);
    bool TakesPart(const std::string& name) const;
    std::uint64_t ApplyPropertyChanges(const DataContainer& current, std::vector<DataContainer::Entry> changes,
                                       std::size_t position);
    void Reorder(const DataContainer& order);

    bool SettleRemoval(const std::string& name, const std::shared_ptr<DataObject>& oldValue);
    void RestoreFrom(const DataContainer& properties, const DataContainer& attributes);
    void RollBackTo(const DataContainer& snapshot, const AttributeTable& attributes);

    void BeginMultiPropertyUpdate();
    void EndMultiPropertyUpdate();
    void EndMultiPropertyUpdate(Lock& lock);
    std::size_t NumPendingEvents() const { return (m_pendingEvent ? 1 : 0) + m_morePendingEvents.size(); }
    void Queue(std::shared_ptr<PropertyChangeEvent> event) { Queue(std::move(event), NumPendingEvents()); }
    void Queue(std::shared_ptr<PropertyChangeEvent> event, std::size_t position);
    std::vector<std::shared_ptr<PropertyChangeEvent>> TakePendingEvents();
    void DropPendingEvents();
    void DropPendingEvents(const std::string& name, std::size_t from);
    void Deliver(std::span<const std::shared_ptr<PropertyChangeEvent>> events);
    void SetActiveChangeEvent(const PropertyChangeEvent* event) {
        m_activeEvent.store(event, std::memory_order_relaxed);
    }
    void CollectShown(std::vector<std::shared_ptr<PropertyContainer>>& shown) const;
    void RequireDistinct(const PropertyContainer* other, const std::string& name) const;

    mutable Core::ReadersWriterMutex m_mutex;
    const std::shared_ptr<Values> m_propertyData;
    mutable AttributeTable m_attributes; // made when they are needed
    bool m_allowsSetOfNonExisting;
    std::uint32_t m_updateDepth = 0;
    std::shared_ptr<PropertyChangeEvent> m_pendingEvent; // the first one; mostly there are no others
    std::vector<std::shared_ptr<PropertyChangeEvent>> m_morePendingEvents;
    Core::NotificationSupport m_listeners;
    PropertyChangeDelegator m_delegator;
    std::atomic<const PropertyChangeEvent*> m_activeEvent{nullptr};
    std::shared_ptr<const void> m_life; // others hold it weakly
};

/// Gathers the changes of a scope: listeners hear of them when the outermost sentry of a container ends. The end may
/// raise what a listener raises; while the scope is left by an exception, that is logged instead.
class TIVOR_API PropertyContainer::MultiPropertyUpdateSentry {
public:
    /// The container must outlive the sentry.
    explicit MultiPropertyUpdateSentry(PropertyContainer& container);
    MultiPropertyUpdateSentry(const MultiPropertyUpdateSentry&) = delete;
    MultiPropertyUpdateSentry& operator=(const MultiPropertyUpdateSentry&) = delete;
    ~MultiPropertyUpdateSentry() noexcept(false);

    /// Leaves the update open, for good.
    void Dismiss() { m_container = nullptr; }

private:
    PropertyContainer* m_container;
    int m_exceptions;
};

/// Keeps the properties and attributes of a container, and of those that it shows (`Aggregate`), as they are when it is
/// made. Values are shared, not copied: what was changed in place is not brought back.
class TIVOR_API PropertyContainer::RestorePoint {
public:
    /// The container must outlive the restore point.
    explicit RestorePoint(PropertyContainer& container);
    RestorePoint(const RestorePoint& other);
    RestorePoint& operator=(const RestorePoint& other);
    ~RestorePoint();

    PropertyContainer& GetProperties() const { return *m_container; }
    /// Whether properties or attributes differ from those that are kept, here or in what the container shows.
    bool PropertiesChanged() const;
    /// Brings them back, as one update: change handlers are asked, and listeners hear of each value that changes.
    /// Properties that were added since are removed, with an event without a new value.
    void RestoreProperties();

private:
    RestorePoint(PropertyContainer& container, std::shared_ptr<PropertyContainer> shown);

    PropertyContainer* m_container;
    std::shared_ptr<PropertyContainer> m_shown;  // keeps a nested one alive
    std::shared_ptr<const DataContainer> m_kept; // "Properties", and "Attributes" by property
    std::vector<RestorePoint> m_nested;
};

template <>
struct ValueTraits<PropertyContainer> {
    static ETypeID GetTypeID() { return ePROPERTY_CONTAINER; }
    static std::string GetTypeName() { return "PropertyContainer"; }
    /// What derives from it cannot be copied here: the copy refers to the same object.
    static std::shared_ptr<PropertyContainer> Clone(const PropertyContainer& value) {
        return const_cast<PropertyContainer&>(value).weak_from_this().lock();
    }
    TIVOR_API static boost::logic::tribool Equal(const PropertyContainer& left, const PropertyContainer& right);
    TIVOR_API static std::string ToString(const PropertyContainer& value);
};

extern template class TIVOR_API GenericWrapper<PropertyContainer>;

template <class T>
std::optional<T> PropertyContainer::GetValue(const std::string& name) const {
    const Core::QorConstPtr<DataObject> value = GetPropertyByName(name);
    if constexpr (std::is_enum_v<T>) {
        const auto* const scalar = dynamic_cast<const ScalarData*>(value.get());
        return scalar != nullptr ? GetEnum<T>(*scalar) : std::nullopt;
    } else {
        const std::shared_ptr<const T> held = Details::GetHeld<const T>(value);
        return held ? std::optional<T>(*ValueTraits<T>::Clone(*held)) : std::nullopt;
    }
}

/// The text for a key in the string table of that name of the root `Core::Locale`, or the fallback. It is looked up
/// once; what it is then stays as long as the process runs.
TIVOR_API std::string GetPropertyString(const std::string& table, const std::string& key, const std::string& fallback);
/// The same for a category in the table `sCATEGORY_STRING_TABLE`; the fallback is the category itself.
TIVOR_API std::string GetPropertyCategory(const std::string& category);

} // namespace Qor::Tivor
