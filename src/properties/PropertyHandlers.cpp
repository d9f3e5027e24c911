#include "PropertyUpdate.h"

#include <Tivor/PropertyHandlers.h>

#include <algorithm>

namespace Qor::Tivor {

bool PropertyContainer::AddValidator(const std::string& name, std::shared_ptr<Validator> validator) {
    const Update update(*this);
    if (FindAttributes(name) == nullptr || !validator)
        return false;
    const auto attributes = FindSpecialAttributes(name); // the validator may remove the property
    if (auto* const attributed = dynamic_cast<AttributedValidator*>(validator.get()))
        attributed->StorePropertyAttributes(attributes->Complete());
    attributes->validators.push_back(std::move(validator));
    return true;
}

void PropertyContainer::RemoveValidator(const std::string& name, std::shared_ptr<Validator> validator) {
    const Update update(*this);
    const auto attributes = FindSpecialAttributes(name);
    if (!attributes || !validator)
        return;
    PropertyAttributes::Validators kept = attributes->validators;
    kept.remove_if([&](const auto& one) { return one->IsEqual(*validator); });
    attributes->validators = std::move(kept);
}

void PropertyContainer::GetValidators(const std::string& name,
                                      std::list<std::shared_ptr<Validator>>& validators) const {
    const Lock lock(m_mutex);
    validators = RequireAttributes(name, "to call GetValidators()").validators;
}

void PropertyContainer::SetReadHandler(const std::string& name, std::shared_ptr<ReadHandler> handler) {
    const Lock lock(m_mutex);
    RequireAttributes(name, "to call SetReadHandler()").readHandler = std::move(handler);
}

std::shared_ptr<PropertyContainer::ReadHandler> PropertyContainer::GetReadHandler(const std::string& name) const {
    const Lock lock(m_mutex);
    const auto attributes = FindSpecialAttributes(name);
    return attributes ? attributes->readHandler : nullptr;
}

void PropertyContainer::SetChangeHandler(const std::string& name, std::shared_ptr<ChangeHandler> handler) {
    const Lock lock(m_mutex);
    RequireAttributes(name, "to call SetChangeHandler()").changeHandler = std::move(handler);
}

std::shared_ptr<PropertyContainer::ChangeHandler> PropertyContainer::GetChangeHandler(const std::string& name) const {
    const Lock lock(m_mutex);
    const auto attributes = FindSpecialAttributes(name);
    return attributes ? attributes->changeHandler : nullptr;
}

bool PropertyContainer::VerifyPropertyRead(const std::string& name) const {
    const Lock lock(m_mutex);
    const auto attributes = FindSpecialAttributes(name); // the handler may remove the property
    if (!attributes)
        return true;
    if ((attributes->GetPermissions() & eREADABLE) == 0)
        return false;
    if (!attributes->readHandler || attributes->isBeingRead)
        return true;
    attributes->isBeingRead = true;
    const std::shared_ptr<void> unmark(nullptr, [&](void*) { attributes->isBeingRead = false; });
    const std::shared_ptr<ReadHandler> handler = attributes->readHandler;
    return handler->Execute(name);
}

} // namespace Qor::Tivor
