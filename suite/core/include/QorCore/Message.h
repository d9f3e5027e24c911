#pragma once

#include <QorCore/Export.h>

#include <concepts>
#include <initializer_list>
#include <string>
#include <string_view>

namespace Qor::Core {

/// One argument of a message: a text, or a number that was turned into text without a locale.
class QOR_CORE_API MessageArgument {
public:
    MessageArgument(const std::string& text) : m_text(text) {}
    MessageArgument(std::string_view text) : m_text(text) {}
    MessageArgument(const char* text) : m_text(text) {}
    template <std::integral T>
    MessageArgument(T number) : m_text(std::to_string(number)) {}

    const std::string& GetText() const { return m_text; }

private:
    std::string m_text;
};

/// Replaces the placeholders "%1%", "%2%", ... of a template by the arguments, in the classic locale. "%%" stands for a
/// percent sign. Texts that come from users belong into the arguments, never into the template.
QOR_CORE_API std::string FormatText(const char* messageTemplate, std::initializer_list<MessageArgument> arguments);

} // namespace Qor::Core
