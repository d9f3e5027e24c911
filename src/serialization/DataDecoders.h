#pragma once

#include <Tivor/SerializationManager.h>
#include <Tivor/XMLContentHandler.h>

#include <optional>

namespace Qor::Tivor {

/// Rebuilds the binary data of an object from its element, and hands it to the serializer. Without a size, which only
/// kept data can do without, it is all the data there is.
class DataDecoder : public XMLContentHandler {
public:
    DataDecoder(Serializer& serializer, std::optional<std::uint64_t> size) : m_serializer(serializer), m_size(size) {}

    void OnTextContent(const std::string& text) override { m_text += text; }
    void OnEntityReference(const std::string& entity) override;

protected:
    std::uint64_t SizeOr(std::uint64_t size) const { return m_size.value_or(size); }
    bool HasSize() const { return m_size.has_value(); }
    /// Fills the object from `size` bytes of the stream.
    void Decode(std::uint64_t size, Core::BinaryInputStream& stream);

    std::string m_text;

private:
    Serializer& m_serializer;
    std::optional<std::uint64_t> m_size;
};

/// Text that is a number; its bytes are the data, the lowest first. Whatever the conversion makes of the text is used.
class NumberDecoder : public DataDecoder {
public:
    NumberDecoder(Serializer& serializer, std::optional<std::uint64_t> size, int base)
        : DataDecoder(serializer, size), m_base(base) {}

    void OnCDataSection(Core::BinaryInputStream& section) override;
    void OnEndContent() override;

private:
    int m_base;
};

/// "def/uint64": decimal, or hexadecimal after "0x", or octal after "0".
class UINT64DataDecoder final : public NumberDecoder {
public:
    UINT64DataDecoder(Serializer& serializer, std::optional<std::uint64_t> size) : NumberDecoder(serializer, size, 0) {}
};

/// "def/hex64".
class Hex64DataDecoder final : public NumberDecoder {
public:
    Hex64DataDecoder(Serializer& serializer, std::optional<std::uint64_t> size) : NumberDecoder(serializer, size, 16) {}
};

/// "def/base64": a CDATA section, or text. The section goes from its stream to the object without standing in memory.
class Base64DataDecoder final : public DataDecoder {
public:
    using DataDecoder::DataDecoder;

    void OnCDataSection(Core::BinaryInputStream& section) override;
    void OnEndContent() override;

private:
    void DecodeBase64(Core::BinaryInputStream& text);

    bool m_isDecoded = false;
};

} // namespace Qor::Tivor
