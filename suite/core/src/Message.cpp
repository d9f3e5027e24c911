#include <QorCore/Message.h>

#include <boost/format.hpp>

#include <locale>

namespace Qor::Core {

std::string FormatText(const char* messageTemplate, std::initializer_list<MessageArgument> arguments) {
    boost::format format(messageTemplate, std::locale::classic());
    for (const MessageArgument& argument : arguments)
        format % argument.GetText();
    return format.str();
}

} // namespace Qor::Core
