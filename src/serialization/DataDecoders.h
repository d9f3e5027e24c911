#pragma once

#include "XMLTextHandler.h"

#include <Tivor/SerializationManager.h>

#include <optional>

namespace Qor::Tivor {

/// Whom rebuilt binary data goes to, and how much of it its element has declared; kept data can do without a size, and
/// takes all there is.
class DataTarget {
public:
    DataTarget(Serializer& serializer, std::optional<std::uint64_t> size) : m_serializer(serializer), m_size(size) {}

    const std::optional<std::uint64_t>& GetSize() const { return m_size; }
    /// Fills the object from `size` bytes of the stream.
    void Fill(std::uint64_t size, Core::BinaryInputStream& stream);

private:
    Serializer& m_serializer;
    std::optional<std::uint64_t> m_size;
};

/// Text that is a number; its bytes are the data, the lowest first. Whatever the conversion makes of the text is used.
class NumberDecoder : public XMLTextHandler {
public:
    NumberDecoder(DataTarget target, int base) : m_target(target), m_base(base) {}

protected:
    void OnText(std::string text) final;

private:
    DataTarget m_target;
    int m_base;
};

/// "def/uint64": decimal, or hexadecimal after "0x", or octal after "0".
class UINT64DataDecoder final : public NumberDecoder {
public:
    explicit UINT64DataDecoder(DataTarget target) : NumberDecoder(target, 0) {}
};

/// "def/hex64".
class Hex64DataDecoder final : public NumberDecoder {
public:
    explicit Hex64DataDecoder(DataTarget target) : NumberDecoder(target, 16) {}
};

/// "def/base64": a CDATA section, or text. The section goes from its stream to the object without standing in memory.
class Base64DataDecoder final : public XMLTextHandler {
public:
    explicit Base64DataDecoder(DataTarget target) : m_target(target) {}

    void OnCDataSection(Core::BinaryInputStream& section) override;

protected:
    void OnText(std::string text) override;

private:
    void Decode(Core::BinaryInputStream& text);

    DataTarget m_target;
    bool m_isDecoded = false;
};

} // namespace Qor::Tivor
