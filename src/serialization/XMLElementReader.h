#pragma once

#include "XMLAttributes.h"

#include <QorCore/NumberText.h>
#include <Tivor/XMLContentHandler.h>

#include <vector>

namespace Qor::Tivor {

/// Base of those who read a value from elements inside its own: tells them one by one, in whatever order they come, and
/// passes over those that nobody knows, with the warning `SkippingUnknownTag`.
class XMLElementReader : public XMLContentHandler {
public:
    void PrepareForNewContent() override;
    void OnStartTag(const std::string& tag) final;
    void OnStartTagContent() final;
    void OnEndTag(const std::string& tag, bool emptyElement) final;
    void OnAttribute(const std::string& name, const Core::XMLAttributeValue<std::string>& value) final;

protected:
    /// Whether such an element can stand in the `parent`; the value's own element is the empty text.
    virtual bool Knows(std::string_view parent, std::string_view tag) const = 0;
    /// The element's start tag was seen, and its content may be given to another handler.
    virtual void OnElement(std::string_view parent, std::string_view tag, const XMLAttributes& attributes) = 0;

private:
    std::string_view GetOpen(std::size_t above) const;

    std::vector<std::string> m_open;
    XMLAttributes m_attributes;
};

/// The value of an attribute, or what stands for a missing one.
std::string GetXMLText(const XMLAttributes& attributes, const std::string& name, const char* missing = "");

/// Raises `IOError`: "Expected ... in ..., found ...".
[[noreturn]] void RaiseUnexpectedXML(const std::string& expected, const std::string& place, const std::string& found);
/// The same of an attribute, and of what it says.
[[noreturn]] void RaiseUnexpectedAttribute(const std::string& expected, const std::string& name,
                                           const std::string& found);

/// The number in an attribute, or what stands for a missing one. Raises `IOError` for anything else.
template <class T>
T GetXMLNumber(const XMLAttributes& attributes, const std::string& name, T missing) {
    const std::string* const text = FindXMLAttribute(attributes, name);
    if (text == nullptr)
        return missing;
    const std::optional<T> number = Core::ParseNumber<T>(*text);
    if (!number)
        RaiseUnexpectedAttribute(std::is_integral_v<T> ? "a number of 32 bits without sign" : "a number", name, *text);
    return *number;
}

} // namespace Qor::Tivor
