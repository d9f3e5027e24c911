#pragma once

#include "XMLSource.h"

#include <QorCore/XMLParser.h>

#include <functional>

namespace Qor::Core {

inline constexpr std::size_t longestCharacter = 4;

// The content of a CDATA section of a document in UTF-8, straight from its source: checked, and with '\n' at the end of
// each line.
class XMLSectionStream final : public BinaryInputStream {
public:
    using Raiser = std::function<void(XMLPosition)>;

    // The source stands behind the opening of the section, which is at `position`, and is left before its "]]>".
    // `raiseFault` is called where the source stands before what cannot be, and raises an error; `onlyAscii`: that may
    // also be a character beyond ASCII.
    XMLSectionStream(XMLSource& source, XMLPosition position, bool onlyAscii, Raiser raiseFault);
    ~XMLSectionStream() override;

    // Where the source stands.
    XMLPosition GetPosition() const { return m_position; }

protected:
    std::uint64_t DoRead(void* destination, std::uint64_t size) override;
    std::optional<std::uint64_t> DoBytesLeft() const override { return m_source.BytesLeft(); }

private:
    void ReadOn();
    std::uint64_t Take(char* destination, std::uint64_t size);
    std::uint64_t TakeBlocks(char* destination, std::uint64_t size);
    std::uint64_t TakeCharacter(char* destination, std::uint64_t size);
    std::string_view DropPlainText(std::uint64_t most);
    void ShowText(std::string_view text);
    std::size_t SizeOfCharacter(std::string_view text) const;

    XMLSource& m_source;
    XMLPosition m_position;
    bool m_onlyAscii;
    bool m_hasEnded = false;
    Raiser m_raiseFault;
};

} // namespace Qor::Core
