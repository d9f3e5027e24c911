#pragma once

#include <QorCore/Export.h>

#include <cstdint>
#include <exception>
#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

namespace Qor::Core {

class DataInputStream;
class DataOutputStream;
class XMLWriter;

/// A place in the code.
struct CodeContext {
    std::string signature;
    std::string function;
    std::string source;
    std::uint32_t line = 0;

    bool operator==(const CodeContext&) const = default;
};

#if defined(_MSC_VER)
#define QOR_SIGNATURE __FUNCSIG__
#else
#define QOR_SIGNATURE __PRETTY_FUNCTION__
#endif
/// The place where it stands, in the source of the given name.
#define QOR_CODE_CONTEXT(sourceName)                                                                                   \
    (::Qor::Core::CodeContext{QOR_SIGNATURE, static_cast<const char*>(__func__), (sourceName),                         \
                              static_cast<std::uint32_t>(__LINE__)})

/// How grave an alert is.
enum ESeverity : std::uint32_t { eSEVERITY_INFORMATION = 0, eSEVERITY_WARNING = 1, eSEVERITY_ERROR = 2 };

/// What errors and warnings tell: the text, a dotted category, a severity, the place where it was raised, the places on
/// the way there (call stack) and on the way out (unwind stack), and named variables, in the order in which they were
/// added.
class QOR_CORE_API AlertInfo {
public:
    struct Variable {
        std::string name;
        std::string value;
        bool operator==(const Variable&) const = default;
    };

    AlertInfo(std::string typeName, std::string text);
    AlertInfo(const AlertInfo&);
    AlertInfo(AlertInfo&&) noexcept;
    AlertInfo& operator=(const AlertInfo&);
    AlertInfo& operator=(AlertInfo&&) noexcept;
    virtual ~AlertInfo();

    /// The unqualified name of the alert's class, e.g. "IOError".
    const std::string& GetTypeName() const { return m_typeName; }
    const std::string& GetText() const { return m_text; }
    const std::string& GetCategory() const { return m_category; }
    std::uint32_t GetSeverity() const { return m_severity; }
    const CodeContext& GetContext() const { return m_context; }
    const std::vector<CodeContext>& GetCallStack() const { return m_callStack; }
    const std::vector<CodeContext>& GetUnwindStack() const { return m_unwindStack; }
    const std::vector<Variable>& GetVariables() const { return m_variables; }
    /// The value of the variable of that name, or the empty string.
    std::string GetVariable(const std::string& name) const;

    void SetOrigin(CodeContext context, std::string category, std::uint32_t severity);
    void AddToCallStack(CodeContext context) { m_callStack.push_back(std::move(context)); }
    void AddToUnwindStack(CodeContext context) { m_unwindStack.push_back(std::move(context)); }
    void AddVariable(std::string name, std::string value) {
        m_variables.push_back({std::move(name), std::move(value)});
    }
    /// Gives the variable of that name another value, or adds it.
    void SetVariable(const std::string& name, std::string value);

    /// Class name, category, text and variables on one line, for logs.
    std::string ToString() const;

    /// Stored form: class name, text, category, severity (32 bits), context (signature, function, source; line in 32
    /// bits), call stack and unwind stack (each a 64-bit count and contexts), variables (a 64-bit count, then name and
    /// value each). The class itself is not restored: what is read keeps the name of its class.
    void Write(DataOutputStream& stream) const;
    /// False when the stream ends too early, and then nothing changes.
    [[nodiscard]] bool Read(DataInputStream& stream);
    std::uint64_t GetSerializedSize() const;
    /// XML form: an element "Error" with the attributes class, message, category, severity, signature, function, source
    /// and line, and in it "CallStack" and "UnwindStack", with a "Context" of the last four attributes for each place,
    /// and "Variables", with a "Variable" of name and value for each.
    void ToXML(std::ostream& stream, XMLWriter& writer) const;

