#pragma once

#include <Tivor/BuiltInDataObjects.h>
#include <Tivor/SerializationManager.h>

#include <functional>
#include <iterator>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace Qor::Tivor {

class ContainerState;
struct EntryBlock;

/// A null object was to be stored.
QOR_DECLARE_ALERT(TIVOR_API, PutNullDataPtr, Core::Warning);

QOR_DECLARE_ALERT(TIVOR_API, OpenDataFileFailed, Core::IOError);

/// The key under which a container keeps its metadata.
extern TIVOR_API const std::string sMETA_DATA;

/// Maps string keys to shared data objects and keeps them in the order in which the keys were first stored. Keys are
/// compared exactly; any text is a key, the empty one included. Containers stand in one another by
/// `DataContainerWrapper`, which makes a tree of at most 256 levels; a container can never come to stand in itself.
///
/// In a stream: the entries, each with name, header and data (`DataObjectHeader`), then the end marker: an empty name,
/// the byte 127 and the 16-bit value 0xFFFF. Objects without a serializer are left out.
///
/// Thread rule: every operation holds the container's mutex for its duration, so a container may be shared by threads.
/// Walking takes a snapshot: changes made meanwhile, by callbacks too, do not disturb it. The objects themselves are
/// guarded by their own locks, where these were enabled.
///
/// Deriving: whoever overrides the change hooks calls `ReceiveChanges` in its constructor and `StopChanges` in its
/// destructor.
class TIVOR_API DataContainer {
public:
    struct Entry {
        std::string key;
        std::shared_ptr<DataObject> object;
    };

    /// Walks the entries as they were when the walk began, in their order.
    class TIVOR_API Iterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = Entry;
        using difference_type = std::ptrdiff_t;
        using pointer = const Entry*;
        using reference = const Entry&;

        Iterator();
        explicit Iterator(std::shared_ptr<const EntryBlock> block);
        Iterator(const Iterator& other);
        Iterator(Iterator&& other) noexcept;
        Iterator& operator=(Iterator other) noexcept;
        ~Iterator();

        reference operator*() const { return *m_entry; }
        pointer operator->() const { return m_entry; }
        Iterator& operator++();
        Iterator operator++(int);
        /// Two walks of one snapshot are equal at the same entry; every finished walk equals `end()`.
        bool operator==(const Iterator& other) const { return m_entry == other.m_entry; }

    private:
        void Settle();

