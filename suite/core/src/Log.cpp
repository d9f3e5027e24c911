#include <QorCore/Log.h>

#include <memory>
#include <mutex>
#include <utility>

namespace Qor::Core {

namespace {

struct SinkHolder {
    std::mutex mutex;
    std::shared_ptr<const LogSink> sink;
};

// Never destroyed: objects that outlive main() may still log.
SinkHolder& Holder() {
    static auto* const holder = new SinkHolder;
    return *holder;
}

} // namespace

LogSink SetLogSink(LogSink sink) {
    auto next = sink ? std::make_shared<const LogSink>(std::move(sink)) : nullptr;
    const std::lock_guard lock(Holder().mutex);
    std::swap(Holder().sink, next);
    return next ? *next : LogSink();
}

void Log(const std::string& category, const std::string& text) {
    std::shared_ptr<const LogSink> sink;
    {
        const std::lock_guard lock(Holder().mutex);
        sink = Holder().sink;
    }
    if (sink)
        (*sink)(category, text);
}

} // namespace Qor::Core
