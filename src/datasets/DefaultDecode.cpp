#include "DataSetKeys.h"

#include <Tivor/Codec.h>

namespace Qor::Tivor {

namespace {

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
    const auto given = source.GetPtr<DataContainer>(sMETA_DATA);
    const auto metaData = given ? given->Clone() : DataContainer::Create();
    const auto surfaces = DataContainer::Create();
    const auto profiles = DataContainer::Create();
    for (const auto& [key, object] : source) {
        if (key == sMETA_DATA && given)
            continue;
        if (auto surface = SurfaceOf(object))
            surfaces->Put(key, ValueTraits<Data2D>::MakeData(std::move(surface)));
        else if (auto profile = ProfileOf(object))
            profiles->Put(key, ValueTraits<Data1D>::MakeData(std::move(profile)));
        else if (!metaData->Exists(key))
            metaData->Put(key, object);
    }
    if (surfaces->Exists(primary2DKey))
        metaData->PutValue(DataSet::sPRIMARY_2D_DATA_KEY, std::string(primary2DKey));
    metaData->PutValue(sDATA_FORMAT, DataSet::sFORMAT);
    DataContainer layout;
    layout.Put(sMETA_DATA, metaData);
    layout.Put(DataSet::s2D_DATA, surfaces);
    layout.Put(DataSet::s1D_DATA, profiles);
    return DataSet::Create(layout);
}

} // namespace Qor::Tivor
