#include <QorCore/Locale.h>

namespace Qor::Core {

Locale::Locale() = default;
Locale::~Locale() = default;

Locale& Locale::GetRoot() {
    static auto* const root = new Locale;
    return *root;
}

QorConstPtr<StringTable> Locale::FindStringTable(const std::string& name) const {
    const std::lock_guard guard(m_mutex);
    const auto found = m_tables.find(name);
    return found != m_tables.end() ? found->second : nullptr;
}

void Locale::SetStringTable(const std::string& name, StringTable table) {
    auto made = std::make_shared<const StringTable>(std::move(table));
    const std::lock_guard guard(m_mutex);
    m_tables[name] = std::move(made);
}

} // namespace Qor::Core
