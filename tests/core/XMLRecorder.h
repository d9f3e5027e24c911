#pragma once

#include "Trickle.h"

#include <QorCore/Stream.h>
#include <QorCore/XMLParser.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Qor::Core::Testing {

// Writes down each call, e.g. `<a` for a start tag and `</a>` for its end, and then runs an action.
class Recorder final : public XMLParseHandler {
public:
    void OnStartDoc(const std::string& version, const std::string& encoding, bool standalone) override {
        Saw("doc(" + version + "," + encoding + (standalone ? ",alone)" : ")"));
    }
    void OnEndDoc() override { Saw("end"); }
    void OnStartTag(const std::string& tag) override { Saw("<" + tag); }
    void OnStartTagContent() override { Saw(">"); }
    void OnAttribute(const std::string& name, const XMLAttributeValue<std::string>& value) override {
        Saw("@" + name + "=" + value.GetText());
    }
    void OnTextContent(const std::string& text) override { Saw("'" + text + "'"); }
    void OnEndTag(const std::string& tag, bool emptyElement) override { Saw((emptyElement ? "/" : "</") + tag + ">"); }
    void OnComment(const std::string& comment) override { Saw("!" + comment); }
    void OnEntityReference(const std::string& entity) override { Saw("&" + entity); }
    void OnCDataSection(BinaryInputStream& section) override {
        sectionSize = section.BytesLeft();
        std::string bytes;
        for (std::string piece(readSize, '?'); piece.size() == readSize && bytes.size() < cDataRead; bytes += piece) {
            const std::uint64_t wanted = std::min(cDataRead - bytes.size(), readSize);
            piece.resize(static_cast<std::size_t>(section.Read(piece.data(), wanted)));
        }
        Saw("[" + bytes + "]");
    }

    std::vector<std::string> seen;
    std::uint64_t cDataRead = 1'000'000;
    std::uint64_t readSize = 1000;
    std::optional<std::uint64_t> sectionSize; // what the last section told when it began
    std::function<void()> action = [] {};

private:
    void Saw(std::string call) {
        seen.push_back(std::move(call));
        action();
    }
};

// A document byte by byte, or in larger steps, from a medium that does not know how long it is, and may fail at its
// end.
inline Trickle Deliver(std::string_view document, bool fails = false, std::uint64_t step = 1) {
    return {std::as_bytes(std::span(document)), step, fails ? document.size() : Trickle::never, true};
}

constexpr std::size_t pieceSize = 64 * 1024;

inline std::string Repeated(std::size_t count, const std::string& text) {
    std::string repeated;
    for (; count != 0; --count)
        repeated += text;
    return repeated;
}

inline std::string Joined(const std::vector<std::string>& calls) {
    std::string joined;
    for (const std::string& call : calls)
        joined += (joined.empty() ? "" : " ") + call;
    return joined;
}

} // namespace Qor::Core::Testing
