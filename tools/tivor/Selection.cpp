#include "Selection.h"

#include "Display.h"
#include "Retyping.h"

#include <QorCore/Message.h>
#include <Tivor/Codec.h>

#include <algorithm>
#include <functional>
#include <set>

namespace Qor::Tivor::Tool {

namespace {

/// Says what stands in the place of an entry that is no container.
using Replace = std::function<std::shared_ptr<DataObject>(const Path& path, const std::shared_ptr<DataObject>& object)>;

std::shared_ptr<DataContainer> Rebuild(const DataContainer& source, const Replace& replace, const Path& above = {}) {
    auto result = DataContainer::Create();
    for (const auto& [key, object] : source) {
        Path path = above;
        path.push_back(key);
        if (const auto inner = source.GetPtr<const DataContainer>(key))
            result->Put(key, Rebuild(*inner, replace, path));
        else
            result->Put(key, replace(path, object));
    }
    return result;
}

/// Null for what is no measured array.
std::shared_ptr<const MeasuredArray> MeasuredIn(const DataObject& object) {
    if (const auto* const surface = dynamic_cast<const GenericWrapper<Data2D>*>(&object))
        return surface->GetData();
    const auto* const profile = dynamic_cast<const GenericWrapper<Data1D>*>(&object);
    return profile != nullptr ? profile->GetData() : nullptr;
}

/// Which measured arrays go, because they are of none of the channels.
class Choice {
public:
    explicit Choice(const std::vector<std::string>& channels)
        : m_channels(channels), m_missing(channels.begin(), channels.end()) {}

    void Judge(const Path& path, const MeasuredArray& array) {
        const std::string kind = array.GetDataKind();
        m_found += (m_found.empty() ? "" : ", ") + ShowPath(path) + " (" + Show(kind) + ")";
        bool isChosen = false;
        for (const std::string& channel : m_channels)
            if (channel == kind || channel == path.back()) {
                m_missing.erase(channel);
                isChosen = true;
            }
        if (!isChosen)
            m_others.push_back(path);
    }
    const std::vector<Path>& GetOthers() const {
        if (!m_missing.empty())
            Fail(Core::FormatText("Expected measured arrays of the channel or the key %1%, found %2%",
                                  {Show(*m_missing.begin()), m_found.empty() ? "none" : m_found}));
        return m_others;
    }

private:
    const std::vector<std::string>& m_channels;
    std::set<std::string> m_missing;
    std::vector<Path> m_others;
    std::string m_found;
};

void Remove(DataContainer& container, const Path& path) {
    const Path above(path.begin(), path.end() - 1);
    (above.empty() ? container : *container.GetSubData(above, false)).Remove(path.back());
}

} // namespace

std::shared_ptr<DataContainer> KeepChannels(const DataContainer& source, const std::vector<std::string>& channels) {
    Choice choice(channels);
    const auto kept = Rebuild(source, [&](const Path& path, const std::shared_ptr<DataObject>& object) {
        if (const auto array = MeasuredIn(*object))
            choice.Judge(path, *array);
        return object;
    });
    const std::vector<Path>& others = choice.GetOthers();
    if (!DataSet::IsDataSetFormat(*kept)) {
        for (const Path& path : others)
            Remove(*kept, path);
        return kept;
    }
    if (const auto metaData = kept->GetPtr<DataContainer>(sMETA_DATA))
        kept->Put(sMETA_DATA, metaData->Clone()); // the lists of channels change
    DataSet set(*kept);
    std::unordered_set<std::string> names;
    set.GetData2DChannels(names);
    set.GetData1DChannels(names);
    for (const Path& path : others)
        Remove(*kept, path);
    std::string primary;
    if (set.GetPrimaryData2DKey(primary) && !set.GetData2D(primary))
        set.GetPrimaryData2D();
    return kept;
}

std::shared_ptr<DataContainer> WithElementType(const DataContainer& source, const std::string& typeName) {
    const ETypeID type = FindElementType(typeName);
    return Rebuild(source,
                   [&](const Path& path, const std::shared_ptr<DataObject>& object) -> std::shared_ptr<DataObject> {
                       if (const auto* const surface = dynamic_cast<const GenericWrapper<Data2D>*>(object.get()))
                           return ValueTraits<Data2D>::MakeData(Retype(*surface->GetData(), type, path));
                       if (const auto* const profile = dynamic_cast<const GenericWrapper<Data1D>*>(object.get()))
                           return ValueTraits<Data1D>::MakeData(Retype(*profile->GetData(), type, path));
                       return object;
                   });
}

} // namespace Qor::Tivor::Tool
