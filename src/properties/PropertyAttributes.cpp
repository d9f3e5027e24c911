#include "PropertyAttributes.h"

#include "../container/KeyIndex.h"

#include <Tivor/ScalarData.h>

#include <algorithm>

namespace Qor::Tivor {

#define TIVOR_KEY(name, text) const std::string name = text;
TIVOR_KEY(sPROPERTY_PERMISSIONS, "Permissions")
TIVOR_KEY(sPROPERTY_DISPLAY_NAME, "DisplayName")
TIVOR_KEY(sPROPERTY_CATEGORY, "Category")
TIVOR_KEY(sPROPERTY_DESCRIPTION, "Description")
TIVOR_KEY(sPROPERTY_DEFAULT, "Default")
TIVOR_KEY(sSELECTABLE_PROPERTY_VALUES, "SelectableValues")
TIVOR_KEY(sSUGGESTED_PROPERTY_VALUES, "SuggestedValues")
TIVOR_KEY(sIS_FILENAME, "IsFileName")
TIVOR_KEY(sIS_DIRECTORY, "IsDirectory")
TIVOR_KEY(sHAS_TOLERANCES, "HasTolerances")
TIVOR_KEY(sUPPER_TOLERANCE, "UpperTolerance")
TIVOR_KEY(sLOWER_TOLERANCE, "LowerTolerance")
TIVOR_KEY(sUPPER_TOLERANCE_COMPARISON, "UpperComparison")
TIVOR_KEY(sLOWER_TOLERANCE_COMPARISON, "LowerComparison")
TIVOR_KEY(sHAS_CUSTOM_EDITOR, "HasCustomEditor")
TIVOR_KEY(sBROWSE_PERMISSIONS, "BrowsePermissions")
TIVOR_KEY(sIS_RGB_COLOR, "IsRGBColor")
TIVOR_KEY(sCATEGORY_STRING_TABLE, "_CategoryStringTable_")
#undef TIVOR_KEY

std::int64_t GetScalarNumber(const DataObject* object) {
    const auto* const scalar = dynamic_cast<const ScalarData*>(object);
    if (scalar == nullptr || scalar->GetSize_bytes() == 0)
        return 0;
    switch (scalar->GetTypeID()) {
    case eSIGNED_INTEGRAL_TYPE:
        return scalar->GetValue<std::int64_t>();
    case eUNSIGNED_INTEGRAL_TYPE:
        return static_cast<std::int64_t>(scalar->GetValue<std::uint64_t>());
    default:
        return 0;
    }
}

bool PropertyValuesDiffer(const Core::QorConstPtr<DataObject>& one, const Core::QorConstPtr<DataObject>& other) {
    if (one == other)
        return false;
    return !one || !other || !one->HoldsSameTypeAs(*other) || !bool(one->HoldsSameValueAs(*other));
}

PropertyContainer::Texts::Attributes PropertyContainer::Texts::GetAttributes() const {
    return {{{&sPROPERTY_DISPLAY_NAME, displayName},
             {&sPROPERTY_CATEGORY, category},
             {&sPROPERTY_DESCRIPTION, description}}};
}

std::size_t PropertyContainer::NameHash::operator()(const std::string& name) const { return HashOfKey(name); }

PropertyContainer::PropertyAttributes::PropertyAttributes() = default;
PropertyContainer::PropertyAttributes::~PropertyAttributes() = default;

PropertyContainer::EPermissions PropertyContainer::PropertyAttributes::GetPermissions() const {
    return m_permissions ? static_cast<EPermissions>(GetScalarNumber(m_permissions.get()) & eREADABLE_WRITABLE)
                         : eREADABLE_WRITABLE;
}

void PropertyContainer::PropertyAttributes::SetPermissions(EPermissions permissions) {
    static constexpr std::size_t width = 4;
    Put(sPROPERTY_PERMISSIONS,
        Details::MakeEnumScalar(typeid(EPermissions), true, width, static_cast<std::int64_t>(permissions)));
}

void PropertyContainer::PropertyAttributes::PutDataObject(const std::string& key, std::shared_ptr<DataObject> object) {
    DataContainer::PutDataObject(key, object);
    if (object && key == sPROPERTY_PERMISSIONS)
        m_permissions = std::move(object);
}

std::shared_ptr<DataObject> PropertyContainer::PropertyAttributes::Remove(const std::string& key) {
    if (key == sPROPERTY_PERMISSIONS)
        m_permissions.reset();
    return DataContainer::Remove(key);
}

void PropertyContainer::PropertyAttributes::Clear() {
    m_permissions.reset();
    DataContainer::Clear();
}

void PropertyContainer::PropertyAttributes::SetTexts(const Texts& texts) {
    for (const auto& [key, text] : texts.GetAttributes())
        Remove(*key);
    m_texts = &texts;
}

std::shared_ptr<DataObject> PropertyContainer::PropertyAttributes::Find(const std::string& key) {
    const auto texts = m_texts != nullptr ? m_texts->GetAttributes() : Texts::Attributes{};
    if (std::any_of(texts.begin(), texts.end(), [&](const auto& text) { return text.first && *text.first == key; }))
        Complete();
    return Get(key);
}

PropertyContainer::PropertyAttributes& PropertyContainer::PropertyAttributes::Complete() {
    if (m_texts != nullptr)
        for (const auto& [key, text] : m_texts->GetAttributes())
            if (!Exists(*key))
                PutValue(*key, text);
    m_texts = nullptr;
    return *this;
}

std::shared_ptr<PropertyContainer::PropertyAttributes> PropertyContainer::PropertyAttributes::CloneRecord() const {
    auto clone = std::make_shared<PropertyAttributes>();
    clone->CloneContents(*this);
    clone->m_texts = m_texts;
    clone->validators = validators;
    return clone;
}

} // namespace Qor::Tivor
