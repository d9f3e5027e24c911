#include "Display.h"

#include <QorCore/Utf8.h>

#include <utility>

namespace Qor::Tivor::Tool {

ToolError::~ToolError() = default;

void Fail(const std::string& text) { Core::Error::RaiseError(ToolError(text), QOR_CODE_CONTEXT("Tool"), category); }

void Explain(const std::exception& error, std::ostream& err) {
    err << "tivor: " << OneLine(error.what()) << '\n';
    const auto* const ours = dynamic_cast<const Core::Error*>(&error);
    if (ours == nullptr || ours->GetVariables().empty())
        return;
    const char* before = "       ";
    for (const auto& [name, value] : ours->GetVariables())
        err << std::exchange(before, "; ") << OneLine(name) << ": " << OneLine(value);
    err << '\n';
}

bool IsUtf8(const std::string& text) { return Core::Utf8FromWide(Core::WideFromUtf8(text)) == text; }

namespace {

std::string Hex(unsigned char c) {
    static constexpr char digits[] = "0123456789abcdef";
    return {digits[c >> 4], digits[c & 15]};
}

/// Whether a control character of one byte, or of two (U+0080 to U+009F), begins there.
bool IsControl(const std::string& text, std::size_t i) {
    const auto c = static_cast<unsigned char>(text[i]);
    const auto next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0;
    return c < 0x20 || c == 0x7F || (c == 0xC2 && next >= 0x80 && next < 0xA0);
}

std::string Escape(const std::string& text, bool inQuotes) {
    const bool isUtf8 = IsUtf8(text);
    std::string escaped;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool isSecondByte = i > 0 && text[i - 1] == '\xC2' && IsControl(text, i - 1);
        if (c == '\n')
            escaped += "\\n";
        else if (c == '\t')
            escaped += "\\t";
        else if (inQuotes && (c == '"' || c == '\\'))
            escaped += std::string("\\") + c;
        else if (IsControl(text, i) || isSecondByte || (!isUtf8 && static_cast<unsigned char>(c) >= 0x80))
            escaped += "\\x" + Hex(static_cast<unsigned char>(c));
        else
            escaped += c;
    }
    return escaped;
}

bool NeedsQuotes(const std::string& text) {
    return text.empty() || text.front() == ' ' || text.back() == ' ' || text.front() == '"' ||
           Escape(text, false) != text;
}

std::string Quote(const std::string& text) { return '"' + Escape(text, true) + '"'; }

} // namespace

std::string Show(const std::string& text) { return NeedsQuotes(text) ? Quote(text) : text; }

std::string ShowPath(const Path& path) {
    std::string shown;
    for (const std::string& key : path)
        shown += (shown.empty() ? "" : "/") + (key.find('/') != std::string::npos ? Quote(key) : Show(key));
    return shown;
}

std::string OneLine(const std::string& text) { return Escape(text, false); }

std::string Count(std::size_t count, const char* one, const char* many) {
    return std::to_string(count) + ' ' + (count == 1 ? one : many);
}

Json TextJson(const std::string& text) {
    if (IsUtf8(text))
        return text;
    std::string hex;
    for (const char c : text)
        hex += Hex(static_cast<unsigned char>(c));
    return {{"hex", hex}};
}

Json PathJson(const Path& path) {
    Json json = Json::array();
    for (const std::string& key : path)
        json.push_back(TextJson(key));
    return json;
}

std::string MemberName(const std::string& text) { return IsUtf8(text) ? text : Show(text); }

void AddMember(Json& object, const std::string& name, Json value) {
    object.get_ref<Json::object_t&>().emplace_back(name, std::move(value));
}

void Print(std::ostream& out, const Json& json) { out << json.dump(2) << '\n'; }

} // namespace Qor::Tivor::Tool
