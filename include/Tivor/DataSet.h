#pragma once

#include <Tivor/DataChannel.h>
#include <Tivor/DataKinds.h>

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_set>

namespace Qor::Tivor {

/// Something else than a container stands where data sets have one; it is replaced.
QOR_DECLARE_ALERT(TIVOR_API, InvalidDataSetEntry, Core::Warning);

/// A measurement: surfaces and profiles under their keys, with metadata. One of the surfaces is the primary one. Items
/// of one kind (the property "DataKind") make a channel.
class TIVOR_API IDataSet {
public:
    virtual ~IDataSet();

    virtual std::shared_ptr<DataContainer> GetMetaData() = 0;
    virtual std::uint64_t GetNumData2DItems() const = 0;
    virtual std::uint64_t GetNumData1DItems() const = 0;
    virtual std::shared_ptr<DataContainer> GetAllData2DItems() = 0;
    virtual std::shared_ptr<DataContainer> GetAllData1DItems() = 0;
    /// The key as it is recorded; false when there is none.
    virtual bool GetPrimaryData2DKey(std::string& key) const = 0;
    /// Records the key, whether or not there is such an item.
    virtual bool SetPrimaryData2DKey(const std::string& key) = 0;
    /// The surface of the recorded key; or else the first surface there is, whose key is recorded. Empty when there is
    /// none.
    virtual std::shared_ptr<Data2D> GetPrimaryData2D() = 0;
    /// Or an empty pointer.
    virtual std::shared_ptr<Data2D> GetData2D(const std::string& key) = 0;
    virtual std::shared_ptr<Data1D> GetData1D(const std::string& key) = 0;
    /// Stores an item, which is shared from then on, and appends it to the channel of its kind; one that has the key
    /// already is replaced. False for an empty pointer.
    virtual bool StoreData(std::shared_ptr<Data1D> data, const std::string& key) = 0;
    virtual bool StoreData(std::shared_ptr<Data2D> data, const std::string& key) = 0;
    virtual void Clear() = 0;
    /// Adds the names of the channels to the set.
    virtual void GetData2DChannels(std::unordered_set<std::string>& names) = 0;
    virtual void GetData1DChannels(std::unordered_set<std::string>& names) = 0;
    /// Or an empty pointer.
    virtual std::shared_ptr<IData2DChannel> GetData2DChannel(const std::string& name) = 0;
    virtual std::shared_ptr<IData1DChannel> GetData1DChannel(const std::string& name) = 0;
    /// Stores the set in a container, in the layout of `DataSet`.
    virtual void StoreDataSet(DataContainer& container) = 0;
    /// Replaces the set by what the container holds in that layout.
    virtual void LoadDataSet(DataContainer& container) = 0;
};

/// The keys of the metadata.
extern TIVOR_API const std::string sDATA_FORMAT;  ///< text: what the set is laid out as
extern TIVOR_API const std::string sDATASET_NAME; ///< text

/// A data set over a container in the common layout:
///
///     MetaData
///         DataFormat       text, "QOR Data Set"
///         DataSetName      text
///         PrimaryData2D    text: key of the primary surface
///         2D_Channels      for each channel, under its name, the keys of its surfaces, a list of texts
///         1D_Channels      the same of profiles
///         ...              whatever a program adds
///     2D_Data              surfaces by their keys
///     1D_Data              profiles by their keys
///     ...                  additional data
///
/// Channels, those that were handed out too, and the lists of their keys follow at once what is stored, removed or
/// replaced in the containers, whoever does it, and items whose kind changes. An item that what was loaded lists for a
/// channel is in that one, whatever its kind, until its kind changes.
///
/// As a data object, `Data<DataSet, GenericWrapper<IDataSet>>`, its stored form is that of the container.
///
/// Thread rule: a set is not synchronised; its containers, items and channels are, and may be changed by other threads.
/// Where they are, ask the set for nothing while holding the lock of one of them.
class TIVOR_API DataSet : public IDataSet {
public:
    static const std::string s2D_DATA;
    static const std::string s1D_DATA;
    static const std::string sFORMAT;
    static const std::string sPRIMARY_2D_DATA_KEY;

    /// An empty set.
    DataSet();
    /// `LoadDataSet`.
    explicit DataSet(DataContainer& container);
    /// Shares the items of the other set; the metadata are copied.
    explicit DataSet(IDataSet& other);
    /// A set of one surface, which is the primary one.
    DataSet(std::shared_ptr<Data2D> data, const std::string& key);
    /// As of any set.
    DataSet(const DataSet& other);
    /// The other set is empty then.
    DataSet(DataSet&& other);
    DataSet& operator=(const DataSet& other);
    DataSet& operator=(DataSet&& other);
    DataSet& operator=(IDataSet& other);
    ~DataSet() override;

