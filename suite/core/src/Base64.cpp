#include "Base64Kernel.h"

#include <QorCore/Base64.h>
#include <QorCore/Message.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace Qor::Core {

InvalidBase64::~InvalidBase64() = default;

namespace {

using Group = std::array<char, 4>;

/// The last group, of one or two bytes.
Group EncodeLastGroup(const std::byte* bytes, std::size_t size) {
    std::array<std::byte, 3> filled{};
    std::copy_n(bytes, size, filled.begin());
    Group group;
    portableBase64.encode(filled.data(), 1, filled.size(), {}, group.data());
    std::fill(group.begin() + static_cast<std::ptrdiff_t>(size) + 1, group.end(), '=');
    return group;
}

/// Decodes a text that comes in pieces, wherever they were cut.
class TextDecoder {
public:
    /// Goes as far as the text is Base64 and the room suffices; a group needs room for 3 bytes, padded or not.
    Base64Progress Decode(std::string_view text, std::byte* bytes, std::size_t room) {
        Base64Progress done;
        while (done.read < text.size() && room - done.made >= 3) {
            if (m_size == 0 && m_padding == 0) {
                const Base64Progress groups =
                    GetBase64Kernel().decode(text.substr(done.read), bytes + done.made, room - done.made);
                done.read += groups.read;
                done.made += groups.made;
                if (groups.read != 0)
                    continue;
            }
            if (!Take(text[done.read]))
                break;
            ++done.read;
            if (m_size == m_group.size())
                done.made += DecodeGroup(bytes + done.made);
        }
        return done;
    }

    /// Whether the text may end here.
    bool IsComplete() const { return m_size == 0; }
    /// How many characters of a group were taken.
    std::size_t GetSize() const { return m_size; }

    /// What may follow, for errors.
    const char* GetExpectation() const {
        if (m_padding != 0)
            return m_size != 0 ? "'='" : "the end";
        return m_size < 2 ? "a character of the alphabet" : "a character of the alphabet or '='";
    }

private:
    bool Take(char character) {
        const std::uint8_t value = GetBase64Value(character);
        if (value == eBASE64_BLANK)
            return true;
        const bool isPadding = character == '=' && m_size >= 2;
        if (!isPadding && (value == eBASE64_FOREIGN || m_padding != 0))
            return false;
        m_group[m_size++] = isPadding ? 'A' : character;
        m_padding += isPadding ? 1 : 0;
        return true;
    }

    std::size_t DecodeGroup(std::byte* bytes) {
        portableBase64.decode({m_group.data(), m_group.size()}, bytes, 3);
        m_size = 0;
        return 3 - m_padding;
    }

    Group m_group{};
    std::size_t m_size = 0;
    std::size_t m_padding = 0;
};

std::string Describe(char found) {
    constexpr char digits[] = "0123456789ABCDEF";
    const auto code = static_cast<unsigned char>(found);
    const std::string byte = std::string("the byte 0x") + digits[code >> 4] + digits[code & 15];
    return code > ' ' && code < 127 ? byte + " '" + found + "'" : byte;
}

} // namespace

std::string EncodeBase64(std::string_view bytes) {
    const std::size_t whole = bytes.size() / 3 * 3;
    std::string text((bytes.size() + 2) / 3 * 4, '\0');
    const auto* const source = reinterpret_cast<const std::byte*>(bytes.data());
    GetBase64Kernel().encode(source, 1, whole, {}, text.data());
    if (whole != bytes.size()) {
        const Group group = EncodeLastGroup(source + whole, bytes.size() - whole);
        std::copy(group.begin(), group.end(), text.begin() + static_cast<std::ptrdiff_t>(whole / 3 * 4));
    }
    return text;
}

std::optional<std::string> DecodeBase64(std::string_view text) {
    std::string bytes(text.size() / 4 * 3 + 3, '\0');
    TextDecoder decoder;
    const Base64Progress done = decoder.Decode(text, reinterpret_cast<std::byte*>(bytes.data()), bytes.size());
    if (done.read != text.size() || !decoder.IsComplete())
        return std::nullopt;
    bytes.resize(done.made);
    return bytes;
}