    bool operator==(const AlertInfo&) const = default;

private:
    std::string m_typeName;
    std::string m_text;
    std::string m_category;
    std::uint32_t m_severity = eSEVERITY_INFORMATION;
    CodeContext m_context;
    std::vector<CodeContext> m_callStack;
    std::vector<CodeContext> m_unwindStack;
    std::vector<Variable> m_variables;
};

/// Base of all failures that the suite raises.
class QOR_CORE_API Error : public AlertInfo, public std::exception {
public:
    Error() : Error(std::string()) {}
    explicit Error(std::string text) : Error("Error", std::move(text)) {}
    Error(std::string typeName, std::string text);
    Error(const Error&) = default;
    Error& operator=(const Error&) = default;
    ~Error() override;

    const char* what() const noexcept override { return GetText().c_str(); }

    /// Completes an error by its origin and throws it with its own type.
    template <class E>
    [[noreturn]] static void RaiseError(E error, CodeContext context, const std::string& category,
                                        std::uint32_t severity = eSEVERITY_ERROR) {
        error.SetOrigin(std::move(context), category, severity);
        throw std::move(error);
    }
};

/// A recoverable condition. Raising it writes it to the log and shows it to the alert handlers of the running thread;
/// when none of them throws, the operation goes on.
class QOR_CORE_API Warning : public AlertInfo {
public:
    explicit Warning(std::string text) : Warning("Warning", std::move(text)) {}
    Warning(std::string typeName, std::string text);
    Warning(const Warning&) = default;
    Warning& operator=(const Warning&) = default;
    ~Warning() override;

    /// Completes a warning by its origin and raises it with its own type.
    template <class W>
    static void RaiseWarning(W warning, CodeContext context, const std::string& category,
                             std::uint32_t severity = eSEVERITY_WARNING) {
        warning.SetOrigin(std::move(context), category, severity);
        Show(warning);
    }

private:
    static void Show(const Warning& warning);
};

/// Declares a kind of error or warning that differs from its base only by its name.
#define QOR_DECLARE_ALERT(exportMacro, name, base)                                                                     \
    class exportMacro name : public base {                                                                             \
    public:                                                                                                            \
        explicit name(std::string text) : base(#name, std::move(text)) {}                                              \
        name(std::string typeName, std::string text) : base(std::move(typeName), std::move(text)) {}                   \
        name(const name&) = default;                                                                                   \
        name& operator=(const name&) = default;                                                                        \
        ~name() override;                                                                                              \
    }

QOR_DECLARE_ALERT(QOR_CORE_API, LogicError, Error);
QOR_DECLARE_ALERT(QOR_CORE_API, AssertionError, LogicError);
QOR_DECLARE_ALERT(QOR_CORE_API, NullPointerError, LogicError);
QOR_DECLARE_ALERT(QOR_CORE_API, OutOfRangeError, LogicError);
QOR_DECLARE_ALERT(QOR_CORE_API, IOError, Error);
QOR_DECLARE_ALERT(QOR_CORE_API, UnknownError, Error);

/// Sees the warnings of the thread that made it, from its construction to its end; the youngest handler sees a warning
/// first, the log before all. A handler may throw: the operation that warned then ends, and whatever it worked on is as
/// before or complete. Threads that work on behalf of this one (`Context::Loan`) show their warnings to it too.
class QOR_CORE_API AlertHandler {
public:
    AlertHandler();
    AlertHandler(const AlertHandler&) = delete;
    AlertHandler& operator=(const AlertHandler&) = delete;
    virtual ~AlertHandler();

    virtual void OnWarning(const Warning& warning) = 0;

private:
    friend class Warning;
    AlertHandler* m_older;
};

/// Reports a violated precondition: raises `AssertionError` with the text of the condition. Never compiled out.
[[noreturn]] QOR_CORE_API void AssertFailed(const char* expression, CodeContext context);

/// Checks a precondition whose text names the condition as it stands.
#define QOR_ASSERT(condition, sourceName)                                                                              \
    ((condition) ? void() : ::Qor::Core::AssertFailed(#condition, QOR_CODE_CONTEXT(sourceName)))

} // namespace Qor::Core