    static std::shared_ptr<DataSet> Create(DataContainer& container);
    static std::shared_ptr<DataSet> Create(IDataSet& other);
    static std::shared_ptr<DataSet> Create(std::shared_ptr<Data2D> data, const std::string& key);
    /// A copy with items of its own.
    DataSet Clone() const;

    /// Whether the container's metadata say that it is laid out as a data set.
    static bool IsDataSetFormat(const DataContainer& container);

    std::shared_ptr<DataContainer> GetMetaData() override;
    std::uint64_t GetNumData2DItems() const override;
    std::uint64_t GetNumData1DItems() const override;
    std::shared_ptr<DataContainer> GetAllData2DItems() override;
    std::shared_ptr<DataContainer> GetAllData1DItems() override;
    bool GetPrimaryData2DKey(std::string& key) const override;
    bool SetPrimaryData2DKey(const std::string& key) override;
    std::shared_ptr<Data2D> GetPrimaryData2D() override;
    std::shared_ptr<Data2D> GetData2D(const std::string& key) override;
    std::shared_ptr<Data1D> GetData1D(const std::string& key) override;
    bool StoreData(std::shared_ptr<Data1D> data, const std::string& key) override;
    bool StoreData(std::shared_ptr<Data2D> data, const std::string& key) override;
    /// As a new empty set; the containers that the set had stay as they are for those who hold them.
    void Clear() override;
    void GetData2DChannels(std::unordered_set<std::string>& names) override;
    void GetData1DChannels(std::unordered_set<std::string>& names) override;
    std::shared_ptr<IData2DChannel> GetData2DChannel(const std::string& name) override;
    std::shared_ptr<IData1DChannel> GetData1DChannel(const std::string& name) override;
    /// New containers with copied metadata and shared items, in the place of what has their keys; other entries of the
    /// container stay. All or nothing.
    void StoreDataSet(DataContainer& container) override;
    /// The set shares the container's entries from then on. Containers of the layout that are missing are made in both;
    /// what stands in the place of one and is none is replaced there, with the warning `InvalidDataSetEntry`. All or
    /// nothing.
    void LoadDataSet(DataContainer& container) override;

    DataContainer& MetaData() { return *GetMetaData(); }
    DataContainer& AllData2D() { return *GetAllData2DItems(); }
    DataContainer& AllData1D() { return *GetAllData1DItems(); }

    /// Same items under the same keys, and the same metadata.
    bool operator==(const DataSet& other) const;
    /// As "DataSet of 2 surfaces and 1 profile".
    std::string ToString() const;
    /// The container that the set is stored as, the same one as long as the set lives. Of a set that was read as a data
    /// object it is what was read; what that lacks of the layout is made when the set is first asked for something.
    const std::shared_ptr<DataContainer>& GetContent() const { return m_content; }

protected:
    /// What holds the keys of the channels; made where it is missing.
    std::shared_ptr<DataContainer> Get1DChannelConfig();
    std::shared_ptr<DataContainer> Get2DChannelConfig();

private:
    friend class DataSetSerializer;
    struct Parts;

    explicit DataSet(std::shared_ptr<DataContainer> content);
    void Load(DataContainer& container);
    void TakeContent(const DataContainer& read);
    Parts& GetParts() const;

    const std::shared_ptr<DataContainer> m_content;
    mutable std::unique_ptr<Parts> m_parts; // empty until they are asked for, as long as the content is what was read
};

/// A data set of any class; without a class of its own it is not stored.
template <>
struct ValueTraits<IDataSet> {
    static ETypeID GetTypeID() { return eNO_TYPE; }
    static std::string GetTypeName() { return "IDataSet"; }
    /// Indeterminate unless both are data sets of this library.
    TIVOR_API static boost::logic::tribool Equal(const IDataSet& left, const IDataSet& right);
    TIVOR_API static std::string ToString(const IDataSet& value);
    /// Empty of sets of other classes.
    TIVOR_API static std::shared_ptr<DataContainer> GetContent(const IDataSet& value);
};

extern template class TIVOR_API GenericWrapper<IDataSet>;
TIVOR_DECLARE_DERIVED_VALUE(IDataSet, DataSet, eDATA_SET, )

} // namespace Qor::Tivor
