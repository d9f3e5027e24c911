#include "Text.h"

#include <QorCore/UnitDictionary.h>

namespace Qor::Tivor::Measurements {

std::string ReadAll(Core::BinaryInputStream& stream) {
    static constexpr std::uint64_t piece = 64 * 1024;
    std::string text;
    std::uint64_t wanted = 0, got = 0;
    do {
        const std::size_t size = text.size();
        const auto left = stream.BytesLeft();
        wanted = left ? *left + 1 : piece; // a byte that is missing tells the end, and no room is made for more
        text.resize(size + static_cast<std::size_t>(wanted));
        got = stream.Read(text.data() + size, wanted);
        text.resize(size + static_cast<std::size_t>(got));
    } while (got == wanted);
    return text;
}

std::string_view Lines::Next() {
    const std::size_t end = std::min(m_rest.find('\n'), m_rest.size());
    std::string_view line = m_rest.substr(0, end);
    m_rest.remove_prefix(std::min(end + 1, m_rest.size()));
    ++m_number;
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

Unit FindUnit(std::string_view text) {
    std::string name(Core::TrimBlanks(text));
    for (const std::string_view sign : {"\xC2\xB5", "\xCE\xBC"}) // a character of its own, and the Greek letter
        if (name.starts_with(sign))
            name.replace(0, sign.size(), "u");
    if (auto unit = Core::UnitDictionary::Instance().Find(name))
        return unit;
    for (const auto& unit : Core::UnitDictionary::GetStandardUnits())
        if (unit->GetSymbol() == name)
            return unit;
    return nullptr;
}

Unit BaseUnitOf(const Unit& unit) {
    const auto base = Core::UnitDictionary::Instance().FindLike(unit->GetExponents(), 1);
    return base ? base : unit;
}

} // namespace Qor::Tivor::Measurements
