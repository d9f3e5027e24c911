#pragma once

#include <QorCore/XMLWriter.h>
#include <Tivor/XMLContentHandler.h>

#include <functional>
#include <sstream>

namespace Qor::Tivor {

/// Records all that it sees as XML, so that it can be written again, or replayed into another handler.
class CachingContentHandler final : public XMLContentHandler {
public:
    /// Gets the record at the end of the element.
    using Keep = std::function<void(std::string content)>;

    explicit CachingContentHandler(Keep keep);

    void OnStartTag(const std::string& tag) override;
    void OnEndTag(const std::string& tag, bool emptyElement) override;
    void OnAttribute(const std::string& name, const Core::XMLAttributeValue<std::string>& value) override;
    void OnTextContent(const std::string& text) override;
    void OnComment(const std::string& comment) override;
    void OnEntityReference(const std::string& entity) override;
    void OnCDataSection(Core::BinaryInputStream& section) override;
    void OnEndContent() override;

private:
    Keep m_keep;
    std::ostringstream m_content;
    Core::XMLWriter m_writer{Core::XMLWriter::ePLAIN};
};

} // namespace Qor::Tivor
