#include <QorCore/Alert.h>
#include <QorCore/Context.h>
#include <QorCore/Log.h>

#include <algorithm>

namespace Qor::Core {

AlertInfo::AlertInfo(std::string typeName, std::string text)
    : m_typeName(std::move(typeName)), m_text(std::move(text)) {}
AlertInfo::AlertInfo(const AlertInfo&) = default;
AlertInfo::AlertInfo(AlertInfo&&) noexcept = default;
AlertInfo& AlertInfo::operator=(const AlertInfo&) = default;
AlertInfo& AlertInfo::operator=(AlertInfo&&) noexcept = default;
AlertInfo::~AlertInfo() = default;

std::string AlertInfo::GetVariable(const std::string& name) const {
    const auto found = std::find_if(m_variables.begin(), m_variables.end(),
                                    [&](const Variable& variable) { return variable.name == name; });
    return found != m_variables.end() ? found->value : std::string();
}

void AlertInfo::SetVariable(const std::string& name, std::string value) {
    const auto found = std::find_if(m_variables.begin(), m_variables.end(),
                                    [&](const Variable& variable) { return variable.name == name; });
    if (found != m_variables.end())
        found->value = std::move(value);
    else
        AddVariable(name, std::move(value));
}

void AlertInfo::SetOrigin(CodeContext context, std::string category, std::uint32_t severity) {
    m_context = std::move(context);
    m_category = std::move(category);
    m_severity = severity;
}

std::string AlertInfo::ToString() const {
    std::string line = m_typeName + " [" + m_category + "] " + m_text;
    for (const Variable& variable : m_variables)
        line += "; " + variable.name + " = " + variable.value;
    return line;
}

Error::Error(std::string typeName, std::string text) : AlertInfo(std::move(typeName), std::move(text)) {}
Error::~Error() = default;
Warning::Warning(std::string typeName, std::string text) : AlertInfo(std::move(typeName), std::move(text)) {}
Warning::~Warning() = default;
LogicError::~LogicError() = default;
AssertionError::~AssertionError() = default;
NullPointerError::~NullPointerError() = default;
OutOfRangeError::~OutOfRangeError() = default;
IOError::~IOError() = default;
UnknownError::~UnknownError() = default;

void Warning::Show(const Warning& warning) {
    Log(warning.GetCategory(), warning.GetTypeName() + ": " + warning.GetText());
    for (AlertHandler* handler = Context::Current().alertHandler; handler != nullptr; handler = handler->m_older)
        handler->OnWarning(warning);
}

AlertHandler::AlertHandler() : m_older(std::exchange(Context::Current().alertHandler, this)) {}

AlertHandler::~AlertHandler() { Context::Current().alertHandler = m_older; }

void AssertFailed(const char* expression, CodeContext context) {
    const std::string category = "Qor.Core.Assertion";
    Error::RaiseError(AssertionError(expression), std::move(context), category);
}

} // namespace Qor::Core