        std::shared_ptr<const EntryBlock> m_block;
        std::size_t m_position = 0;
        const Entry* m_entry = nullptr;
    };

    /// `lockableByDefault`: whether the objects that the container itself makes (texts, entries that are read) can be
    /// locked.
    explicit DataContainer(bool lockableByDefault = false);
    /// Shares the objects of the other container.
    DataContainer(const DataContainer& other);
    DataContainer& operator=(const DataContainer& other);
    virtual ~DataContainer();

    virtual bool Exists(std::string key) const;
    /// The object under the key, or an empty pointer.
    virtual std::shared_ptr<DataObject> Get(const std::string& key);
    Core::QorConstPtr<DataObject> Get(const std::string& key) const;
    /// The container that the path of keys leads to. With `create` missing ones are made on the way; otherwise, and
    /// where something else stands in the way, the pointer is empty. So it is for an empty path.
    virtual std::shared_ptr<DataContainer> GetSubData(const std::vector<std::string>& path, bool create);
    /// Takes the object out and returns it; an empty pointer when there is none.
    virtual std::shared_ptr<DataObject> Remove(const std::string& key);
    virtual std::uint64_t NumDataObjects() const;
    /// Adds the keys to the set.
    virtual void EnumData(std::set<std::string>& keys) const;
    /// Appends the keys in the order of the entries.
    virtual void EnumData(std::vector<std::string>& keys) const;
    /// Adds the entries of the other container, sharing their objects; what has the same key is replaced in its place.
    /// All or nothing, as `Assign` and `CloneContents`.
    virtual void Append(const DataContainer& other);
    /// Replaces all entries by those of the other container, sharing their objects.
    virtual void Assign(const DataContainer& other);
    virtual void Clear();
    /// Replaces all entries by clones of the other container's.
    virtual void CloneContents(const DataContainer& other);
    /// Appends the locks of the container and of everything in it, taken as one set: without a fixed order, and without
    /// deadlock against others that do the same.
    virtual void AcquireLocks(std::vector<std::shared_ptr<Core::Lock>>& locks) const;
    /// Adds the entries of the stream up to the end marker and returns the bytes read. What cannot be created is
    /// skipped with the warning `DataObjectCreationFailed`. When an error ends the reading, the container is as before.
    virtual std::uint64_t InputData(Core::BinaryInputStream& stream);
    /// Tells of an entry by the keys that lead to it, its own last, and what it is; says whether to go into the entry,
    /// if that is a container.
    using HeaderVisitor = std::function<bool(const std::vector<std::string>& path, const DataObjectHeader& header)>;
    /// Visits the entries of a stored container without reading their data, up to the end marker. A container comes
    /// before what is in it. Raises as reading does, at the entry that is damaged, with the variable "Key".
    static void ForEachHeader(Core::BinaryInputStream& stream, const HeaderVisitor& visit);
    /// The same for a container in memory; entries that cannot be stored are left out. Those that could not be read
    /// into it come last in their container.
    static void ForEachHeader(const DataContainer& container, const HeaderVisitor& visit,
                              const std::vector<UnreadEntry>& unread = {});
    /// Writes the entries and the end marker and returns the byte count; with `lock` while holding the locks of
    /// `AcquireLocks`.
    virtual std::uint64_t OutputData(Core::BinaryOutputStream& stream, bool lock) const;
    /// Writes the entries as XML elements (`SerializationManager::OutputXML`), in their order and without an end
    /// marker; `lock` as above.
    virtual void OutputData(std::ostream& stream, Core::XMLWriter& writer, bool lock) const;
    /// Writes the container as an element of the given name, without a name as "DataContainer".
    virtual void Output(std::ostream& stream, Core::XMLWriter& writer, const std::string& name) const;

    /// Writes the container as an XML document.
    void OutputXML(Core::BinaryOutputStream& stream) const;
    /// Adds the entries of an XML document whose root element is that of a container. What cannot be created, and
    /// elements that are not known, are passed over, with the warnings `DataObjectCreationFailed` and
    /// `SkippingUnknownTag`. Raises `InvalidDataTag` for any other document, `Core::XMLParseError`, and what
    /// serializers raise, with "Line" and "Column"; the container is then as before.
    void InputXML(Core::BinaryInputStream& stream);
    /// The same with a file, which always holds a complete old or a complete new document. Raise `OpenDataFileFailed`
    /// when the file cannot be opened; errors have the variable "File".
    void ToXMLFile(const std::string& fileName) const;
    static std::shared_ptr<DataContainer> FromXMLFile(const std::string& fileName);
    /// Reads a document that is in memory.
    static std::shared_ptr<DataContainer> FromXMLString(const std::string& text);

    static std::shared_ptr<DataContainer> Create(bool lockableByDefault = false);
    /// A deep copy.
    static std::shared_ptr<DataContainer> Create(const DataContainer& other);
    /// Reads a container from a stream.
    static std::shared_ptr<DataContainer> Create(Core::BinaryInputStream& stream, bool lockableByDefault = false);
    /// A deep copy.
    std::shared_ptr<DataContainer> Clone() const;

    /// Stores the object itself, which is shared from then on. A null pointer is refused with the warning
    /// `PutNullDataPtr`; what stood under the key stays. Raises `LogicError`, storing nothing, for a container that
    /// holds this one or would make the tree deeper than 256 levels.
    void Put(const std::string& key, Core::QorConstPtr<DataObject> object);
    /// Stores the container itself below this one.
    void Put(const std::string& key, std::shared_ptr<DataContainer> container);
    /// Stores a text as a string object; `lockable`: indeterminate takes the container's default.
    void Put(const std::string& key, const char* text, bool enableSerialization = true,
             boost::logic::tribool lockable = boost::logic::indeterminate);
    void Put(const std::string& key, const wchar_t* text, bool enableSerialization = true,
             boost::logic::tribool lockable = boost::logic::indeterminate);

    /// Stores a new data object that holds the value: a deep copy, or, of a temporary, the value itself. The standard
    /// collections need `CollectionSerialization.h`.
    template <class T>
    void PutValue(const std::string& key, const T& value) {
        PutMade(key, MakeData(value));
    }
    template <class T>
    requires(!std::is_reference_v<T> && !std::is_const_v<T>) void PutValue(const std::string& key, T&& value) {
        PutMade(key, MakeData(std::move(value)));
    }
    void PutValue(const std::string& key, const char* text) { PutValue(key, std::string(text)); }
    /// A deep copy of the value under the key, or empty where none of exactly this type stands there.
    template <class T>
    std::optional<T> GetValue(const std::string& key) const {
        const std::shared_ptr<const T> value = GetPtr<T>(key);
        if (!value)
            return std::nullopt;
        if constexpr (requires { T(value->Clone()); })
            return value->Clone();
        else
            return *value;
    }
    /// The value under the key, shared with its object, or an empty pointer. For a T that is a data object itself, as
    /// `Array<double>` or `ScalarData`, the object.
    template <class T>
    std::shared_ptr<T> GetPtr(const std::string& key) {
        return GetPtrFrom<T>(Get(key));
    }
    template <class T>
    Core::QorConstPtr<T> GetPtr(const std::string& key) const {
        return GetPtrFrom<const T>(Get(key));
    }

    bool IsEmpty() const { return NumDataObjects() == 0; }
    Iterator begin() const;
    Iterator end() const { return Iterator(); }
    /// Calls back for each entry of a snapshot; with `lock` while the container's mutex is held.
    static void
    ForAllDataIn(const DataContainer& container,
                 const std::function<void(const std::string&, const std::shared_ptr<DataObject>&)>& callback,
                 bool lock);
    DataContainer& operator+=(const DataContainer& other);
    /// Same keys in whatever order, and for each the same object, or one of the same type that surely holds the same
    /// value.
    bool operator==(const DataContainer& other) const;

    void DefaultToLockableData(bool lockable);
    bool DefaultsToLockableData() const;
    /// While on, the size of the stored form is kept up to date as objects report their changes, so that asking for it
    /// does not measure every entry again. Off at start.
    void EnableSizeTracking(bool enable);
    /// The bytes that `OutputData` would write now.
    std::uint64_t GetDataSize_bytes() const;

