#include <QorCore/NumberText.h>
#include <QorCore/UnitizedValue.h>
#include <QorCore/XMLWriter.h>

namespace Qor::Core {

namespace {

/// Whether the name alone gives the unit back.
bool IsKnownByName(const UnitDescriptor& unit) {
    const std::string& name = unit.GetName();
    if (name.empty() || TrimBlanks(name) != name || !XMLWriter::CanHold(name))
        return false;
    const auto known = UnitDictionary::Instance().Find(name);
    return known && *known == unit;
}

std::string TextOf(const UnitDescriptor::Exponents& exponents) {
    std::string text;
    for (const std::int8_t exponent : exponents)
        text += (text.empty() ? "" : " ") + GetNumberText(exponent);
    return text;
}

void WriteDescriptor(std::ostream& stream, XMLWriter& writer, const UnitDescriptor& unit) {
    writer.StartTag(stream, "Descriptor");
    writer.AnyAttribute(stream, "name", unit.GetName());
    writer.AnyAttribute(stream, "symbol", unit.GetSymbol());
    writer.Attribute(stream, "scale", GetNumberText(unit.GetScale()));
    writer.Attribute(stream, "offset", GetNumberText(unit.GetOffset()));
    writer.Attribute(stream, "exponents", TextOf(unit.GetExponents()));
    writer.EndTag(stream);
}

} // namespace

void UnitDescriptor::ToXML(std::ostream& stream, XMLWriter& writer) const {
    if (!IsKnownByName(*this))
        return WriteDescriptor(stream, writer, *this);
    writer.StartTag(stream, "Unit");
    writer.Text(stream, m_name);
    writer.EndTag(stream);
}

template <class T>
void UnitizedValue<T>::ToXML(std::ostream& stream, XMLWriter& writer) const {
    const auto units = GetUnits();
    const bool isKnown = IsKnownByName(*units);
    writer.StartTag(stream, "Value");
    if (isKnown)
        writer.Attribute(stream, "unit", units->GetName());
    writer.Text(stream, GetNumberText(m_value));
    writer.EndTag(stream);
    if (!isKnown && !units->IsEmpty())
        WriteDescriptor(stream, writer, *units);
}

template QOR_CORE_API void UnitizedValue<double>::ToXML(std::ostream&, XMLWriter&) const;

} // namespace Qor::Core
