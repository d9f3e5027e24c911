#include "XMLMarkup.h"

#include <array>

namespace Qor::Core {

namespace {

constexpr std::size_t npos = std::string_view::npos;

// By a table, because each byte of a document is looked at.
class CharacterSet {
public:
    constexpr explicit CharacterSet(std::string_view members) {
        for (const char c : members)
            m_contains[static_cast<unsigned char>(c)] = true;
    }

    // Where the first member stands, or the size of the text.
    std::size_t FindIn(std::string_view text, std::size_t begin) const {
        while (begin < text.size() && !m_contains[static_cast<unsigned char>(text[begin])])
            ++begin;
        return begin;
    }

private:
    std::array<bool, 256> m_contains{};
};

constexpr CharacterSet beginsOfMarkup("<&");
constexpr CharacterSet endsOfReference("; \t\r\n<>&'\"");
constexpr CharacterSet delimitersOfTag("<>'\"");

std::size_t SizeUpTo(std::string_view end, std::string_view markup, std::size_t begin) {
    const std::size_t found = markup.find(end, begin);
    return found == npos ? npos : found + end.size();
}

// Where something stands that a reference cannot contain, it is none.
std::size_t SizeOfReference(std::string_view text) {
    const std::size_t end = endsOfReference.FindIn(text, 1);
    return end == text.size() ? npos : end + (text[end] == ';' ? 1 : 0);
}

// '<' cannot stand in a tag, not even in the value of an attribute.
std::size_t SizeOfTag(std::string_view text) {
    char quote = 0;
    for (std::size_t i = 1; (i = delimitersOfTag.FindIn(text, i)) != text.size(); ++i) {
        const char c = text[i];
        if (c == '<')
            return i;
        if (c == '>' && quote == 0)
            return i + 1;
        if (c != '>')
            quote = quote == 0 ? c : quote == c ? '\0' : quote;
    }
    return npos;
}

// npos when the end of what the text begins with is not in it.
std::size_t SizeOfMarkup(std::string_view text) {
    constexpr std::string_view comment = "<!--";
    if (text.front() == '&')
        return SizeOfReference(text);
    if (comment.starts_with(text) || openingOfCData.starts_with(text))
        return npos;
    if (text.starts_with(comment))
        return SizeUpTo("-->", text, comment.size());
    if (text.starts_with("<?"))
        return SizeUpTo("?>", text, 2);
    return SizeOfTag(text);
}

} // namespace

XMLPortion FindPortion(std::string_view text) {
    for (std::size_t at = 0;;) {
        at = beginsOfMarkup.FindIn(text, at);
        const std::string_view rest = text.substr(at);
        if (rest.empty() || rest.starts_with(openingOfCData))
            return {at + (rest.empty() ? 0 : openingOfCData.size()), !rest.empty()};
        const std::size_t size = SizeOfMarkup(rest);
        if (size == npos)
            return {at, false};
        at += size;
    }
}

} // namespace Qor::Core
