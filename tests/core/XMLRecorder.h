#pragma once

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

// A medium that gives few bytes at a time, does not know how many it has, and may fail.
class Trickle final : public BinaryInputStream {
public:
    explicit Trickle(std::string_view bytes, bool fails = false, std::size_t step = 1)
        : m_bytes(bytes), m_fails(fails), m_step(step) {}

protected:
    std::uint64_t DoRead(void* destination, std::uint64_t size) override {
        if (m_bytes.empty() && m_fails)
            throw IOError("The medium failed");
        const std::size_t done = m_bytes.copy(static_cast<char*>(destination),
                                              static_cast<std::size_t>(std::min<std::uint64_t>(size, m_step)));
        m_bytes.remove_prefix(done);
        return done;
    }

private:
    std::string_view m_bytes;
    bool m_fails;
    std::size_t m_step;
};

inline std::string Joined(const std::vector<std::string>& calls) {
    std::string joined;
    for (const std::string& call : calls)
        joined += (joined.empty() ? "" : " ") + call;
    return joined;
}

} // namespace Qor::Core::Testing
