#pragma once

#include <QorCore/Export.h>

#include <string>
#include <string_view>

namespace Qor::Core {

/// Wide text as UTF-8 and back. Wide text is UTF-16 where `wchar_t` has two bytes (Windows) and UTF-32 where it has
/// four. What is not valid becomes U+FFFD in both directions: one for each maximal ill-formed part, as the Unicode
/// standard recommends (chapter 3.9, "U+FFFD Substitution of Maximal Subparts"). Never depends on a locale.
QOR_CORE_API std::string Utf8FromWide(std::wstring_view wide);
QOR_CORE_API std::wstring WideFromUtf8(std::string_view utf8);

/// The bytes that `Utf8FromWide` would return, without making them.
QOR_CORE_API std::size_t GetUtf8Size(std::wstring_view wide);

/// Whether the bytes are well-formed UTF-8.
QOR_CORE_API bool IsUtf8(std::string_view bytes);

} // namespace Qor::Core
