#pragma once

#include <Tivor/PropertyContainer.h>

namespace Qor::Tivor {

/// What a container knows of a property beside its value. Guarded by the container's lock.
class PropertyContainer::PropertyAttributes final : public DataContainer {
public:
    using Validators = std::list<std::shared_ptr<Validator>>;

    PropertyAttributes();
    ~PropertyAttributes() override;

    /// As the attribute says, or both without it.
    EPermissions GetPermissions() const;
    void SetPermissions(EPermissions permissions);
    /// From now on these stand for the texts, which become attributes when somebody looks at them.
    void SetTexts(const Texts& texts);
    /// The attribute, that of a text too.
    std::shared_ptr<DataObject> Find(const std::string& key);
    /// Itself, with all texts among the attributes.
    PropertyAttributes& Complete();
    /// Attributes cloned, validators shared, no handlers.
    std::shared_ptr<PropertyAttributes> CloneRecord() const;
    /// Validators and handlers of another record.
    void TakeGuards(const PropertyAttributes& other) {
        validators = other.validators;
        readHandler = other.readHandler;
        changeHandler = other.changeHandler;
    }

    Validators validators;
    std::shared_ptr<ReadHandler> readHandler;
    std::shared_ptr<ChangeHandler> changeHandler;
    /// The read handler is at work, and may read the property itself.
    bool isBeingRead = false;

    std::shared_ptr<DataObject> Remove(const std::string& key) override;
    void Clear() override;

protected:
    void PutDataObject(const std::string& key, std::shared_ptr<DataObject> object) override;

private:
    std::shared_ptr<const DataObject> m_permissions; // the attribute, which every change asks for
    const Texts* m_texts = nullptr;                  // those that are no attributes yet
};

/// The number of a scalar, whatever its kind of integer; 0 of anything else.
std::int64_t GetScalarNumber(const DataObject* object);

/// Whether a property that had the one value and has the other has changed: objects that are not the same, unless
/// their values surely are.
bool PropertyValuesDiffer(const Core::QorConstPtr<DataObject>& one, const Core::QorConstPtr<DataObject>& other);

} // namespace Qor::Tivor
