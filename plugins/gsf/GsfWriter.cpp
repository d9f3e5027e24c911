#include "../common/Text.h"
#include "Gsf.h"

#include <Tivor/DataKinds.h>

namespace Qor::Tivor::Measurements {

namespace {

/// The width of all pixels that gives exactly these positions when it is divided by the points; empty when none does.
std::optional<double> WidthOf(double first, double spacing, std::uint64_t points) {
    const auto numPoints = static_cast<double>(points);
    std::vector<double> positions{first, first + spacing};
    if (first != 0) // else a spacing is read again, and it tells all of them
        for (std::uint64_t i = 2; i < points; ++i)
            positions.push_back(first + static_cast<double>(i) * spacing);
    return FindIncrement(positions, numPoints);
}

class Writer {
public:
    Writer(const DataContainer& container, const Report& report) : m_content(container, report), m_report(report) {}

    void WriteTo(Core::BinaryOutputStream& stream) {
        const Measured& surface = ChooseSurface();
        const std::string header = MakeHeader(surface);
        const std::vector<float> samples = RoundSamples(surface);
        m_content.WarnOfLosses();
        stream.Write(header.data(), header.size());
        stream.Write(samples.data(), samples.size() * sizeof(float));
    }

private:
    const Measured& ChooseSurface() {
        for (const Measured& measured : m_content.GetMeasured())
            if (!measured.IsProfile() && measured.GetNumPoints() > 0) {
                m_content.Take(measured);
                return measured;
            }
        m_report.Refuse("content", "a surface with samples", "none");
    }

    void AddLine(const std::string& name, const std::string& value) {
        if (name.find_first_of(std::string("=\n\0", 3)) != std::string::npos ||
            value.find_first_of(std::string("\n\0", 2)) != std::string::npos)
            m_report.Refuse(name, "a field on one line", Quote(value));
        m_header += name + " = " + value + '\n';
    }

    void AddAxes(const Measured& surface) {
        const Axis& x = surface.GetX();
        const Axis& y = surface.GetY();
        for (const Axis* axis : {&x, &y})
            if (axis->IsKnown() && !axis->IsEven())
                m_report.Refuse(surface.GetKey(), "evenly spaced samples, which are all that the format can hold",
                                "uneven positions");
        AddLine("XRes", std::to_string(x.points));
        AddLine("YRes", std::to_string(y.points));
        if (!x.IsKnown() || !y.IsKnown())
            return m_report.Loses(surface.GetKey(),
                                  "its positions are not known, and the format's readers take 1 for the width");
        if (!x.unit->IsDimensionallyEquivalent(*y.unit))
            m_report.Refuse(surface.GetKey(), "the same kind of unit along both dimensions",
                            Quote(x.unit->ToString()) + " and " + Quote(y.unit->ToString()));
        m_lateral = BaseUnitOf(x.unit);
        AddWidth("XReal", x, surface);
        AddWidth("YReal", y, surface);
        if (x.first != 0)
            AddLine("XOffset", Core::GetNumberText(InBase(x.first, x)));
        if (y.first != 0)
            AddLine("YOffset", Core::GetNumberText(InBase(y.first, y)));
        if (!m_lateral->GetSymbol().empty())
            AddLine("XYUnits", m_lateral->GetSymbol());
    }

    /// A single position tells no width.
    void AddWidth(const std::string& name, const Axis& axis, const Measured& surface) {
        if (axis.points == 1 && axis.spacing == 0)
            return;
        const double spacing = InBase(axis.spacing, axis);
        const auto exact = WidthOf(InBase(axis.first, axis), spacing, axis.points);
        const double width = exact.value_or(spacing * static_cast<double>(axis.points));
        if (!(width > 0 && std::isfinite(width)))
            m_report.Refuse(surface.GetKey(), "positions that increase by a spacing",
                            "the spacing " + Quote(UnitizedDouble(axis.spacing, axis.unit).ToString()));
        if (!exact)
            m_report.Loses(surface.GetKey() + '/' + name, "the last digit of its spacing, which no width gives exactly",
                           ELoss::rounded);
        AddLine(name, Core::GetNumberText(width));
    }

    double InBase(double number, const Axis& axis) const {
        return UnitizedDouble(number, axis.unit).ConvertTo(m_lateral).GetValue();
    }

    std::string MakeHeader(const Measured& surface) {
        m_header = gsfMagic;
        AddAxes(surface);
        m_vertical = BaseUnitOf(surface.GetScale().GetUnits());
        if (!m_vertical->GetSymbol().empty())
            AddLine("ZUnits", m_vertical->GetSymbol());
        if (const auto title = m_content.TakeText({sDATASET_NAME}))
            AddLine("Title", *title);
        for (const auto& [name, value] : m_content.TakeTexts({gsfKey}))
            AddLine(name, value);
        m_header.append(gsfAlignment - m_header.size() % gsfAlignment, '\0');
        return m_header;
    }

    std::vector<float> RoundSamples(const Measured& surface) {
        const double scale = surface.GetScale().ConvertTo(m_vertical).GetValue();
        std::vector<float> rounded;
        rounded.reserve(static_cast<std::size_t>(surface.GetNumPoints()));
        std::uint64_t numRounded = 0;
        const bool isVisited = surface.VisitSamples([&]<class T>(std::span<const T> samples) {
            for (const T sample : samples) {
                rounded.push_back(Scale(sample, scale, numRounded));
                if (std::isinf(rounded.back()))
                    m_report.Refuse(surface.GetKey(), "samples that 32-bit floats can hold",
                                    Core::GetNumberText(sample) + " times " + Core::GetNumberText(scale));
            }
        });
        if (!isVisited)
            m_report.Refuse(surface.GetKey(), "real samples", "samples of " + surface.GetTypeName());
        if (numRounded > 0)
            m_report.Loses(surface.GetKey(),
                           Core::FormatText("%1% of %2% samples are rounded to 32-bit floats in %3%",
                                            {numRounded, rounded.size(), Quote(m_vertical->ToString())}),
                           ELoss::rounded);
        surface.WarnOfLostProperties(m_report, InMetres(surface.GetScale()) ? sHEIGHT_DATA : sUNKNOWN_DATA);
        return rounded;
    }

    template <class T>
    static float Scale(T sample, double scale, std::uint64_t& numRounded) {
        static constexpr float missing = std::numeric_limits<float>::quiet_NaN();
        if (!std::isfinite(static_cast<double>(sample)))
            return missing;
        bool isInexact = false, isRounded = false;
        const double wide = RoundTo<double>(sample, isInexact);
        const float rounded = RoundTo<float>(wide * scale, isRounded);
        numRounded += isInexact || isRounded;
        return rounded;
    }

    Content m_content;
    const Report& m_report;
    std::string m_header;
    Unit m_lateral;
    Unit m_vertical;
};

} // namespace

void Gsf::Write(const DataContainer& container, const Report& report, Core::BinaryOutputStream& stream) {
    Writer(container, report).WriteTo(stream);
}

} // namespace Qor::Tivor::Measurements
