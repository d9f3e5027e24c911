#include "Fields.h"

#include <QorCore/NumberText.h>
#include <QorCore/XMLWriter.h>

#include <algorithm>

namespace Qor::Tivor::Measurements {

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

/// Whether the text begins as the pattern, in which 'd' is any digit; takes it off then.
bool Take(std::string_view& text, std::string_view pattern) {
    if (text.size() < pattern.size())
        return false;
    for (std::size_t i = 0; i < pattern.size(); ++i)
        if (pattern[i] == 'd' ? !IsDigit(text[i]) : text[i] != pattern[i])
            return false;
    text.remove_prefix(pattern.size());
    return true;
}

/// As 2009-06-09T13:40:58, with fractions of a second and a time zone where these are known.
bool IsDateTime(std::string_view text) {
    if (!Take(text, "dddd-dd-ddTdd:dd:dd"))
        return false;
    if (text.size() > 1 && text[0] == '.' && IsDigit(text[1]))
        text.remove_prefix(std::min(text.size(), text.find_first_not_of("0123456789", 1)));
    return text.empty() || text == "Z" || ((Take(text, "+dd:dd") || Take(text, "-dd:dd")) && text.empty());
}

bool IsRotation(std::string_view text) {
    const auto number = Core::ParseNumber<double>(text);
    return number && *number >= -1 && *number <= 1;
}

constexpr std::array probingTypes{"Contacting", "NonContacting", "Software"};

} // namespace

ElementPath SplitPath(std::string_view path) {
    ElementPath names;
    for (std::size_t end = 0; end != std::string_view::npos; path.remove_prefix(end == path.npos ? 0 : end + 1)) {
        end = path.find('/');
        names.emplace_back(path.substr(0, end));
    }
    return names;
}

std::string JoinPath(const ElementPath& path) {
    std::string joined;
    for (const std::string& name : path)
        joined += (joined.empty() ? "" : "/") + name;
    return joined;
}

const char* Describe(EText kind) {
    switch (kind) {
    case EText::dateTime:
        return "a date and time as 2009-06-09T13:40:58";
    case EText::probing:
        return "Contacting, NonContacting or Software";
    case EText::rotation:
        return "a number from -1 to 1";
    case EText::uri:
        return "an address";
    default:
        return "a text";
    }
}

bool IsValid(EText kind, std::string_view text) {
    switch (kind) {
    case EText::dateTime:
        return IsDateTime(text);
    case EText::probing:
        return std::find(probingTypes.begin(), probingTypes.end(), text) != probingTypes.end();
    case EText::rotation:
        return IsRotation(text);
    default:
        return Core::XMLWriter::CanHold(text);
    }
}

const char* StandInFor(EText kind) {
    switch (kind) {
    case EText::dateTime:
        return "1970-01-01T00:00:00Z";
    case EText::probing:
        return "Software";
    default:
        return "";
    }
}

} // namespace Qor::Tivor::Measurements
