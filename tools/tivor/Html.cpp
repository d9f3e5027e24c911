#include "Html.h"

#include "Display.h"
#include "ReportStyle.h"

#include <QorCore/Base64.h>

#include <algorithm>

namespace Qor::Tivor::Tool {

namespace {

/// Whether a page shows the character; line ends and tabs are, where lines are kept.
bool IsSeen(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte >= 0x20 && byte != 0x7F;
}

std::string Escape(const std::string& text) {
    std::string escaped;
    for (const char character : text)
        switch (character) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        case '\'':
            escaped += "&#39;";
            break;
        default:
            escaped += character;
        }
    return escaped;
}

} // namespace

std::string HtmlText(const std::string& text) {
    const bool isSeen = IsUtf8(text) && std::all_of(text.begin(), text.end(), [](char character) {
                            return IsSeen(character) || character == '\n' || character == '\t';
                        });
    return Escape(isSeen ? text : Show(text));
}

HtmlPage::HtmlPage(const std::string& title) {
    m_text = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\"/>\n"
             "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; img-src data:; "
             "style-src 'unsafe-inline'\"/>\n"
             "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n";
    Element("title", title);
    m_text += std::string("<style>\n") + reportStyle + "</style>\n</head>\n<body>\n<main>\n";
    Element("h1", title);
}

void HtmlPage::Element(const char* name, const std::string& text) {
    m_text += std::string("<") + name + '>' + HtmlText(text) + "</" + name + ">\n";
}

void HtmlPage::Heading(const std::string& text) { Element("h2", text); }
void HtmlPage::SubHeading(const std::string& text) { Element("h3", text); }
void HtmlPage::Paragraph(const std::string& text) { Element("p", text); }
void HtmlPage::Preformatted(const std::string& text) { Element("pre", text); }

void HtmlPage::List(const std::vector<std::string>& texts) {
    m_text += "<ul>\n";
    for (const std::string& text : texts)
        Element("li", text);
    m_text += "</ul>\n";
}

void HtmlPage::Table(const Row& names, const std::vector<Row>& rows) {
    m_text += std::string("<div class=\"wide\"><table") + (names.empty() ? "" : " class=\"numbers\"") + ">\n";
    const auto add = [this](const Row& row, const char* first, const char* other) {
        m_text += "<tr>\n";
        for (std::size_t i = 0; i < row.size(); ++i)
            Element(i == 0 ? first : other, row[i]);
        m_text += "</tr>\n";
    };
    if (!names.empty())
        add(names, "th", "th");
    for (const Row& row : rows)
        add(row, "th", "td");
    m_text += "</table></div>\n";
}

void HtmlPage::Picture(const std::string& png, int width, int height, const std::string& description) {
    m_text += "<img width=\"" + std::to_string(width) + "\" height=\"" + std::to_string(height) + "\" alt=\"" +
              HtmlText(description) + "\" src=\"data:image/png;base64," + Core::EncodeBase64(png) + "\"/>\n";
}

std::string HtmlPage::Finish() && { return std::move(m_text) + "</main>\n</body>\n</html>\n"; }

} // namespace Qor::Tivor::Tool
