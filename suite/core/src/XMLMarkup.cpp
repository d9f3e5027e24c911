#include "XMLMarkup.h"

#include <array>

namespace Qor::Core {

namespace {

constexpr std::size_t npos = std::string_view::npos;

constexpr std::array<bool, 256> delimitsInTag = [] {
    std::array<bool, 256> delimits{};
    for (const char c : {'<', '>', '"', '\''})
        delimits[static_cast<unsigned char>(c)] = true;
    return delimits;
}();

std::size_t SizeUpTo(std::string_view end, std::string_view markup, std::size_t begin) {
    const std::size_t found = markup.find(end, begin);
    return found == npos ? npos : found + end.size();
}

// '<' cannot stand in a tag, not even in the value of an attribute.
std::size_t SizeOfTag(std::string_view text) {
    char quote = 0;
    for (std::size_t i = 1; i < text.size(); ++i) {
        const char c = text[i];
        if (!delimitsInTag[static_cast<unsigned char>(c)])
            continue;
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
    if (text.starts_with("<!--"))
        return SizeUpTo("-->", text, 4);
    if (text.starts_with("<?"))
        return SizeUpTo("?>", text, 2);
    return SizeOfTag(text);
}

} // namespace

XMLPortion FindPortion(std::string_view text) {
    for (std::size_t at = text.find('<'); at != npos; at = text.find('<', at)) {
        const std::string_view markup = text.substr(at);
        if (markup.starts_with(openingOfCData))
            return {at + openingOfCData.size(), true};
        const std::size_t size = SizeOfMarkup(markup);
        if (size == npos)
            return {at, false};
        at += size;
    }
    return {text.size(), false};
}

} // namespace Qor::Core
