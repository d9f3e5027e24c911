#include "Sdf.h"
#include "SdfFields.h"
#include "SdfSamples.h"

#include <algorithm>
#include <map>

namespace Qor::Tivor::Measurements {

namespace {

constexpr std::size_t longestVersion = 32;

bool IsLetterOrDigit(char c) { return (c >= '0' && c <= '9') || (ToSdfLower(c) >= 'a' && ToSdfLower(c) <= 'z'); }

/// As "ISO-1.0": a body that publishes the format, and a number.
bool NamesVersion(std::string_view text) {
    const std::size_t dash = text.find('-');
    return dash != 0 && dash != text.npos && std::all_of(text.begin(), text.begin() + dash, IsLetterOrDigit) &&
           text.find_first_of("0123456789", dash) != text.npos &&
           std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c <= '~'; });
}

/// Why a text with this first line is not of the format; empty when it is.
std::string ExplainVersion(std::string_view line) {
    static constexpr std::size_t binarySize = 8;
    if (line.starts_with('b') && NamesVersion(line.substr(1, binarySize - 1)))
        return "it is a surface data file in binary form; only those in ASCII are read";
    if (line.size() <= longestVersion && line.starts_with('a') && NamesVersion(line.substr(1)))
        return {};
    return "it does not begin with a version, as \"aISO-1.0\"";
}

std::string_view TrimVersion(std::string_view line) { return line.substr(0, line.find_last_not_of(" \t\r") + 1); }

class Header {
public:
    /// Up to the line behind the header.
    Header(Lines& lines, const Report& report) : m_report(report) {
        while (!lines.IsAtEnd()) {
            const std::string_view line = Core::TrimBlanks(lines.Next());
            if (line == sdfEnd)
                return;
            ReadLine(line, lines.GetPlace());
        }
        m_report.Fail(lines.GetPlace(), "a line * behind the header", "the end of the file");
    }

    template <class T, class IsGood>
    T GetNumber(const std::string& name, IsGood isGood) const {
        const SdfField& field = *FindField(name);
        const auto line = m_lines.find(field.name);
        if (line == m_lines.end())
            m_report.Fail("header", DescribeField(field), "none");
        const auto number = FindNumber<T>(line->second.value);
        if (!number || !isGood(*number))
            m_report.Fail(line->second.place, DescribeField(field), Quote(line->second.value));
        return *number;
    }
    std::uint64_t GetCount(const std::string& name) const {
        return GetNumber<std::uint32_t>(name, [](std::uint32_t n) { return n > 0; });
    }
    double GetSpacing(const std::string& name, std::uint64_t points) const {
        return GetNumber<double>(name, [points](double spacing) { return IsSdfSpacing(spacing, points); });
    }
    /// That of doubles when it is not told.
    std::size_t GetDataType() const {
        static constexpr std::size_t last = std::tuple_size_v<SdfTypes> - 1;
        const SdfField& field = *FindField("DataType");
        const auto line = m_lines.find(field.name);
        const auto type = line == m_lines.end() ? std::nullopt : FindNumber<std::uint8_t>(line->second.value);
        if (type && *type <= last)
            return *type;
        m_report.Deviates(line == m_lines.end() ? "header" : line->second.place, DescribeField(field),
                          (line == m_lines.end() ? "none" : Quote(line->second.value)) +
                              "; the samples are read as doubles");
        return last;
    }
    void StoreTextsIn(DataContainer& texts) const {
        for (const SdfField& field : sdfFields) {
            if (!field.IsText())
                continue;
            const auto line = m_lines.find(field.name);
            if (line == m_lines.end()) {
                m_report.Deviates("header", DescribeField(field), "none");
                continue;
            }
            if (!field.isGood(line->second.value))
                m_report.Deviates(line->second.place, DescribeField(field), Quote(line->second.value));
            texts.PutValue(field.name, line->second.value);
        }
    }

private:
    struct Line {
        std::string value, place;
    };

    static const SdfField* FindField(std::string_view name) {
        const auto field = std::ranges::find_if(sdfFields, [&](auto& f) { return IsSameSdfWord(f.name, name); });
        return field == std::end(sdfFields) ? nullptr : field;
    }
    static std::string DescribeField(const SdfField& field) {
        return std::string("a line ") + field.name + " = " + field.expected;
    }

    void ReadLine(std::string_view line, const std::string& place) {
        if (line.empty())
            return;
        const std::size_t equals = line.find('=');
        const SdfField* const field = FindField(Core::TrimBlanks(line.substr(0, equals)));
        if (equals == line.npos || !field)
            return m_report.Deviates(place, "a field of the header", Quote(line) + ", which is passed over");
        const std::string value(Core::TrimBlanks(line.substr(equals + 1)));
        if (const auto [first, isNew] = m_lines.try_emplace(field->name, Line{value, place}); !isNew)
            m_report.Deviates(place, "each field once",
                              Quote(line) + " again, after " + first->second.place + "; the first one counts");
    }

