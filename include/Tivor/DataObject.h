#pragma once

#include <QorCore/Mutex.h>
#include <Tivor/Export.h>
#include <Tivor/Fwd.h>
#include <Tivor/TypeFacts.h>

#include <boost/logic/tribool.hpp>

#include <atomic>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

namespace Qor::Tivor {

/// The value that every module of the suite hands to every other: base of all data objects, always held by
/// `std::shared_ptr`. The base holds nothing and answers what an object without a value, a serializer and a mutex
/// would.
///
/// Thread rule: objects are unsynchronised unless their locking was enabled.
class TIVOR_API DataObject {
public:
    virtual ~DataObject();

    /// The object's type identifier; bit 7 may be set on kept data. `eNO_TYPE` for classes outside this library.
    virtual ETypeID GetTypeID();
    /// Fills in the identifier and the name of the base data type: the wrapped value's type, or a collection's element
    /// type; (`eNO_TYPE`, "") where there is none.
    virtual void GetBaseDataTypeInfo(ETypeID& typeID, std::string& typeName) const;
    /// The class name by which the factory knows the object; it is written into headers.
    virtual std::string GetTypeName() const = 0;
    /// Whether the object holds a value of the given run-time type.
    virtual bool HoldsType(const std::type_info& type) const = 0;
    virtual bool HoldsSameTypeAs(const DataObject& other) const = 0;
    /// True, false, or indeterminate where values of this class cannot be compared.
    virtual boost::logic::tribool HoldsSameValueAs(const DataObject& other);

    /// Switches serialization on or off and returns whether that was possible. Without a switch of its own a class can
    /// be switched off (true) and never on (false).
    virtual bool EnableSerialization(bool enable);
    /// True exactly when `GetSerializer` gives one.
    virtual bool SerializationIsEnabled() const;
    /// The serializer of this object, or an empty pointer: then the object cannot be written. The serializer refers to
    /// this object, which must outlive it.
    virtual std::shared_ptr<Serializer> GetSerializer();

    /// Whether the object's data can be locked now.
    virtual bool IsLockable() const;
    /// Gives the object a mutex, where its class can have one; returns whether it has one now. Call it before the
    /// object is shared between threads.
    virtual bool EnableDataLocking();
    /// Appends the locks that must be held to read or change the object's data consistently. They are held for as long
    /// as the vector lives, and released in reverse order.
    virtual void AcquireLocks(std::vector<std::shared_ptr<Core::Lock>>& locks) const;

    /// A deep copy: it shares nothing with this object.
    virtual std::shared_ptr<DataObject> Clone() = 0;
    /// A textual form of the value for display and logs.
    virtual std::string ToString();

    // The same questions asked of a const object; asking changes nothing.
    ETypeID GetTypeID() const { return Mutable().GetTypeID(); }
    boost::logic::tribool HoldsSameValueAs(const DataObject& other) const { return Mutable().HoldsSameValueAs(other); }
    std::shared_ptr<DataObject> Clone() const { return Mutable().Clone(); }
    std::string ToString() const { return Mutable().ToString(); }

    /// Reads one object as `SerializationManager::OutputDataBlock` wrote it, from its type code on (its name stands in
    /// front of that). Returns an empty pointer where the stream says that there is no object, and, with the warning
    /// `DataObjectCreationFailed`, where its class is not to be had; the stream then stands behind the block.
    /// Raises `EndOfStreamOnInput`, `InputInvalidTypeID`, `NullSerializer`, and what the object's serializer raises.
    static std::shared_ptr<DataObject> FromBinary(Core::BinaryInputStream& stream);

protected:
    DataObject() = default;
    DataObject(const DataObject&) = default;
    DataObject& operator=(const DataObject&) = default;

private:
    DataObject& Mutable() const { return const_cast<DataObject&>(*this); }
};

/// What happened to an object that a container holds.
enum class EDataChange : std::uint8_t {
    object,    ///< another object, or none, stands in its place
    reference, ///< it refers to another value
    value      ///< its value, or something inside it, is another one
};

/// Hears of the changes of the data objects below it; the containers of this library are such parents.
class ChangeParent {
public:
    /// Called while the object that changes is still locked: notes that its size is to be measured again, and locks and
    /// calls nothing else.
    virtual void NoteChildChange(std::uint64_t entry) = 0;
    /// Called with no lock of this library held, by the thread that made the change.
    virtual void OnChildChanged(std::uint64_t entry, EDataChange change) = 0;

protected:
    ~ChangeParent() = default;
};

/// The places that hold an object and hear of its changes. May be used by several threads at once.
class TIVOR_API ChangeLinks {
public:
    struct Link {
        std::weak_ptr<ChangeParent> parent;
        std::uint64_t entry = 0;
    };

