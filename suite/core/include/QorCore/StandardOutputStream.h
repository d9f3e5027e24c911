#pragma once

#include <QorCore/Stream.h>

#include <memory>
#include <ostream>

namespace Qor::Core {

/// A standard stream that writes to a binary one, unbuffered, byte for byte as it comes. What the binary stream raises
/// reaches whoever writes.
///
/// Thread rule: as the stream behind it.
class QOR_CORE_API StandardOutputStream final : public std::ostream {
public:
    explicit StandardOutputStream(BinaryOutputStream& target);
    ~StandardOutputStream() override;

private:
    class Buffer;

    std::unique_ptr<Buffer> m_buffer;
};

} // namespace Qor::Core
