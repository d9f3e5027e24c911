#include "factory/BuiltInCreators.h"

#include <Tivor/ArrayDataObjects.h>
#include <Tivor/CollectionSerialization.h>
#include <Tivor/Data1D.h>
#include <Tivor/Data2D.h>
#include <Tivor/DataContainer.h>
#include <Tivor/DataSet.h>
#include <Tivor/Position1D.h>
#include <Tivor/Position2D.h>
#include <Tivor/ScalarData.h>

namespace Qor::Tivor {

namespace {

template <class T>
std::shared_ptr<DataObject> CreateValue(ETypeID, const std::string&) {
    return ValueTraits<T>::MakeData(ValueTraits<T>::CreateDefault());
}

template <class T>
std::shared_ptr<DataObject> CreateArray(ETypeID, const std::string&) {
    return std::make_shared<Array<T>>();
}

std::shared_ptr<DataObject> CreateScalar(ETypeID id, const std::string& className) {
    return Details::MakePooled<eSIGNED_INTEGRAL_TYPE, EPooled::object, ScalarData>(className, id);
}

std::shared_ptr<DataObject> CreateContainer(ETypeID, const std::string&) {
    return ValueTraits<DataContainer>::MakeData(DataContainer::Create());
}

constexpr auto creators = [] {
    std::array<BuiltInCreator, builtInTypeFacts.size()> byRow{};
#define TIVOR_VALUE(T, id, name) byRow[rowOf<T>] = &CreateValue<T>;
    TIVOR_BUILT_IN_VALUES TIVOR_COLLECTION_VALUES TIVOR_POSITION_1D_VALUES TIVOR_POSITION_2D_VALUES
#undef TIVOR_VALUE
#define TIVOR_ROW(T, STEM, code, position, name) byRow[FindTypeRow(eSCALAR_ARRAY, "Array_" name)] = &CreateArray<T>;
        TIVOR_ARRAY_ELEMENT_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
            for (const ETypeID kind : {eSIGNED_INTEGRAL_TYPE, eUNSIGNED_INTEGRAL_TYPE, eFLOATING_POINT_TYPE})
                byRow[FindTypeRow(kind, "")] = &CreateScalar;
    byRow[FindTypeRow(eDATA_CONTAINER, "")] = &CreateContainer;
    byRow[rowOf<Data1D>] = &CreateValue<Data1D>;
    byRow[rowOf<Data2D>] = &CreateValue<Data2D>;
    byRow[rowOf<DataSet>] = &CreateValue<DataSet>;
    return byRow;
}();

} // namespace

const std::array<BuiltInCreator, builtInTypeFacts.size()>& GetBuiltInCreators() { return creators; }

} // namespace Qor::Tivor
