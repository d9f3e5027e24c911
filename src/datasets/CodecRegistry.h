#pragma once

#include <QorCore/Mutex.h>
#include <Tivor/Codec.h>

#include <map>

namespace Qor::Tivor {

/// Who serves which format. Factories are called without its lock.
class CodecRegistry {
public:
    /// Made on first use, with the codec of the library, and never destroyed: factories may live in libraries that are
    /// gone at the end of the process.
    static CodecRegistry& Get();

    void Register(const std::shared_ptr<Codec::Factory>& factory);
    void Unregister(const Codec::Factory& factory);
    void EnumFormats(std::unordered_set<std::string>& formats);
    std::shared_ptr<Codec::Factory> Find(const std::string& format);

private:
    CodecRegistry();

    Core::Mutex m_mutex;
    std::map<std::string, std::shared_ptr<Codec::Factory>> m_factories;
};

} // namespace Qor::Tivor
