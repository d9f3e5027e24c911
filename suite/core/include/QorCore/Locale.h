#pragma once

#include <QorCore/Export.h>
#include <QorCore/Pointers.h>

#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

namespace Qor::Core {

/// Texts for people, by key.
using StringTable = std::unordered_map<std::string, std::string>;

/// The texts of a language, in named tables. They are filled by the program; nothing here depends on the locale of the
/// system or of the standard library.
///
/// Thread rule: may be used by any number of threads. A table that was handed out never changes.
class QOR_CORE_API Locale {
public:
    /// The texts of the language in use.
    static Locale& GetRoot();

    /// The table of that name, or an empty pointer.
    QorConstPtr<StringTable> FindStringTable(const std::string& name) const;
    /// Makes a table known, in the place of that of its name.
    void SetStringTable(const std::string& name, StringTable table);

    Locale(const Locale&) = delete;
    Locale& operator=(const Locale&) = delete;

private:
    Locale();
    ~Locale();

    mutable std::mutex m_mutex;
    std::unordered_map<std::string, QorConstPtr<StringTable>> m_tables;
};

} // namespace Qor::Core
