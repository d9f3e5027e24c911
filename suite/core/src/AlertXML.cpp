#include <QorCore/Alert.h>
#include <QorCore/NumberText.h>
#include <QorCore/XMLWriter.h>

namespace Qor::Core {

namespace {

void WriteAttributes(std::ostream& stream, XMLWriter& writer, const CodeContext& context) {
    writer.AnyAttribute(stream, "signature", context.signature);
    writer.AnyAttribute(stream, "function", context.function);
    writer.AnyAttribute(stream, "source", context.source);
    writer.Attribute(stream, "line", GetNumberText(context.line));
}

void WriteAttributes(std::ostream& stream, XMLWriter& writer, const AlertInfo::Variable& variable) {
    writer.AnyAttribute(stream, "name", variable.name);
    writer.AnyAttribute(stream, "value", variable.value);
}

template <class T>
void WriteElements(std::ostream& stream, XMLWriter& writer, const char* list, const char* element,
                   const std::vector<T>& items) {
    writer.StartTag(stream, list);
    for (const T& item : items) {
        writer.StartTag(stream, element);
        WriteAttributes(stream, writer, item);
        writer.EndTag(stream);
    }
    writer.EndTag(stream);
}

} // namespace

void AlertInfo::ToXML(std::ostream& stream, XMLWriter& writer) const {
    writer.StartTag(stream, "Error");
    writer.AnyAttribute(stream, "class", m_typeName);
    writer.AnyAttribute(stream, "message", m_text);
    writer.AnyAttribute(stream, "category", m_category);
    writer.Attribute(stream, "severity", GetNumberText(m_severity));
    WriteAttributes(stream, writer, m_context);
    WriteElements(stream, writer, "CallStack", "Context", m_callStack);
    WriteElements(stream, writer, "UnwindStack", "Context", m_unwindStack);
    WriteElements(stream, writer, "Variables", "Variable", m_variables);
    writer.EndTag(stream);
}

} // namespace Qor::Core