protected:
    struct StandAlone {};
    /// For containers that must not stand in others, as data files.
    explicit DataContainer(StandAlone);

    /// The mutex that every operation holds.
    virtual std::shared_ptr<Core::Mutex> BeginDataAccess() const;
    /// Stores an object; all operations that store end here.
    virtual void PutDataObject(const std::string& key, std::shared_ptr<DataObject> object);
    /// Another object stands under the key; null: none any more. The hooks are called by the thread that made the
    /// change, with no lock of the library held.
    virtual void OnDataObjectChanged(const std::string& key, std::shared_ptr<DataObject> object);
    /// The object under the key refers to another value.
    virtual void OnDataReferenceChanged(const std::string& key, std::shared_ptr<DataObject> object);
    /// The value of the object under the key, or something inside it, has changed.
    virtual void OnDataValueChanged(const std::string& key, std::shared_ptr<DataObject> object);

    /// Runs `work`, which may consist of several operations on this container, while holding its mutex; the hooks hear
    /// of the changes after the mutex is released.
    void Atomically(const std::function<void()>& work);

    /// Begins and ends the calls of the hooks; when `StopChanges` returns, no hook runs on another thread.
    void ReceiveChanges();
    void StopChanges();

    /// Works on the other container's entries instead of its own from now on: same entries, same mutex.
    void BindTo(const DataContainer& other);
    /// Works on its own entries again.
    void Unbind();

