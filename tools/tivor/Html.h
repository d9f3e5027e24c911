#pragma once

#include <string>
#include <utility>
#include <vector>

namespace Qor::Tivor::Tool {

/// Any text as characters of a page; what is no UTF-8 or cannot be seen as `Show` has it.
std::string HtmlText(const std::string& text);

/// A page of HTML in parts. All texts that are handed in may be anything.
class HtmlPage {
public:
    using Row = std::vector<std::string>;

    explicit HtmlPage(const std::string& title);

    void Heading(const std::string& text);
    void SubHeading(const std::string& text);
    void Paragraph(const std::string& text);
    void List(const std::vector<std::string>& texts);
    /// Lines as they are.
    void Preformatted(const std::string& text);
    /// The first row are names; an empty one is none.
    void Table(const Row& names, const std::vector<Row>& rows);
    void Picture(const std::string& png, int width, int height, const std::string& description);

    std::string Finish() &&;

private:
    void Element(const char* name, const std::string& text);

    std::string m_text;
};

} // namespace Qor::Tivor::Tool
