#pragma once

#include "Channels.h"

#include <algorithm>
#include <string>
#include <utility>

namespace Qor::Tivor::Testing {

/// A surface of 2 x 2 samples, all of that value.
inline std::shared_ptr<Data2D> Surface(const std::string& kind, int value = 0) {
    RowMajorMatrix<int> matrix(2, 2);
    std::fill(matrix.data(), matrix.data() + 4, value);
    auto surface = Data2D::Create(MakeData(matrix));
    surface->SetDataKind(kind);
    return surface;
}

inline std::shared_ptr<Data1D> Profile(const std::string& kind) {
    auto profile = std::make_shared<Data1D>();
    profile->SetDataKind(kind);
    return profile;
}

/// A set of another class, as a program may have it, with one surface "s" unless it is given others.
class ForeignSet : public IDataSet {
public:
    explicit ForeignSet(DataSet set = DataSet(Surface("Height"), "s")) : m_set(std::move(set)) {}

    std::shared_ptr<DataContainer> GetMetaData() override { return m_set.GetMetaData(); }
    std::uint64_t GetNumData2DItems() const override { return m_set.GetNumData2DItems(); }
    std::uint64_t GetNumData1DItems() const override { return m_set.GetNumData1DItems(); }
    std::shared_ptr<DataContainer> GetAllData2DItems() override { return m_set.GetAllData2DItems(); }
    std::shared_ptr<DataContainer> GetAllData1DItems() override { return m_set.GetAllData1DItems(); }
    bool GetPrimaryData2DKey(std::string& key) const override { return m_set.GetPrimaryData2DKey(key); }
    bool SetPrimaryData2DKey(const std::string& key) override { return m_set.SetPrimaryData2DKey(key); }
    std::shared_ptr<Data2D> GetPrimaryData2D() override { return m_set.GetPrimaryData2D(); }
    std::shared_ptr<Data2D> GetData2D(const std::string& key) override { return m_set.GetData2D(key); }
    std::shared_ptr<Data1D> GetData1D(const std::string& key) override { return m_set.GetData1D(key); }
    bool StoreData(std::shared_ptr<Data1D> data, const std::string& key) override { return m_set.StoreData(data, key); }
    bool StoreData(std::shared_ptr<Data2D> data, const std::string& key) override { return m_set.StoreData(data, key); }
    void Clear() override { m_set.Clear(); }
    void GetData2DChannels(std::unordered_set<std::string>& names) override { m_set.GetData2DChannels(names); }
    void GetData1DChannels(std::unordered_set<std::string>& names) override { m_set.GetData1DChannels(names); }
    std::shared_ptr<IData2DChannel> GetData2DChannel(const std::string& name) override {
        return m_set.GetData2DChannel(name);
    }
    std::shared_ptr<IData1DChannel> GetData1DChannel(const std::string& name) override {
        return m_set.GetData1DChannel(name);
    }
    void StoreDataSet(DataContainer& container) override { m_set.StoreDataSet(container); }
    void LoadDataSet(DataContainer& container) override { m_set.LoadDataSet(container); }

private:
    DataSet m_set;
};

/// The channels of surfaces by name, each with its keys, as "Height: a b; Phase: c; ".
inline std::string TellChannels(IDataSet& set) {
    std::string told;
    for (const auto& [name, keys] : ChannelsOf<Data2D>(set)) {
        told += name + ':';
        for (const std::string& key : keys)
            told += ' ' + key;
        told += "; ";
    }
    return told;
}

} // namespace Qor::Tivor::Testing
