#pragma once

#include <Tivor/XMLContentHandler.h>

#include <optional>

namespace Qor::Tivor {

/// Gathers the text of an element, that of CDATA sections included, and hands it over in the end. Elements inside and
/// references to unknown entities are errors.
class XMLTextHandler : public XMLContentHandler {
public:
    void PrepareForNewContent() override;
    void OnTextContent(const std::string& text) override;
    void OnEntityReference(const std::string& entity) override;
    void OnCDataSection(Core::BinaryInputStream& section) override;
    void OnEndContent() override;

protected:
    virtual void OnText(std::string text) = 0;

private:
    std::string m_text;
};

/// Reads the text of an element for the handler of the element around it.
class XMLTextReader final : public XMLTextHandler {
public:
    explicit XMLTextReader(std::optional<std::string>& text) : m_target(text) {}

protected:
    void OnText(std::string text) override { m_target = std::move(text); }

private:
    std::optional<std::string>& m_target;
};

} // namespace Qor::Tivor
