#pragma once

#include <Tivor/DataContainer.h>
#include <Tivor/XMLContentHandler.h>

#include <optional>

namespace Qor::Tivor {

/// Reads the entries of a container: the elements "Data" and "DataContainer", each with its key. An entry is stored
/// when its element ends. Other elements are passed over, with the warning `SkippingUnknownTag`.
class DataContainerXMLHandler : public XMLContentHandler {
public:
    explicit DataContainerXMLHandler(std::shared_ptr<DataContainer> container);

    void PrepareForNewContent() override;
    void OnStartTag(const std::string& tag) override;
    void OnAttribute(const std::string& name, const Core::XMLAttributeValue<std::string>& value) override;
    void OnStartTagContent() override;
    void OnEndTag(const std::string& tag, bool emptyElement) override;
    void OnEndContent() override;

protected:
    const std::shared_ptr<DataContainer>& GetContainer() const { return m_container; }

private:
    void ResetCurrentData();

    const std::shared_ptr<DataContainer> m_container;
    bool m_lockable;
    std::optional<NestingLevel> m_level;
    // Of the entry whose element is open.
    std::string m_key;
    std::string m_keyEncoding;
    std::shared_ptr<DataObject> m_object;
};

} // namespace Qor::Tivor
