#include "Sdf.h"
#include "SdfFields.h"

#include <QorCore/BufferedStreams.h>
#include <Tivor/DataKinds.h>

#include <map>

namespace Qor::Tivor::Measurements {

namespace {

/// Doubles for a type that the format does not have.
template <class T, std::size_t type = 0>
constexpr std::size_t FindDataType() {
    if constexpr (type + 1 == std::tuple_size_v<SdfTypes> || std::is_same_v<T, std::tuple_element_t<type, SdfTypes>>)
        return type;
    else
        return FindDataType<T, type + 1>();
}

template <class T>
using Written = std::tuple_element_t<FindDataType<T>(), SdfTypes>;

template <class T>
std::string RowText(std::span<const T> row) {
    std::string text;
    for (const T sample : row) {
        const auto written = static_cast<Written<T>>(sample);
        text += std::isfinite(static_cast<double>(written)) ? Core::GetNumberText(written) : std::string(sdfMissing);
        text += ' ';
    }
    text.back() = '\n';
    return text;
}

class Writer {
public:
    Writer(const DataContainer& container, const Report& report) : m_content(container, report), m_report(report) {}

    void WriteTo(Core::BinaryOutputStream& target) {
        const Measured& measured = Choose();
        FindGeometry(measured);
        FindType(measured);
        const std::string header = MakeHeader();
        m_content.TakeText({sdfKey, sdfVersionKey});
        const auto trailer = m_content.TakeText({sdfKey, sdfTrailerKey});
        measured.WarnOfLostProperties(m_report, sHEIGHT_DATA);
        m_content.WarnOfLosses();

        Core::BufferedOutputStream stream(target, 64 * 1024);
        const auto write = [&stream](const std::string& text) { stream.Write(text.data(), text.size()); };
        write(header + "*\n");
        const auto width = static_cast<std::size_t>(measured.GetX().points);
        measured.VisitSamples([&]<class T>(std::span<const T> samples) {
            for (std::size_t begin = 0; begin < samples.size(); begin += width)
                write(RowText(samples.subspan(begin, width)));
        });
        write("*\n" + (trailer && !trailer->empty() ? *trailer + '\n' : "") + "*\n");
        stream.Flush();
    }

private:
    const Measured& Choose() {
        for (const Measured& measured : m_content.GetMeasured())
            if (measured.GetNumPoints() > 0) {
                m_content.Take(measured);
                return measured;
            }
        m_report.Refuse("content", "a surface or a profile with samples", "none");
    }

    void FindGeometry(const Measured& measured) {
        const Axis& x = measured.GetX();
        const Axis& y = measured.GetY();
        m_numbers["NumPoints"] = std::to_string(x.points);
        m_numbers["NumProfiles"] = std::to_string(y.points);
        m_numbers["Xscale"] = Core::GetNumberText(FindSpacing(measured, x));
        m_numbers["Yscale"] = measured.IsProfile() ? "0" : Core::GetNumberText(FindSpacing(measured, y));
        const auto scale = InMetres(measured.GetScale());
        if (!scale || !IsSdfScale(*scale))
            m_report.Refuse(measured.GetKey(), "samples whose scale is a length other than 0",
                            "the scale " + Quote(measured.GetScale().ToString()));
        m_numbers["Zscale"] = Core::GetNumberText(*scale);
        if (!measured.IsProfile() && y.points == 1)
            m_report.Loses(measured.GetKey(), "a surface of a single row is a profile to the format's readers",
                           ELoss::retyped);
    }

    double FindSpacing(const Measured& measured, const Axis& axis) const {
        const auto refuse = [&](const std::string& found) {
            m_report.Refuse(measured.GetKey(), "evenly spaced samples, their spacing a positive length", found);
        };
        if (!axis.IsKnown())
            refuse("no positions");
        if (!axis.IsEven())
            refuse("uneven positions");
        const auto metres = axis.InMetres();
        if (!metres || !IsSdfSpacing(metres->spacing, axis.points))
            refuse("the spacing " + Quote(UnitizedDouble(axis.spacing, axis.unit).ToString()));
        if (axis.first != 0)
            m_report.Loses(measured.GetKey(), "the format has no place for the position of the first sample, " +
                                                  UnitizedDouble(axis.first, axis.unit).ToString());
        return metres->spacing;
    }

    void FindType(const Measured& measured) {
        std::uint64_t numRounded = 0;
        const bool isVisited = measured.VisitSamples([&]<class T>(std::span<const T> samples) {
            m_numbers["DataType"] = std::to_string(FindDataType<T>());
            if constexpr (!std::is_same_v<T, Written<T>>)
                for (const T sample : samples) {
                    bool isRounded = false;
                    RoundTo<Written<T>>(sample, isRounded);
                    numRounded += isRounded;
                }
        });
        if (!isVisited)
            m_report.Refuse(measured.GetKey(), "real samples", "samples of " + measured.GetTypeName());
        if (numRounded > 0)
            m_report.Loses(
                measured.GetKey(),
                Core::FormatText("%1% of %2% samples are rounded to doubles", {numRounded, measured.GetNumPoints()}),
                ELoss::rounded);
    }

    std::string MakeHeader() {
        std::string header = "aISO-1.0\n";
        for (const SdfField& field : sdfFields)
            header += std::string(field.name) + " = " +
                      (field.IsText() ? TakeFieldText(field) : m_numbers.at(field.name)) + '\n';
        return header;
    }

    std::string TakeFieldText(const SdfField& field) {
        const auto text = m_content.TakeText({sdfKey, field.name});
        if (!text)
            return field.usual;
        if (field.isGood(*text) && text->find('\n') == text->npos && Core::TrimBlanks(*text) == *text)
            return *text;
        m_report.Loses(field.name, "the format has no place for " + Quote(*text) + "; " + field.usual + " is written");
        return field.usual;
    }

    Content m_content;
    const Report& m_report;
    std::map<std::string, std::string> m_numbers; ///< the fields that are no texts
};

} // namespace

void Sdf::Write(const DataContainer& container, const Report& report, Core::BinaryOutputStream& stream) {
    Writer(container, report).WriteTo(stream);
}

} // namespace Qor::Tivor::Measurements
