#include "XMLMarkup.h"

#include <algorithm>

namespace Qor::Core {

namespace {

constexpr std::size_t npos = std::string_view::npos;

bool IsMarkup(char c) { return c == '<' || c == '&'; }

std::size_t SizeUpTo(std::string_view end, std::string_view markup, std::size_t begin) {
    const std::size_t found = markup.find(end, begin);
    return found == npos ? npos : found + end.size();
}

// Where something stands that a reference cannot contain, it is none.
std::size_t SizeOfReference(std::string_view text) {
    const std::size_t end = text.find_first_of("; \t\r\n<>&'\"", 1);
    return end == npos ? npos : end + (text[end] == ';' ? 1 : 0);
}

// '<' cannot stand in a tag, not even in the value of an attribute.
std::size_t SizeOfTag(std::string_view text) {
    char quote = 0;
    for (std::size_t i = 1; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '<')
            return i;
        if (c == '>' && quote == 0)
            return i + 1;
        if (c == '"' || c == '\'')
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
        at = static_cast<std::size_t>(
            std::find_if(text.begin() + static_cast<std::ptrdiff_t>(at), text.end(), IsMarkup) - text.begin());
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
