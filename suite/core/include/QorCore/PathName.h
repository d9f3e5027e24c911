#pragma once

#include <QorCore/Export.h>

#include <compare>
#include <string>
#include <utility>

namespace Qor::Core {

/// The name of a file or directory, as UTF-8 on every platform. The text is kept as given; only the operations below
/// take it apart, by the rules of the platform.
///
/// Thread rule: a value.
class QOR_CORE_API PathName {
public:
    PathName() = default;
    explicit PathName(std::string utf8) : m_text(std::move(utf8)) {}

    const std::string& ToString() const { return m_text; }
    bool IsEmpty() const { return m_text.empty(); }

    /// What follows the last dot of the last part; ".hidden" and "name." have none.
    std::string GetExtension() const;
    /// The last part; empty when the name ends with a separator.
    std::string GetFileName() const;
    /// Everything before the last part; empty when there is nothing.
    PathName GetDirectory() const;
    /// The same name as seen from the root; the name itself when there is no current directory.
    PathName GetAbsolute() const;

    /// These two answer false when the name cannot be looked up. Symbolic links are followed.
    bool Exists() const;
    bool IsFile() const;

    /// The name below this directory; an absolute `below` replaces it.
    PathName operator/(const PathName& below) const;
    PathName operator/(const std::string& below) const { return *this / PathName(below); }

    bool operator==(const PathName&) const = default;
    auto operator<=>(const PathName&) const = default;

private:
    std::string m_text;
};

} // namespace Qor::Core
