#include <QorCore/Message.h>

#include <boost/format.hpp>

#include <limits>
#include <locale>

namespace Qor::Core {

namespace {

// libstdc++ keeps what its character classes have converted, and fills that memory without a lock; filled here, it is
// only read by the threads that format.
const std::locale& GetClassicLocale() {
    static const std::locale& filled = []() -> const std::locale& {
        const std::locale& classic = std::locale::classic();
        const auto& characters = std::use_facet<std::ctype<char>>(classic);
        for (int c = 1; c <= std::numeric_limits<char>::max(); ++c) {
            characters.narrow(static_cast<char>(c), '\0');
            characters.widen(static_cast<char>(c));
        }
        return classic;
    }();
    return filled;
}

} // namespace

std::string FormatText(const char* messageTemplate, std::initializer_list<MessageArgument> arguments) {
    boost::format format(messageTemplate, GetClassicLocale());
    for (const MessageArgument& argument : arguments)
        format % argument.GetText();
    return format.str();
}

} // namespace Qor::Core