    ChangeLinks() = default;
    ChangeLinks(const ChangeLinks&) = delete;
    ChangeLinks& operator=(const ChangeLinks&) = delete;
    ~ChangeLinks();

    void Add(const std::weak_ptr<ChangeParent>& parent, std::uint64_t entry);
    /// For an object that no other thread can know yet.
    void AddUnshared(const std::weak_ptr<ChangeParent>& parent, std::uint64_t entry);
    void Remove(const ChangeParent* parent, std::uint64_t entry);
    std::vector<Link> GetAll() const;
    /// False when there was never a link.
    bool MayHaveAny() const { return m_firstEntry.load(std::memory_order_relaxed) != 0; }
    /// While the change is still locked away from others; then, unlocked, `Report`.
    void Note() const;
    void Report(EDataChange change) const;

    /// Counts the containers that want `Note`; without any it does nothing.
    static void AddSizeTracker(int count);
    static bool HasSizeTrackers();

private:
    void Append(const std::weak_ptr<ChangeParent>& parent, std::uint64_t entry);

    // Nearly every object stands in no container or in one. Entries are numbered from 1.
    std::weak_ptr<ChangeParent> m_firstParent;
    std::atomic<std::uint64_t> m_firstEntry{0};
    std::unique_ptr<std::vector<Link>> m_more;
};

/// Base of all objects that can lock their data with a mutex of their own, and that tell the containers that hold them
/// when they change.
class TIVOR_API MutexLockableDataObject : public DataObject {
public:
    MutexLockableDataObject();
    /// The copy has a mutex of its own when the source has one, and stands in no container.
    MutexLockableDataObject(const MutexLockableDataObject& other);
    MutexLockableDataObject& operator=(const MutexLockableDataObject&) = delete;
    ~MutexLockableDataObject() override;

    bool IsLockable() const override;
    bool EnableDataLocking() override;
    void AcquireLocks(std::vector<std::shared_ptr<Core::Lock>>& locks) const override;

    /// A lock that holds the object's mutex for as long as it lives; empty when locking was never enabled.
    virtual std::shared_ptr<Core::Lock> GetDataLock();

protected:
    /// Tells the containers that hold this object: first `NoteChange`, while the change is still locked away from
    /// others, then `ReportChange`, with no lock held that a listener might want.
    void NoteChange() const { m_links.Note(); }
    void ReportChange(EDataChange change) const { m_links.Report(change); }

    /// The switch behind `EnableSerialization`, for the classes that have one.
    bool m_serializationEnabled = true;
    /// Set by the wrappers of containers.
    bool m_holdsContainer = false;

private:
    friend class ContainerState;
    friend class DataContainerWrapper;

    std::shared_ptr<Core::Mutex> m_mutex;
    ChangeLinks m_links;
};

/// A new `std::shared_ptr` on the heap that shares ownership with the argument, for callers across a module boundary
/// that keep a data object behind a plain pointer. The caller deletes it.
TIVOR_API std::shared_ptr<DataObject>* CreateDataObjectPtr(std::shared_ptr<DataObject> object);

/// A shared pointer to an object that stays the caller's: nothing is deleted at its end. Null gives an empty pointer.
TIVOR_API std::shared_ptr<DataObject> WrapRawDataObject(DataObject* object);

} // namespace Qor::Tivor
