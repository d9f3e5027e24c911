#pragma once

#include <QorCore/Stream.h>

#include <bit>
#include <concepts>
#include <string>
#include <string_view>

namespace Qor::Core {

// The stored form of values: integers and IEEE floats little-endian at their own width, bool as one byte, a string as
// a 32-bit count of bytes and the bytes (wide strings as UTF-8). `long` has no stored form, because its width differs
// between platforms.
static_assert(std::endian::native == std::endian::little, "stored values are little-endian");

template <class T>
concept StoredNumber = (std::integral<T> || std::floating_point<T>)&&!std::same_as<T, long> &&
                       !std::same_as<T, unsigned long> && !std::same_as<T, wchar_t> && !std::same_as<T, long double>;
/// The 64-bit integers of this platform, which may be spelled `long`.
template <class T>
concept StoredInteger64 = std::same_as<T, std::int64_t> || std::same_as<T, std::uint64_t>;

class DataInputStream;
class DataOutputStream;

/// A type that knows its stored form.
template <class T>
concept StoredClass = requires(T& value, const T& constant, DataInputStream& input, DataOutputStream& output) {
    { value.Read(input) } -> std::same_as<bool>;
    constant.Write(output);
};

/// Reads stored values from a binary stream. Every operation answers whether the value was there whole: a short read is
/// reported, not raised, so that the caller can say what was missing.
class QOR_CORE_API DataInputStream {
public:
    explicit DataInputStream(BinaryInputStream& stream) : m_stream(stream) {}

    template <class T>
    requires StoredNumber<T> || StoredInteger64<T>
    [[nodiscard]] bool Read(T& value) {
        if constexpr (std::same_as<T, bool>) {
            std::uint8_t byte = 0;
            const bool whole = Read(byte);
            value = byte != 0;
            return whole;
        } else {
            return m_stream.Read(&value, sizeof value) == sizeof value;
        }
    }
    template <StoredClass T>
    [[nodiscard]] bool Read(T& value) {
        return value.Read(*this);
    }
    [[nodiscard]] bool Read(std::string& value);
    [[nodiscard]] bool Read(std::wstring& value);
    /// `size` bytes as they are, without a count in front. Memory is taken at once only where the stream is known to
    /// hold that much, otherwise as the bytes arrive.
    [[nodiscard]] bool ReadBytes(std::string& bytes, std::uint64_t size);

    BinaryInputStream& GetStream() { return m_stream; }

private:
    BinaryInputStream& m_stream;
};

/// Writes stored values to a binary stream.
class QOR_CORE_API DataOutputStream {
public:
    explicit DataOutputStream(BinaryOutputStream& stream) : m_stream(stream) {}

    template <class T>
    requires StoredNumber<T> || StoredInteger64<T>
    void Write(T value) {
        if constexpr (std::same_as<T, bool>)
            Write(static_cast<std::uint8_t>(value ? 1 : 0));
        else
            m_stream.Write(&value, sizeof value);
    }
    template <StoredClass T>
    void Write(const T& value) {
        value.Write(*this);
    }
    /// Raises `OutOfRangeError` for a string of 4 GiB and more.
    void Write(std::string_view value);
    void Write(std::wstring_view value);

    BinaryOutputStream& GetStream() { return m_stream; }

private:
    BinaryOutputStream& m_stream;
};

/// The bytes that `DataOutputStream::Write` takes for a string.
inline std::uint64_t GetSerializedStringSize(std::string_view value) {
    return sizeof(std::uint32_t) + static_cast<std::uint64_t>(value.size());
}

} // namespace Qor::Core