struct Base64EncoderStream::State {
    State(BinaryOutputStream& textTarget, std::size_t length, std::string_view between)
        : target(textTarget), lineLength(length != 0 ? length : std::numeric_limits<std::size_t>::max()),
          separator(between) {}

    void Drain() {
        const std::size_t size = textSize;
        textSize = 0;
        target.Write(text.data(), size);
    }

    void Append(std::string_view piece) {
        while (!piece.empty()) {
            if (textSize == text.size())
                Drain();
            const std::size_t size = std::min(piece.size(), text.size() - textSize);
            std::copy_n(piece.data(), size, text.data() + textSize);
            textSize += size;
            piece.remove_prefix(size);
        }
    }

    void AppendInLines(std::string_view characters) {
        while (!characters.empty()) {
            if (column == lineLength) {
                Append(separator);
                column = 0;
            }
            const std::size_t size = std::min(characters.size(), lineLength - column);
            Append(characters.substr(0, size));
            column += size;
            characters.remove_prefix(size);
        }
    }

    /// Encodes as many whole lines as there are and the buffer has room for; 0 where that is not the way to go on.
    std::size_t EncodeLines(const std::byte* bytes, std::size_t size) {
        if (column != lineLength || lineLength % 4 != 0 || size < lineLength / 4 * 3)
            return 0;
        const std::size_t width = separator.size() + lineLength;
        if (width > text.size())
            return 0;
        if (width > text.size() - textSize)
            Drain();
        const std::size_t bytesPerLine = lineLength / 4 * 3;
        const std::size_t count = std::min(size / bytesPerLine, (text.size() - textSize) / width);
        GetBase64Kernel().encode(bytes, count, bytesPerLine, separator, text.data() + textSize);
        textSize += count * width;
        return count * bytesPerLine;
    }

    /// Encodes a few groups, which may end any number of lines.
    std::size_t EncodeGroups(const std::byte* bytes, std::size_t size) {
        std::array<char, 256> characters;
        const std::size_t toLineEnd = std::max<std::size_t>((lineLength - column) / 4 * 3, 3);
        const std::size_t encoded = std::min({size, toLineEnd, characters.size() / 4 * 3});
        GetBase64Kernel().encode(bytes, 1, encoded, {}, characters.data());
        AppendInLines({characters.data(), encoded / 3 * 4});
        return encoded;
    }

    /// `size` is a multiple of 3.
    void Encode(const std::byte* bytes, std::size_t size) {
        while (size != 0) {
            std::size_t encoded = EncodeLines(bytes, size);
            if (encoded == 0)
                encoded = EncodeGroups(bytes, size);
            bytes += encoded;
            size -= encoded;
        }
    }

    /// Leaves the rest of the last group at the beginning.
    void EncodeGathered(std::size_t size) {
        Encode(gathered.data(), size - size % 3);
        std::memmove(gathered.data(), gathered.data() + size - size % 3, size % 3);
    }

    BinaryOutputStream& target;
    const std::size_t lineLength;
    const std::string separator;
    std::size_t column = 0;
    std::size_t textSize = 0;
    bool isFinished = false;
    std::array<std::byte, 3 * 256> gathered;
    std::array<char, 8 * 1024> text;
};

Base64EncoderStream::Base64EncoderStream(BinaryOutputStream& target, std::size_t lineLength, std::string_view separator)
    : m_state(std::make_unique<State>(target, lineLength, separator)) {
    SetWindow(m_state->gathered.data(), m_state->gathered.data() + m_state->gathered.size());
}

Base64EncoderStream::~Base64EncoderStream() = default;

std::size_t Base64EncoderStream::GetGathered() const {
    return static_cast<std::size_t>(WindowBegin() - m_state->gathered.data());
}