    const Report& m_report;
    std::map<std::string, Line> m_lines;
};

/// With '\n' alone at the ends of lines, and none at the last one.
std::string UnifyLines(std::string_view text, bool hasReturns) {
    if (!hasReturns)
        return std::string(text.ends_with('\n') ? text.substr(0, text.size() - 1) : text);
    std::string unified;
    for (Lines lines(text); !lines.IsAtEnd();)
        unified.append(lines.Next()) += '\n';
    return unified.substr(0, unified.size() - !unified.empty());
}

/// What follows the line behind the samples. The last asterisk that stands alone closes it, so that it may hold others.
std::string FindTrailer(std::string_view rest, bool hasReturns) {
    if (Lines lines(rest); Core::TrimBlanks(lines.Next()).empty())
        rest = lines.GetRest();
    const std::size_t last = rest.find_last_not_of(" \t\r\n");
    const std::size_t lastLine = last == rest.npos ? 0 : rest.rfind('\n', last) + 1;
    if (Core::TrimBlanks(rest.substr(lastLine)) == sdfEnd)
        rest = rest.substr(0, lastLine);
    return UnifyLines(rest, hasReturns);
}

SdfGrid ReadGrid(const Header& header, std::string_view left, const Report& report) {
    const SdfGrid grid{header.GetCount("NumPoints"), header.GetCount("NumProfiles"), header.GetDataType()};
    const std::uint64_t most = (std::uint64_t{left.size()} + 1) / 2; // a digit and a blank each
    if (grid.numX > most / grid.numY)
        report.Fail("samples", Core::FormatText("%1% x %2%", {grid.numX, grid.numY}),
                    std::to_string(left.size()) + " bytes, too few for them");
    return grid;
}

template <class Heights>
void AddHeights(Reading& reading, const std::string& key, const std::shared_ptr<Heights>& heights, double scale,
                const Report& report) {
    heights->SetDataKind(sHEIGHT_DATA);
    heights->SetDataScale(UnitizedDouble(scale, "Meter"));
    reading.Add(key, heights);
    WarnOfImplausibleLengths(report, Measured(key, heights));
}

} // namespace

std::string Sdf::Refusal(Core::BinaryInputStream& stream, std::uint64_t) {
    char begin[2 * longestVersion] = {};
    const std::string_view text(begin, static_cast<std::size_t>(stream.Read(begin, sizeof begin)));
    return ExplainVersion(TrimVersion(text.substr(0, text.find('\n'))));
}

void Sdf::Read(Core::BinaryInputStream& stream, const Report& report, DataContainer& content) {
    const std::string text = ReadAll(stream);
    Lines lines(text);
    const bool hasReturns = text.substr(0, text.find('\n')).ends_with('\r');
    const std::string version(TrimVersion(lines.Next()));
    if (const std::string refusal = ExplainVersion(version); !refusal.empty())
        report.Fail("line 1", "a version, as aISO-1.0", Quote(version) + "; " + refusal);
    const Header header(lines, report);
    const SdfGrid grid = ReadGrid(header, lines.GetRest(), report);
    const auto metre = FindUnit("m");
    const Axis x{grid.numX, metre, 0, header.GetSpacing("Xscale", grid.numX), {}};
    const double scale = header.GetNumber<double>("Zscale", IsSdfScale);

    Reading reading;
    DataContainer& texts = *reading.GetMetaData().GetSubData({sdfKey}, true);
    texts.PutValue(sdfVersionKey, version);
    header.StoreTextsIn(texts);
    SdfWords words(lines);
    if (grid.numY == 1) {
        const auto profile = Data1D::CreateFrom(ReadSdfSamples(words, grid, report));
        SetPositions(*profile, x);
        AddHeights(reading, "Profile", profile, scale, report);
    } else {
        const Axis y{grid.numY, metre, 0, header.GetSpacing("Yscale", grid.numY), {}};
        const auto surface = Data2D::Create(ReadSdfSamples(words, grid, report));
        SetPositions(*surface, x, y);
        AddHeights(reading, "Surface", surface, scale, report);
    }
    if (const std::string trailer = FindTrailer(words.GetRest(), hasReturns); !trailer.empty())
        texts.PutValue(sdfTrailerKey, trailer);
    reading.StoreIn(content);
}

} // namespace Qor::Tivor::Measurements
