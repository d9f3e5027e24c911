#include <QorCore/Locale.h>
#include <Tivor/PropertyContainer.h>

namespace Qor::Tivor {

namespace {

/// Texts by table and key, as they were found first.
class TextCache {
public:
    std::string Get(const std::string& table, const std::string& key, const std::string& fallback) {
        const std::lock_guard guard(m_mutex);
        auto& texts = m_tables[table];
        if (const auto found = texts.find(key); found != texts.end())
            return found->second;
        return texts.emplace(key, Resolve(table, key, fallback)).first->second;
    }

private:
    static std::string Resolve(const std::string& table, const std::string& key, const std::string& fallback) {
        const auto strings = Core::Locale::GetRoot().FindStringTable(table);
        if (!strings)
            return fallback;
        const auto found = strings->find(key);
        return found != strings->end() ? found->second : fallback;
    }

    std::mutex m_mutex;
    std::unordered_map<std::string, std::unordered_map<std::string, std::string>> m_tables;
};

} // namespace

std::string GetPropertyString(const std::string& table, const std::string& key, const std::string& fallback) {
    static auto* const cache = new TextCache;
    return cache->Get(table, key, fallback);
}

std::string GetPropertyCategory(const std::string& category) {
    static auto* const cache = new TextCache;
    return cache->Get(sCATEGORY_STRING_TABLE, category, category);
}

} // namespace Qor::Tivor
