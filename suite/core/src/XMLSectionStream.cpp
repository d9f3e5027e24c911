#include "XMLSectionStream.h"

#include "XMLMarkup.h"

#include <QorCore/Utf8.h>

#include <algorithm>
#include <bit>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace Qor::Core {

namespace {

constexpr std::size_t blockSize = 32;
constexpr std::uint64_t smallRead = 256; // likely to be one of many
constexpr std::uint64_t mostShown = 4096;

unsigned char ByteOf(char c) { return static_cast<unsigned char>(c); }

// All that needs no look at its neighbours and is one column of a line.
bool IsPlain(char c) { return ByteOf(c) >= 0x20 && ByteOf(c) < 0x80 && c != ']'; }

// Copies a block and returns a bit for each byte of it that is not plain.
#if defined(__SSE2__)
std::uint32_t CopyBlock(char* destination, const char* source) {
    const auto copyHalf = [&](std::size_t offset) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + offset));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(destination + offset), bytes);
        return _mm_or_si128(_mm_cmplt_epi8(bytes, _mm_set1_epi8(0x20)), _mm_cmpeq_epi8(bytes, _mm_set1_epi8(']')));
    };
    const __m128i first = copyHalf(0);
    const __m128i second = copyHalf(blockSize / 2);
    if (_mm_movemask_epi8(_mm_or_si128(first, second)) == 0)
        return 0;
    return static_cast<std::uint32_t>(_mm_movemask_epi8(first)) | static_cast<std::uint32_t>(_mm_movemask_epi8(second))
                                                                      << (blockSize / 2);
}
#else
std::uint32_t CopyBlock(char* destination, const char* source) {
    std::uint32_t marks = 0;
    for (std::size_t i = 0; i < blockSize; ++i)
        marks |= static_cast<std::uint32_t>(!IsPlain(destination[i] = source[i])) << i;
    return marks;
}
#endif

bool EndsLine(char c) { return c == '\r' || c == '\n'; }

struct Step {
    std::size_t read = 0;
    std::size_t written = 0;
};

// Takes a block of plain text and lines, or what comes before anything else in it. Both sides have room for two blocks:
// the bytes behind a '\r' that goes are copied once more to where they belong.
Step TakeBlock(char* destination, const char* source, XMLPosition& position) {
    Step step{blockSize, blockSize};
    std::size_t gone = 0;
    for (std::uint32_t marks = CopyBlock(destination, source); marks != 0; marks &= marks - 1) {
        const auto at = static_cast<std::size_t>(std::countr_zero(marks));
        if (source[at] == '\r' && source[at + 1] == '\n') {
            ++gone;
            std::memcpy(destination + at + 1 - gone, source + at + 1, blockSize);
        } else if (EndsLine(source[at])) {
            destination[at - gone] = '\n';
            ++position.line;
            position.column = std::uint64_t{0} - at; // the block's size is added below
        } else if (source[at] != '\t') {
            step = {at, at};
            break;
        }
    }
    position.column += step.read;
    step.written -= gone;
    return step;
}

} // namespace

XMLSectionStream::XMLSectionStream(XMLSource& source, XMLPosition position, bool onlyAscii, Raiser raiseFault)
    : m_source(source), m_position(position), m_onlyAscii(onlyAscii), m_raiseFault(std::move(raiseFault)) {}

XMLSectionStream::~XMLSectionStream() = default;

std::uint64_t XMLSectionStream::DoRead(void* destination, std::uint64_t size) {
    while (!m_hasEnded) {
        const std::uint64_t taken = Take(static_cast<char*>(destination), size);
        m_hasEnded = m_source.GetText().starts_with(endOfCData);
        if (taken == size && size < smallRead && WindowSize() == 0)
            ShowText(DropPlainText(mostShown)); // for the reads that follow
        if (taken != 0)
            return taken;
        if (!m_hasEnded)
            ReadOn();
    }
    return 0;
}

void XMLSectionStream::ReadOn() {
    if (m_source.IsAtEnd() || m_source.GetText().size() >= longestCharacter)
        m_raiseFault(m_position);
    m_source.ReadOn(xmlPieceSize);
}

// Up to the end of the section, to a fault, or to what the bytes behind the text decide.
std::uint64_t XMLSectionStream::Take(char* destination, std::uint64_t size) {
    std::uint64_t taken = 0;
    for (std::uint64_t more = 1; more != 0 && taken < size;) {
        taken += TakeBlocks(destination + taken, size - taken);
        const std::string_view plain = DropPlainText(std::min<std::uint64_t>(size - taken, 2 * blockSize));
        taken += plain.copy(destination + taken, plain.size());
        do {
            more = TakeCharacter(destination + taken, size - taken);
            taken += more;
        } while (more > 1); // beyond ASCII, like those that follow
    }
    return taken;
}

std::uint64_t XMLSectionStream::TakeBlocks(char* destination, std::uint64_t size) {
    const std::string_view text = m_source.GetText();
    XMLPosition position = m_position;
    Step all;
    Step last{blockSize, 0};
    while (last.read == blockSize &&
           std::min<std::uint64_t>(text.size() - all.read, size - all.written) > 2 * blockSize) {
        last = TakeBlock(destination + all.written, text.data() + all.read, position);
        all = {all.read + last.read, all.written + last.written};
    }
    m_position = position;
    m_source.Drop(all.read);
    return all.written;
}

std::uint64_t XMLSectionStream::TakeCharacter(char* destination, std::uint64_t size) {
    const std::string_view text = m_source.GetText();
    const std::size_t read = SizeOfCharacter(text);
    if (read == 0 || size == 0)
        return 0;
    m_source.Drop(read);
    if (EndsLine(text.front())) {
        *destination = '\n';
        m_position = {m_position.line + 1, 1};
        return 1;
    }
    ++m_position.column;
    const auto written = static_cast<std::size_t>(std::min<std::uint64_t>(read, size));
    text.copy(destination, written);
    ShowText(text.substr(written, read - written));
    return written;
}

std::string_view XMLSectionStream::DropPlainText(std::uint64_t most) {
    const std::string_view text = m_source.GetText();
    const auto end = std::find_if_not(
        text.begin(), text.begin() + static_cast<std::ptrdiff_t>(std::min<std::uint64_t>(most, text.size())), IsPlain);
    const std::string_view plain(text.begin(), end);
    m_source.Drop(plain.size());
    m_position.column += plain.size();
    return plain;
}

void XMLSectionStream::ShowText(std::string_view text) {
    const auto* const begin = reinterpret_cast<const std::byte*>(text.data());
    SetWindow(begin, begin + text.size());
}

// 0 for the end of the section, for what is no character, and for what the bytes behind the text decide.
std::size_t XMLSectionStream::SizeOfCharacter(std::string_view text) const {
    if (text.empty())
        return 0;
    const char c = text.front();
    if (c == ']')
        return endOfCData.starts_with(text.substr(0, endOfCData.size())) ? 0 : 1;
    if (c == '\r')
        return text.size() == 1 ? 0 : text[1] == '\n' ? 2 : 1;
    if (IsPlain(c) || c == '\n' || c == '\t')
        return 1;
    if (ByteOf(c) < 0x80 || m_onlyAscii)
        return 0;
    const std::string_view character = text.substr(0, ByteOf(c) >= 0xF0 ? 4 : ByteOf(c) >= 0xE0 ? 3 : 2);
    const bool isCharacter = IsUtf8(character) && character != "\xEF\xBF\xBE" && character != "\xEF\xBF\xBF";
    return isCharacter ? character.size() : 0;
}

} // namespace Qor::Core
