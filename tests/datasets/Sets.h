#pragma once

#include <Tivor/DataSet.h>

#include <algorithm>
#include <string>
#include <vector>

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

/// The channels of surfaces by name, each with its keys, as "Height: a b; Phase: c; ".
inline std::string TellChannels(IDataSet& set) {
    std::unordered_set<std::string> names;
    set.GetData2DChannels(names);
    std::vector<std::string> sorted(names.begin(), names.end());
    std::sort(sorted.begin(), sorted.end());
    std::string told;
    for (const std::string& name : sorted) {
        const auto channel = set.GetData2DChannel(name);
        told += channel->GetName() + ':';
        for (std::uint64_t i = 0; i < channel->GetSize(); ++i)
            told += ' ' + channel->GetKeyForDataAt(i) +
                    (channel->GetDataAt(i) == set.GetData2D(channel->GetKeyForDataAt(i)) ? "" : " (another)");
        told += "; ";
    }
    return told;
}

} // namespace Qor::Tivor::Testing
