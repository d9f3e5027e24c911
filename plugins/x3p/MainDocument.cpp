#include "MainDocument.h"

#include "Fields.h"

#include <QorCore/MemoryStreams.h>
#include <QorCore/NumberText.h>
#include <QorCore/XMLParser.h>
#include <QorCore/XMLWriter.h>

#include <algorithm>
#include <sstream>

namespace Qor::Tivor::Measurements {

namespace {

class Handler final : public Core::XMLParseHandler {
public:
    Handler(MainDocument& document, const Core::XMLParserBody& parser, const Report& report)
        : m_document(document), m_parser(parser), m_report(report) {}

    void OnStartTag(const std::string& tag) override {
        if (m_isPoint)
            m_report.Fail(Core::FormatText("%1%, line %2%, Datum", {mainName, m_parser.GetPosition().line}), "numbers",
                          "an element " + tag);
        m_isPoint = m_open.size() == depthOfPoints && tag == "Datum";
        m_text.clear();
        if (m_isPoint)
            return;
        Element element;
        element.name = tag;
        element.line = m_parser.GetPosition().line;
        // Elements that are open do not move while they have none open below them but the last.
        Element& placed = m_open.empty() ? m_document.root = std::move(element)
                                         : m_open.back()->children.emplace_back(std::move(element));
        m_open.push_back(&placed);
    }
    void OnAttribute(const std::string& name, const Core::XMLAttributeValue<std::string>& value) override {
        if (!m_isPoint)
            m_open.back()->attributes.emplace_back(name, value.GetText());
    }
    void OnTextContent(const std::string& text) override {
        if (m_isPoint)
            m_text += text;
        else
            m_open.back()->text += text;
    }
    void OnCDataSection(Core::BinaryInputStream& section) override {
        for (char c = 0; section.Read(&c, 1) == 1;)
            OnTextContent(std::string(1, c));
    }
    void OnEndTag(const std::string&, bool) override {
        if (m_isPoint)
            return EndPoint();
        std::string& text = m_open.back()->text;
        text = std::string(Core::TrimBlanks(text));
        m_open.pop_back();
    }

private:
    static constexpr std::size_t depthOfPoints = 3; // in the root, Record3 and DataList

    void EndPoint() {
        std::replace(m_text.begin(), m_text.end(), '\n', ' ');
        m_document.points += m_text;
        m_document.points += '\n';
        ++m_document.numPoints;
        m_isPoint = false;
    }

    MainDocument& m_document;
    const Core::XMLParserBody& m_parser;
    const Report& m_report;
    std::vector<Element*> m_open;
    std::string m_text;
    bool m_isPoint = false;
};

void Write(std::ostream& stream, Core::XMLWriter& writer, const Element& element) {
    writer.StartTag(stream, element.name);
    for (const auto& [name, value] : element.attributes)
        writer.Attribute(stream, name, value);
    if (!element.text.empty())
        writer.Text(stream, element.text);
    for (const Element& child : element.children)
        Write(stream, writer, child);
    writer.EndTag(stream);
}

} // namespace

const Element* Element::Find(std::string_view localName) const {
    const auto place = std::find_if(children.begin(), children.end(),
                                    [&](const Element& child) { return child.GetLocalName() == localName; });
    return place == children.end() ? nullptr : &*place;
}

const Element* Element::FindBelow(std::string_view path) const {
    const Element* element = this;
    for (const std::string& part : SplitPath(path)) {
        element = element->Find(part);
        if (element == nullptr)
            return nullptr;
    }
    return element;
}

std::string Element::GetPlace() const {
    return Core::FormatText("%1%, line %2%, %3%", {mainName, line, GetLocalName()});
}

std::string Element::ToXML() const {
    std::ostringstream stream;
    Core::XMLWriter writer(Core::XMLWriter::ePLAIN);
    Write(stream, writer, *this);
    return stream.str();
}

MainDocument::MainDocument(const std::string& xml, const Report& report) {
    Core::MemoryInputStream stream(xml.data(), xml.size());
    Core::XMLParser<Handler> parser;
    Handler handler(*this, parser, report);
    try {
        parser.Parse(stream, handler);
    } catch (const Core::XMLParseError& error) {
        report.Fail(mainName, "a well-formed document", error.GetText());
    }
}

} // namespace Qor::Tivor::Measurements
