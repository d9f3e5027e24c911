#pragma once

#include <QorCore/Alert.h>

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

namespace Qor::Tivor::Tool {

using Json = nlohmann::ordered_json;
using Path = std::vector<std::string>;

/// What the program itself has to complain about.
QOR_DECLARE_ALERT(, ToolError, Core::Error);

inline constexpr const char* category = "Tivor.Tool";

/// Raises a `ToolError`.
[[noreturn]] void Fail(const std::string& text);
/// Tells the user, with the variables of an error.
void Explain(const std::exception& error, std::ostream& err);

bool IsUtf8(const std::string& text);
/// The text as it is, if it is UTF-8 without control characters or blanks at its ends, and not empty; else in quotes,
/// with escapes.
std::string Show(const std::string& text);
/// Several keys with slashes between them; keys that have slashes stand in quotes.
std::string ShowPath(const Path& path);
/// The text with what would break the line escaped.
std::string OneLine(const std::string& text);
/// "1 entry", "2 entries"
std::string Count(std::size_t count, const char* one, const char* many);

/// The text as it is; what is not UTF-8, and so no JSON, as {"hex": "..."}.
Json TextJson(const std::string& text);
Json PathJson(const Path& path);
/// The name of a member; what is not UTF-8 as `Show` has it.
std::string MemberName(const std::string& text);
/// Adds a member without looking for others of that name.
void AddMember(Json& object, const std::string& name, Json value);
void Print(std::ostream& out, const Json& json);

} // namespace Qor::Tivor::Tool
