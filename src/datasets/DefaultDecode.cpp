#include <Tivor/Codec.h>

namespace Qor::Tivor {

namespace {

const char* const primaryKey = "Primary2D";

std::shared_ptr<Data2D> SurfaceOf(const std::shared_ptr<DataObject>& object) {
    if (const auto surface = std::dynamic_pointer_cast<GenericWrapper<Data2D>>(object))
        return surface->GetData();
    return IsMatrixData(*object) ? Data2D::Create(object) : nullptr;
}

std::shared_ptr<Data1D> ProfileOf(const std::shared_ptr<DataObject>& object) {
    const auto profile = std::dynamic_pointer_cast<GenericWrapper<Data1D>>(object);
    return profile ? profile->GetData() : nullptr;
}

} // namespace

std::shared_ptr<IDataSet> DefaultDecode(DataContainer& source) {
    DataContainer layout;
    const auto metaData = source.GetPtr<DataContainer>(sMETA_DATA);
    const auto description = metaData ? metaData->Clone() : DataContainer::Create();
    layout.Put(sMETA_DATA, description);
    const auto set = DataSet::Create(layout);
    for (const auto& [key, object] : source) {
        if (key == sMETA_DATA && metaData)
            continue;
        if (const auto surface = SurfaceOf(object))
            set->StoreData(surface, key);
        else if (const auto profile = ProfileOf(object))
            set->StoreData(profile, key);
        else if (!description->Exists(key))
            description->Put(key, object);
    }
    if (set->GetData2D(primaryKey))
        set->SetPrimaryData2DKey(primaryKey);
    description->PutValue(sDATA_FORMAT, DataSet::sFORMAT);
    return set;
}

} // namespace Qor::Tivor
