#include "../common/Text.h"
#include "Gsf.h"

#include <QorCore/BufferedStreams.h>
#include <QorCore/MemoryStreams.h>

#include <map>

namespace Qor::Tivor::Measurements {

namespace {

constexpr std::size_t longestHeader = 1 << 20;

class Header {
public:
    Header(const std::string& text, const Report& report) : m_report(report) {
        Lines lines(text);
        lines.Next(); // the magic
        while (!lines.IsAtEnd()) {
            const std::string_view line = lines.Next();
            ReadLine(line, lines.GetPlace());
        }
    }

    std::optional<std::string> Take(const std::string& name) {
        const auto place = m_fields.find(name);
        return place == m_fields.end() ? std::nullopt : std::optional(m_fields.extract(place).mapped().value);
    }
    template <class T, class IsGood>
    std::optional<T> TakeNumber(const std::string& name, const char* expected, IsGood isGood) {
        const auto place = m_fields.find(name);
        if (place == m_fields.end())
            return std::nullopt;
        const auto number = FindNumber<T>(place->second.value);
        if (!number || !isGood(*number))
            m_report.Fail(name + ", " + place->second.place, expected, Quote(place->second.value));
        m_fields.erase(place);
        return number;
    }
    std::uint64_t TakeCount(const std::string& name) {
        const auto count = TakeNumber<std::uint32_t>(name, "a number of points", [](auto n) { return n > 0; });
        if (!count)
            m_report.Fail("header", "a line " + name + " = a number of points", "none");
        return *count;
    }
    double TakeWidth(const std::string& name) {
        return TakeNumber<double>(name, "a positive number", [](double n) { return n > 0 && std::isfinite(n); })
            .value_or(1);
    }
    double TakeOffset(const std::string& name) {
        return TakeNumber<double>(name, "a number", [](double n) { return std::isfinite(n); }).value_or(0);
    }
    /// A unit that is not known becomes that of plain numbers, and the field stays.
    Unit TakeUnit(const std::string& name) {
        const auto place = m_fields.find(name);
        if (place == m_fields.end())
            return FindUnit("");
        if (const auto unit = FindUnit(place->second.value)) {
            m_fields.erase(place);
            return unit;
        }
        m_report.Deviates(name + ", " + place->second.place, "a unit",
                          Quote(place->second.value) + ", which is not known; its numbers stay plain numbers");
        return FindUnit("");
    }
    void StoreRestIn(DataContainer& metaData) const {
        if (m_fields.empty())
            return;
        const auto rest = metaData.GetSubData({gsfKey}, true);
        for (const auto& [name, field] : m_fields)
            rest->PutValue(name, field.value);
    }

private:
    struct Field {
        std::string value, place;
    };

    void ReadLine(std::string_view line, const std::string& place) {
        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos) {
            if (!Core::TrimBlanks(line).empty())
                m_report.Deviates(place, "a line Name = value", Quote(line) + ", which is passed over");
            return;
        }
        const std::string name(Core::TrimBlanks(line.substr(0, equals)));
        const std::string value(Core::TrimBlanks(line.substr(equals + 1)));
        if (const auto [field, isNew] = m_fields.try_emplace(name, Field{value, place}); !isNew)
            m_report.Deviates(place, "each field once",
                              Quote(name) + " again, after " + field->second.place + "; the first one counts");
    }

