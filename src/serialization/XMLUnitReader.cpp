#include "XMLUnitReader.h"

#include "XMLTextHandler.h"

namespace Qor::Tivor {

namespace {

using Core::UnitDescriptor;

std::string_view TakeWord(std::string_view& text) {
    text = Core::TrimBlanks(text);
    const std::string_view word = text.substr(0, text.find_first_of(" \t\r\n"));
    text.remove_prefix(word.size());
    return word;
}

UnitDescriptor::Exponents ExponentsFrom(const XMLAttributes& attributes) {
    UnitDescriptor::Exponents exponents{};
    const std::string* const text = FindXMLAttribute(attributes, "exponents");
    if (text == nullptr)
        return exponents;
    const auto refuse = [text] { RaiseUnexpectedAttribute("eight numbers from -128 to 127", "exponents", *text); };
    std::string_view rest = *text;
    for (std::int8_t& exponent : exponents) {
        const auto number = Core::ParseNumber<std::int8_t>(TakeWord(rest));
        if (!number)
            refuse();
        exponent = *number;
    }
    if (!TakeWord(rest).empty())
        refuse();
    return exponents;
}

std::shared_ptr<UnitDescriptor> DescriptorFrom(const XMLAttributes& attributes) {
    return UnitDescriptor::Create(GetXMLText(attributes, "name"), GetXMLText(attributes, "symbol"),
                                  GetXMLNumber(attributes, "scale", 1.0), GetXMLNumber(attributes, "offset", 0.0),
                                  ExponentsFrom(attributes));
}

} // namespace

void XMLUnitElements::PrepareForNewContent() {
    XMLElementReader::PrepareForNewContent();
    m_unitName.reset();
    m_descriptor.reset();
}

bool XMLUnitElements::Knows(std::string_view parent, std::string_view tag) const {
    return parent.empty() && (tag == "Unit" || tag == "Descriptor");
}

void XMLUnitElements::OnElement(std::string_view, std::string_view tag, const XMLAttributes& attributes) {
    if (tag == "Unit")
        PushHandler(std::make_shared<XMLTextReader>(m_unitName));
    else
        m_descriptor = DescriptorFrom(attributes);
}

Core::QorConstPtr<UnitDescriptor> XMLUnitElements::GetUnits() const {
    return m_unitName ? Core::UnitDictionary::Instance().Get(Core::TrimBlanks(*m_unitName)) : m_descriptor;
}

void XMLUnitReader::OnEndContent() {
    const auto units = GetUnits();
    if (!units)
        RaiseUnexpectedXML("an element \"Unit\" or \"Descriptor\"", "the data of a unit", "none");
    Take(*units);
}

void XMLUnitizedReader::PrepareForNewContent() {
    XMLUnitElements::PrepareForNewContent();
    m_number.reset();
}

bool XMLUnitizedReader::Knows(std::string_view parent, std::string_view tag) const {
    return (parent.empty() && tag == "Value") || XMLUnitElements::Knows(parent, tag);
}

void XMLUnitizedReader::OnElement(std::string_view parent, std::string_view tag, const XMLAttributes& attributes) {
    if (tag != "Value")
        return XMLUnitElements::OnElement(parent, tag, attributes);
    if (const std::string* const name = FindXMLAttribute(attributes, "unit"))
        m_unitName = *name;
    PushHandler(std::make_shared<XMLTextReader>(m_number));
}

void XMLUnitizedReader::OnEndContent() {
    if (!m_number)
        RaiseUnexpectedXML("an element \"Value\"", "the data of a unitized value", "none");
    const auto number = Core::ParseNumber<double>(*m_number);
    if (!number)
        RaiseUnexpectedXML("a number", "the element \"Value\"", '"' + *m_number + '"');
    Take({*number, GetUnits()});
}

} // namespace Qor::Tivor
