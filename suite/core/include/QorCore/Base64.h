#pragma once

#include <QorCore/Alert.h>
#include <QorCore/Stream.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Qor::Core {

// Base64 as in RFC 4648: its standard alphabet, groups of four characters, the last one padded. Readers pass over
// blanks (space, tab, CR, LF) anywhere, and accept bits that padding leaves over, whatever they are.

/// Text that is not Base64. It says what was found, and where in the text.
QOR_DECLARE_ALERT(QOR_CORE_API, InvalidBase64, IOError);

/// The bytes as Base64 on one line.
QOR_CORE_API std::string EncodeBase64(std::string_view bytes);

/// The bytes that the text stands for; empty when it is not Base64.
QOR_CORE_API std::optional<std::string> DecodeBase64(std::string_view text);

/// Writes bytes to another stream as Base64, in lines with a separator between each two; no separator follows the last
/// line. The text goes to the target in pieces of 2 KiB and more. `Finish` must be called: only then has the target the
/// whole text. `Flush` hands over no more than complete groups.
class QOR_CORE_API Base64EncoderStream final : public BinaryOutputStream {
public:
    /// With a `lineLength` of 0 characters there is one line.
    explicit Base64EncoderStream(BinaryOutputStream& target, std::size_t lineLength = 76,
                                 std::string_view separator = "\r\n");
    ~Base64EncoderStream() override;

    /// Writes what is left, with padding, and flushes the target. From then on writing is a `LogicError`; finishing
    /// again does nothing.
    void Finish();

protected:
    void DoWrite(const void* source, std::uint64_t size) override;
    void DoFlush() override;

private:
    struct State;

    std::size_t GetGathered() const;

    std::unique_ptr<State> m_state;
};

/// Reads the bytes that the rest of another stream stands for. The source is read ahead. Raises `InvalidBase64` at what
/// is not Base64, after all bytes of the complete groups in front of it have been delivered.
class QOR_CORE_API Base64DecoderStream final : public BinaryInputStream {
public:
    explicit Base64DecoderStream(BinaryInputStream& source);
    ~Base64DecoderStream() override;

protected:
    std::uint64_t DoRead(void* destination, std::uint64_t size) override;
    /// An upper bound, where the source knows how much text is left.
    std::optional<std::uint64_t> DoBytesLeft() const override;

private:
    struct State;

    std::uint64_t Decode(std::byte* bytes, std::size_t room);
    bool Refill();

    BinaryInputStream& m_source;
    std::unique_ptr<State> m_state;
};

} // namespace Qor::Core
