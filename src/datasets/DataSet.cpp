#include "DataChannelTable.h"
#include "DataSetKeys.h"

#include <QorCore/Message.h>
#include <Tivor/DataSet.h>

#include <utility>

namespace Qor::Tivor {

InvalidDataSetEntry::~InvalidDataSetEntry() = default;
IDataSet::~IDataSet() = default;

const std::string sDATA_FORMAT = "DataFormat";
const std::string sDATASET_NAME = "DataSetName";
const std::string DataSet::s2D_DATA = "2D_Data";
const std::string DataSet::s1D_DATA = "1D_Data";
const std::string DataSet::sFORMAT = "QOR Data Set";
const std::string DataSet::sPRIMARY_2D_DATA_KEY = "PrimaryData2D";

/// The containers of the layout, and the channels over them.
struct DataSet::Parts {
    std::shared_ptr<DataContainer> metaData;
    std::shared_ptr<DataContainer> data2D;
    std::shared_ptr<DataContainer> data1D;
    std::shared_ptr<DataChannelTable<Data2D>> channels2D;
    std::shared_ptr<DataChannelTable<Data1D>> channels1D;
};

namespace {

/// The container under a key; where there is none, a new one is made, and put among those that are missing.
std::shared_ptr<DataContainer> TakePart(DataContainer& container, const std::string& key, DataContainer& missing) {
    if (auto part = container.GetPtr<DataContainer>(key))
        return part;
    if (const auto other = container.Get(key))
        Core::Warning::RaiseWarning(
            InvalidDataSetEntry(Core::FormatText(
                "Expected a container under the key %1% of a data set, found an object of type %2%, which is replaced",
                {key, other->GetTypeName()})),
            QOR_CODE_CONTEXT("DataSet"), "Qor.Tivor.DataSet");
    auto made = DataContainer::Create();
    if (key == sMETA_DATA)
        made->PutValue(sDATA_FORMAT, DataSet::sFORMAT);
    missing.Put(key, made);
    return made;
}

// One that is a set of this library has entries beside those of the layout. Any other may store the very containers
// that it works on.
void StoreWhole(IDataSet& set, DataContainer& container) {
    if (const auto* const own = dynamic_cast<const DataSet*>(&set)) {
        container.Append(*own->GetContent());
        return set.StoreDataSet(container);
    }
    set.StoreDataSet(container);
    if (const auto metaData = container.GetPtr<DataContainer>(sMETA_DATA))
        container.Put(sMETA_DATA, metaData->Clone());
    for (const std::string& key : {DataSet::s2D_DATA, DataSet::s1D_DATA})
        if (const auto items = container.GetPtr<DataContainer>(key))
            container.Put(key, std::make_shared<DataContainer>(*items));
}

} // namespace

DataSet::DataSet() : m_content(DataContainer::Create()) { Clear(); }

DataSet::DataSet(std::shared_ptr<DataContainer> content) : m_content(std::move(content)) {}

DataSet::DataSet(DataContainer& container) : m_content(DataContainer::Create()) { LoadDataSet(container); }

DataSet::DataSet(IDataSet& other) : m_content(DataContainer::Create()) { *this = other; }

DataSet::DataSet(std::shared_ptr<Data2D> data, const std::string& key) : DataSet() {
    if (StoreData(std::move(data), key))
        SetPrimaryData2DKey(key);
}

DataSet::DataSet(const DataSet& other) : m_content(DataContainer::Create()) { *this = other; }

DataSet::DataSet(DataSet&& other) : m_content(DataContainer::Create()) { *this = std::move(other); }

DataSet& DataSet::operator=(const DataSet& other) {
    return *this = static_cast<IDataSet&>(const_cast<DataSet&>(other));
}

DataSet& DataSet::operator=(DataSet&& other) {
    if (&other != this) {
        TakeContent(*other.m_content);
        other.Clear();
    }
    return *this;
}

DataSet& DataSet::operator=(IDataSet& other) {
    if (&other != this) {
        DataContainer stored;
        StoreWhole(other, stored);
        Load(stored);
    }
    return *this;
}

DataSet::~DataSet() = default;

std::shared_ptr<DataSet> DataSet::Create(DataContainer& container) { return std::make_shared<DataSet>(container); }

std::shared_ptr<DataSet> DataSet::Create(IDataSet& other) { return std::make_shared<DataSet>(other); }

std::shared_ptr<DataSet> DataSet::Create(std::shared_ptr<Data2D> data, const std::string& key) {
    return std::make_shared<DataSet>(std::move(data), key);
}

DataSet DataSet::Clone() const { return DataSet(std::shared_ptr<DataContainer>(m_content->Clone())); }

bool DataSet::IsDataSetFormat(const DataContainer& container) {
    const auto metaData = container.GetPtr<DataContainer>(sMETA_DATA);
    const auto format = metaData ? metaData->GetPtr<std::string>(sDATA_FORMAT) : nullptr;
    return format && *format == sFORMAT;
}

// --- Items

std::shared_ptr<DataContainer> DataSet::GetMetaData() { return GetParts().metaData; }

std::shared_ptr<DataContainer> DataSet::GetAllData2DItems() { return GetParts().data2D; }

std::shared_ptr<DataContainer> DataSet::GetAllData1DItems() { return GetParts().data1D; }

std::uint64_t DataSet::GetNumData2DItems() const { return GetParts().channels2D->GetNumItems(); }

std::uint64_t DataSet::GetNumData1DItems() const { return GetParts().channels1D->GetNumItems(); }

std::shared_ptr<Data2D> DataSet::GetData2D(const std::string& key) { return GetParts().data2D->GetPtr<Data2D>(key); }

std::shared_ptr<Data1D> DataSet::GetData1D(const std::string& key) { return GetParts().data1D->GetPtr<Data1D>(key); }

bool DataSet::StoreData(std::shared_ptr<Data1D> data, const std::string& key) {
    return data && (GetParts().channels1D->Store(key, data), true);
}

bool DataSet::StoreData(std::shared_ptr<Data2D> data, const std::string& key) {
    return data && (GetParts().channels2D->Store(key, data), true);
}

bool DataSet::GetPrimaryData2DKey(std::string& key) const {
    const auto stored = GetParts().metaData->GetPtr<std::string>(sPRIMARY_2D_DATA_KEY);
    if (stored)
        key = *stored;
    return stored != nullptr;
}

bool DataSet::SetPrimaryData2DKey(const std::string& key) {
    GetParts().metaData->PutValue(sPRIMARY_2D_DATA_KEY, key);
    return true;
}

std::shared_ptr<Data2D> DataSet::GetPrimaryData2D() {
    std::string key;
    if (GetPrimaryData2DKey(key))
        if (auto primary = GetData2D(key))
            return primary;
    for (const auto& entry : *GetParts().data2D)
        if (auto first = GetData2D(entry.key)) {
            SetPrimaryData2DKey(entry.key);
            return first;
        }
    return nullptr;
}

void DataSet::Clear() {
    DataContainer empty;
    Load(empty);
}

// --- Channels

void DataSet::GetData2DChannels(std::unordered_set<std::string>& names) { GetParts().channels2D->GetNames(names); }

void DataSet::GetData1DChannels(std::unordered_set<std::string>& names) { GetParts().channels1D->GetNames(names); }

std::shared_ptr<IData2DChannel> DataSet::GetData2DChannel(const std::string& name) {
    return GetParts().channels2D->Find(name);
}

std::shared_ptr<IData1DChannel> DataSet::GetData1DChannel(const std::string& name) {
    return GetParts().channels1D->Find(name);
}

std::shared_ptr<DataContainer> DataSet::Get1DChannelConfig() { return GetParts().channels1D->GetConfig(); }

std::shared_ptr<DataContainer> DataSet::Get2DChannelConfig() { return GetParts().channels2D->GetConfig(); }

// --- Containers

void DataSet::StoreDataSet(DataContainer& container) {
    DataContainer stored;
    const auto metaData = GetParts().metaData->Clone();
    metaData->PutValue(sDATA_FORMAT, sFORMAT);
    GetParts().channels2D->StoreConfig(*metaData);
    GetParts().channels1D->StoreConfig(*metaData);
    stored.Put(sMETA_DATA, metaData);
    stored.Put(s2D_DATA, std::make_shared<DataContainer>(*GetParts().data2D));
    stored.Put(s1D_DATA, std::make_shared<DataContainer>(*GetParts().data1D));
    container.Append(stored);
}

void DataSet::LoadDataSet(DataContainer& container) {
    const DataContainer before(container);
    try {
        Load(container);
    } catch (...) {
        container.Assign(before);
        throw;
    }
}

// What is missing is made in the container, too.
void DataSet::Load(DataContainer& container) {
    DataContainer missing;
    auto parts = std::make_unique<Parts>();
    parts->metaData = TakePart(container, sMETA_DATA, missing);
    parts->data2D = TakePart(container, s2D_DATA, missing);
    parts->data1D = TakePart(container, s1D_DATA, missing);
    parts->channels2D = DataChannelTable<Data2D>::Create(parts->data2D, parts->metaData, channels2DKey);
    parts->channels1D = DataChannelTable<Data1D>::Create(parts->data1D, parts->metaData, channels1DKey);
    container.Append(missing);
    m_content->Assign(container);
    m_parts = std::move(parts);
}

// It stays as it is until somebody asks.
void DataSet::TakeContent(const DataContainer& read) {
    m_content->Assign(read);
    m_parts.reset();
}

DataSet::Parts& DataSet::GetParts() const {
    if (!m_parts)
        const_cast<DataSet*>(this)->Load(*m_content);
    return *m_parts;
}

bool DataSet::operator==(const DataSet& other) const { return *m_content == *other.m_content; }

std::string DataSet::ToString() const {
    const auto count = [](std::uint64_t number, const char* what) {
        return std::to_string(number) + ' ' + what + (number == 1 ? "" : "s");
    };
    return "DataSet of " + count(GetNumData2DItems(), "surface") + " and " + count(GetNumData1DItems(), "profile");
}

} // namespace Qor::Tivor
