#include "factory/BuiltInCreators.h"

#include <Tivor/BuiltInDataObjects.h>
#include <Tivor/DataContainer.h>
#include <Tivor/ScalarData.h>

namespace Qor::Tivor {

namespace {

template <class T, ETypeID id>
std::shared_ptr<DataObject> CreateValue(ETypeID, const std::string&) {
    return ValueTraits<T>::MakeData(ValueTraits<T>::CreateDefault());
}

std::shared_ptr<DataObject> CreateScalar(ETypeID id, const std::string& className) {
    return Details::MakePooled<eSIGNED_INTEGRAL_TYPE, EPooled::object, ScalarData>(className, id);
}

std::shared_ptr<DataObject> CreateContainer(ETypeID, const std::string&) {
    return ValueTraits<DataContainer>::MakeData(DataContainer::Create());
}

} // namespace

const std::array<BuiltInCreator, builtInTypeFacts.size()>& GetBuiltInCreators() {
    static const auto creators = [] {
        std::array<BuiltInCreator, 128> byCode{};
#define TIVOR_VALUE(T, id) byCode[id] = &CreateValue<T, id>;
        TIVOR_BUILT_IN_VALUES
#undef TIVOR_VALUE
        byCode[eSIGNED_INTEGRAL_TYPE] = &CreateScalar;
        byCode[eUNSIGNED_INTEGRAL_TYPE] = &CreateScalar;
        byCode[eFLOATING_POINT_TYPE] = &CreateScalar;
        byCode[eDATA_CONTAINER] = &CreateContainer;
        std::array<BuiltInCreator, builtInTypeFacts.size()> byRow{};
        for (std::size_t i = 0; i < byRow.size(); ++i)
            byRow[i] = byCode[builtInTypeFacts[i].id];
        return byRow;
    }();
    return creators;
}

} // namespace Qor::Tivor
