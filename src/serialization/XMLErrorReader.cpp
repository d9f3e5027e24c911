#include "XMLErrorReader.h"

#include <algorithm>
#include <utility>

namespace Qor::Tivor {

namespace {

constexpr std::pair<std::string_view, std::string_view> places[] = {{"", "Error"},
                                                                    {"Error", "CallStack"},
                                                                    {"CallStack", "Context"},
                                                                    {"Error", "UnwindStack"},
                                                                    {"UnwindStack", "Context"},
                                                                    {"Error", "Variables"},
                                                                    {"Variables", "Variable"}};

Core::CodeContext ContextFrom(const XMLAttributes& attributes) {
    return {GetXMLText(attributes, "signature"), GetXMLText(attributes, "function"), GetXMLText(attributes, "source"),
            GetXMLNumber<std::uint32_t>(attributes, "line", 0)};
}

Core::Error ErrorFrom(const XMLAttributes& attributes) {
    const Core::Error missing;
    Core::Error error(GetXMLText(attributes, "class", missing.GetTypeName().c_str()),
                      GetXMLText(attributes, "message"));
    error.SetOrigin(ContextFrom(attributes), GetXMLText(attributes, "category"),
                    GetXMLNumber(attributes, "severity", missing.GetSeverity()));
    return error;
}

} // namespace

void XMLErrorReader::PrepareForNewContent() {
    XMLElementReader::PrepareForNewContent();
    m_error.reset();
}

bool XMLErrorReader::Knows(std::string_view parent, std::string_view tag) const {
    return std::find(std::begin(places), std::end(places), std::pair(parent, tag)) != std::end(places);
}

void XMLErrorReader::OnElement(std::string_view parent, std::string_view tag, const XMLAttributes& attributes) {
    if (tag == "Error")
        m_error = ErrorFrom(attributes);
    else if (tag == "Variable")
        m_error->AddVariable(GetXMLText(attributes, "name"), GetXMLText(attributes, "value"));
    else if (parent == "CallStack")
        m_error->AddToCallStack(ContextFrom(attributes));
    else if (parent == "UnwindStack")
        m_error->AddToUnwindStack(ContextFrom(attributes));
}

void XMLErrorReader::OnEndContent() {
    if (!m_error)
        RaiseUnexpectedXML("an element \"Error\"", "the data of an error", "none");
    Take(*std::exchange(m_error, std::nullopt));
}

} // namespace Qor::Tivor