    const Report& m_report;
    std::map<std::string, Field> m_fields;
};

/// Up to the first zero byte, which is taken too.
std::string ReadHeader(Core::BinaryInputStream& stream, const Report& report) {
    std::string text;
    for (char c = 0; stream.Read(&c, 1) == 1; text += c) {
        if (c == 0)
            return text;
        if (text.size() == longestHeader)
            break;
    }
    report.Fail("header", "a zero byte within " + std::to_string(longestHeader) + " bytes", "none");
}

void ReadPadding(Core::BinaryInputStream& stream, std::size_t headerSize, const Report& report) {
    for (std::size_t place = headerSize + 1; place % gsfAlignment != 0; ++place) {
        char c = 0;
        if (stream.Read(&c, 1) != 1 || c != 0)
            report.Fail("byte " + std::to_string(place), "a zero byte up to a multiple of 4", "something else");
    }
}

/// What is not finite was not measured.
std::size_t UnifyMissing(std::span<float> samples) {
    std::size_t numInfinite = 0;
    for (float& sample : samples)
        if (std::isinf(sample)) {
            sample = std::numeric_limits<float>::quiet_NaN();
            ++numInfinite;
        }
    return numInfinite;
}

} // namespace

std::string Gsf::Refusal(Core::BinaryInputStream& stream, std::uint64_t) {
    char begin[gsfMagic.size()] = {};
    if (stream.Read(begin, sizeof begin) == sizeof begin && std::string_view(begin, sizeof begin) == gsfMagic)
        return {};
    return "it does not begin with the line \"Gwyddion Simple Field 1.0\"";
}

void Gsf::Read(Core::BinaryInputStream& file, const Report& report, DataContainer& content) {
    if (!file.BytesLeft()) { // the samples can only be trusted to be there when it is known how much is
        const std::string bytes = ReadAll(file);
        Core::MemoryInputStream memory(bytes.data(), bytes.size());
        return Read(memory, report, content);
    }
    Core::BufferedInputStream stream(file, 64 * 1024);
    const std::string text = ReadHeader(stream, report);
    if (!text.starts_with(gsfMagic))
        report.Fail("line 1", "Gwyddion Simple Field 1.0", Quote(text));
    ReadPadding(stream, text.size(), report);
    Header header(text, report);
    const std::uint64_t numX = header.TakeCount("XRes"), numY = header.TakeCount("YRes");
    const std::uint64_t needed = numX * numY * sizeof(float); // both are below 2^32
    const std::uint64_t left = stream.BytesLeft().value_or(0);
    if (numX > left / sizeof(float) / numY)
        report.Fail("samples", Core::FormatText("%1% x %2% of 4 bytes each", {numX, numY}),
                    std::to_string(left) + " bytes");
    RowMajorMatrix<float> samples(static_cast<std::size_t>(numY), static_cast<std::size_t>(numX));
    if (stream.Read(samples.data(), needed) != needed)
        report.Fail("samples", std::to_string(needed) + " bytes", "fewer");
    if (left > needed)
        report.Deviates("end", "the end of the file behind the samples",
                        std::to_string(left - needed) + " bytes, which are passed over");
    if (const std::size_t numInfinite = UnifyMissing({samples.data(), samples.size()}))
        report.Deviates("samples", "NaN for missing points",
                        std::to_string(numInfinite) + " infinities, which become NaN");

    const Unit lateral = header.TakeUnit("XYUnits");
    const double width = header.TakeWidth("XReal"), height = header.TakeWidth("YReal");
    const Axis x{numX, lateral, header.TakeOffset("XOffset"), width / static_cast<double>(numX), {}};
    const Axis y{numY, lateral, header.TakeOffset("YOffset"), height / static_cast<double>(numY), {}};
    const auto surface = Data2D::Create(MakeData(std::move(samples)));
    surface->SetDataScale(UnitizedDouble(1.0, header.TakeUnit("ZUnits")));
    if (InMetres(surface->GetDataScale()))
        surface->SetDataKind(sHEIGHT_DATA);
    SetPositions(*surface, x, y);

    Reading reading;
    reading.Add("Surface", surface);
    if (const auto title = header.Take("Title"))
        reading.GetMetaData().PutValue(sDATASET_NAME, *title);
    header.StoreRestIn(reading.GetMetaData());
    WarnOfImplausibleLengths(report, Measured("Surface", surface));
    reading.StoreIn(content);
}

} // namespace Qor::Tivor::Measurements