private:
    friend class ContainerState;
    friend class DataContainerWrapper;
    friend class DataContainerSerializer;
    class HookCaller;

    template <class T, class Object>
    static std::shared_ptr<T> GetPtrFrom(const std::shared_ptr<Object>& found) {
        if constexpr (std::is_base_of_v<DataObject, T>)
            return std::dynamic_pointer_cast<T>(found);
        else
            return Details::GetHeld<T>(found);
    }

    void PutMade(const std::string& key, std::shared_ptr<MutexLockableDataObject> object);
    void PutAll(Iterator entry);
    void ReadEntries(Core::BinaryInputStream& stream, std::uint64_t& bytesRead);
    std::shared_ptr<DataContainer> GetSubContainer(const std::string& key, bool create);

    std::shared_ptr<ContainerState> m_state;
    std::unique_ptr<HookCaller> m_hooks;
};

template <>
struct ValueTraits<DataContainer> {
    static constexpr bool guardsItself = true;
    /// The entries of a container have no common type.
    static void GetBaseDataTypeInfo(ETypeID& typeID, std::string& typeName) {
        typeID = eNO_TYPE;
        typeName.clear();
    }
    static ETypeID GetTypeID() { return eDATA_CONTAINER; }
    static std::string GetTypeName() { return "DataContainer"; }
    static std::shared_ptr<DataContainer> Clone(const DataContainer& value) { return value.Clone(); }
    static void Assign(DataContainer& target, const DataContainer& value) { target.CloneContents(value); }
    static std::shared_ptr<DataContainer> CreateDefault() { return DataContainer::Create(); }
    static boost::logic::tribool Equal(const DataContainer& left, const DataContainer& right) { return left == right; }
    TIVOR_API static std::string ToString(const DataContainer& value);
    TIVOR_API static std::shared_ptr<Serializer> MakeSerializer(Data<DataContainer>& object);
    static std::shared_ptr<DataContainer> MakeValue(const DataContainer& value) {
        return std::make_shared<DataContainer>(value);
    }
    /// Containers are wrapped by `DataContainerWrapper` only.
    TIVOR_API static std::shared_ptr<Data<DataContainer>> MakeData(std::shared_ptr<DataContainer> container);
    TIVOR_API static std::shared_ptr<Data<DataContainer>> MakeData(const Data<DataContainer>& other);
};

extern template class TIVOR_API GenericWrapper<DataContainer>;
extern template class TIVOR_API Data<DataContainer>;

/// Carries a container inside another one. Its lock is the wrapped container's mutex.
class TIVOR_API DataContainerWrapper final : public Data<DataContainer> {
public:
    /// Holds a new container when none is given.
    explicit DataContainerWrapper(std::shared_ptr<DataContainer> container = nullptr);
    explicit DataContainerWrapper(const Data<DataContainer>& other);
    DataContainerWrapper(const DataContainerWrapper& other);
    ~DataContainerWrapper() override;

    bool IsLockable() const override;
    bool EnableDataLocking() override;
    /// The locks of the container and of everything in it.
    void AcquireLocks(std::vector<std::shared_ptr<Core::Lock>>& locks) const override;
    std::shared_ptr<Core::Lock> GetDataLock() override;
    /// Raises `LogicError`, changing nothing, where the container must not stand (see `DataContainer::Put`), or for
    /// null.
    bool SetData(std::shared_ptr<DataContainer> container) override;

private:
    friend class ContainerState;
    std::shared_ptr<ContainerState> GetState() const;
};

} // namespace Qor::Tivor
