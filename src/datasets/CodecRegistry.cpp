#include "CodecRegistry.h"

#include "DefaultCodec.h"

namespace Qor::Tivor {

namespace {

std::vector<std::string> FormatsOf(const Codec::Factory& factory) {
    std::vector<std::string> formats;
    factory.GetFormats(formats);
    return formats;
}

} // namespace

CodecRegistry::CodecRegistry() { Register(std::make_shared<DefaultCodecFactory>()); }

CodecRegistry& CodecRegistry::Get() {
    static auto* const registry = new CodecRegistry;
    return *registry;
}

void CodecRegistry::Register(const std::shared_ptr<Codec::Factory>& factory) {
    std::map<std::string, std::shared_ptr<Codec::Factory>> served;
    for (const std::string& format : FormatsOf(*factory))
        served[format] = factory;
    const Core::MutexGuard guard(m_mutex);
    served.merge(m_factories); // those that are replaced stay behind, and die after the lock
    m_factories.swap(served);
}

void CodecRegistry::Unregister(const Codec::Factory& factory) {
    const std::vector<std::string> formats = FormatsOf(factory);
    std::map<std::string, std::shared_ptr<Codec::Factory>> removed; // these die after the lock
    const Core::MutexGuard guard(m_mutex);
    for (const std::string& format : formats)
        if (const auto found = m_factories.find(format); found != m_factories.end() && found->second.get() == &factory)
            removed.insert(m_factories.extract(found));
}

void CodecRegistry::EnumFormats(std::unordered_set<std::string>& formats) {
    const Core::MutexGuard guard(m_mutex);
    for (const auto& [format, factory] : m_factories)
        formats.insert(format);
}

std::shared_ptr<Codec::Factory> CodecRegistry::Find(const std::string& format) {
    const Core::MutexGuard guard(m_mutex);
    const auto found = m_factories.find(format);
    return found != m_factories.end() ? found->second : nullptr;
}

} // namespace Qor::Tivor