void Base64EncoderStream::DoWrite(const void* source, std::uint64_t size) {
    State& state = *m_state;
    if (state.isFinished)
        Error::RaiseError(LogicError("Attempt to write to a Base64 text that was finished"),
                          QOR_CODE_CONTEXT("Base64EncoderStream"), "Qor.Core.Base64EncoderStream");
    // The block is larger than the rest of the window, so it completes what was gathered.
    const auto* bytes = static_cast<const std::byte*>(source);
    const std::size_t gathered = GetGathered();
    const std::size_t missing = (3 - gathered % 3) % 3;
    std::copy_n(bytes, missing, WindowBegin());
    const std::size_t whole = (static_cast<std::size_t>(size) - missing) / 3 * 3;
    const std::size_t rest = static_cast<std::size_t>(size) - missing - whole;
    SetWindow(state.gathered.data() + rest, state.gathered.data() + state.gathered.size());
    state.Encode(state.gathered.data(), gathered + missing);
    state.Encode(bytes + missing, whole);
    std::copy_n(bytes + missing + whole, rest, state.gathered.data());
}

void Base64EncoderStream::DoFlush() {
    State& state = *m_state;
    if (!state.isFinished) {
        const std::size_t size = GetGathered();
        SetWindow(state.gathered.data() + size % 3, state.gathered.data() + state.gathered.size());
        state.EncodeGathered(size);
        state.Drain();
    }
    state.target.Flush();
}

void Base64EncoderStream::Finish() {
    State& state = *m_state;
    if (state.isFinished)
        return;
    const std::size_t size = GetGathered();
    state.isFinished = true;
    SetWindow(nullptr, nullptr);
    state.EncodeGathered(size);
    if (size % 3 != 0) {
        const Group group = EncodeLastGroup(state.gathered.data(), size % 3);
        state.AppendInLines({group.data(), group.size()});
    }
    state.Drain();
    state.target.Flush();
}

struct Base64DecoderStream::State {
    TextDecoder decoder;
    std::string_view text; ///< stands in the window that the source had, or in the buffer below
    std::uint64_t offset = 0;
    std::array<std::byte, 4 * 1024> bytes;
    std::array<char, 16 * 1024> buffer;
};

Base64DecoderStream::Base64DecoderStream(BinaryInputStream& source)
    : m_source(source), m_state(std::make_unique_for_overwrite<State>()) {}

Base64DecoderStream::~Base64DecoderStream() = default;

bool Base64DecoderStream::Refill() {
    State& state = *m_state;
    if (m_source.WindowSize() != 0) {
        state.text = {reinterpret_cast<const char*>(m_source.m_cursor),
                      static_cast<std::size_t>(m_source.WindowSize())};
        m_source.m_cursor = m_source.m_windowEnd;
    } else {
        const std::uint64_t size = m_source.ReadSome(state.buffer.data(), state.buffer.size());
        state.text = {state.buffer.data(), static_cast<std::size_t>(size)};
    }
    return !state.text.empty();
}

std::uint64_t Base64DecoderStream::Decode(std::byte* bytes, std::size_t room) {
    State& state = *m_state;
    do {
        const Base64Progress done = state.decoder.Decode(state.text, bytes, room);
        state.text.remove_prefix(done.read);
        state.offset += done.read;
        if (done.made != 0)
            return done.made;
    } while (state.text.empty() && Refill());
    if (state.text.empty() && state.decoder.IsComplete())
        return 0;
    Error::RaiseError(InvalidBase64(FormatText("Expected %1% at offset %2% of the Base64 text, found %3%",
                                               {state.decoder.GetExpectation(), state.offset,
                                                state.text.empty() ? "the end" : Describe(state.text.front())})),
                      QOR_CODE_CONTEXT("Base64DecoderStream"), "Qor.Core.Base64DecoderStream");
}

std::uint64_t Base64DecoderStream::DoRead(void* destination, std::uint64_t size) {
    auto& own = m_state->bytes;
    if (size >= own.size())
        return Decode(static_cast<std::byte*>(destination), static_cast<std::size_t>(size));
    const std::uint64_t made = Decode(own.data(), own.size());
    const std::uint64_t taken = std::min(size, made);
    std::copy_n(own.data(), taken, static_cast<std::byte*>(destination));
    SetWindow(own.data() + taken, own.data() + made);
    return taken;
}

std::optional<std::uint64_t> Base64DecoderStream::DoBytesLeft() const {
    const std::optional<std::uint64_t> behind = m_source.BytesLeft();
    if (!behind)
        return std::nullopt;
    return (*behind + m_state->text.size() + m_state->decoder.GetSize()) / 4 * 3;
}

} // namespace Qor::Core
