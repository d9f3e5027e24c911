#include "LinePlot.h"

#include "Display.h"
#include "Font.h"
#include "SampleAxis.h"
#include "Samples.h"

#include <algorithm>
#include <cmath>

namespace Qor::Tivor::Tool {

namespace {

constexpr Colour gridColour = 0xDDDDDD;
constexpr Colour lineColour = 0x1F4E9C;

struct Series {
    double At(std::size_t index) const { return static_cast<double>(samples.At(row, index)); }

    SampleAxis axis;
    Samples samples;
    std::size_t row; ///< of a surface
    UnitizedDouble scale;
};

ShownHeights HeightsOf(const Series& series) {
    std::uint64_t numMissing = 0;
    double minimum = std::numeric_limits<double>::infinity();
    double maximum = -minimum;
    for (std::size_t i = 0; i < series.axis.GetCount(); ++i) {
        const double sample = series.At(i);
        if (!std::isfinite(sample)) {
            ++numMissing;
            continue;
        }
        minimum = std::min(minimum, sample);
        maximum = std::max(maximum, sample);
    }
    return ShowHeights(series.axis.GetCount(), numMissing, minimum, maximum, series.scale);
}

/// An axis of a plot: numbers from one end to the other, and what is written beside it.
struct Scale {
    double from = 0;
    double to = 1;
    std::vector<Tick> ticks;

    void Choose(double least, double greatest, int mostTicks) {
        const double room = greatest > least ? 0 : greatest == 0 ? 1 : std::abs(greatest) / 2;
        from = least - room;
        to = greatest + room;
        ticks = MakeTicks(from, to, mostTicks);
    }
    int Place(double value, int pixels) const {
        return static_cast<int>(std::lround((value - from) / (to - from) * (pixels - 1)));
    }
    int GetWidest() const {
        int widest = 0;
        for (const Tick& tick : ticks)
            widest = std::max(widest, TextWidth(tick.label));
        return widest;
    }
};

/// Draws a line through many points: those in one column of pixels as one stroke.
class Pen {
public:
    explicit Pen(Canvas& canvas) : m_canvas(canvas) {}

    void Go(int x, int y) {
        if (m_isDown && x == m_x) {
            m_top = std::min(m_top, y);
            m_bottom = std::max(m_bottom, y);
        } else {
            const bool wasDown = m_isDown;
            const int fromX = m_x;
            const int fromY = m_y;
            Lift();
            if (wasDown)
                m_canvas.Line(fromX, fromY, x, y, lineColour);
            m_top = m_bottom = y;
        }
        m_isDown = true;
        m_x = x;
        m_y = y;
    }
    /// Ends the stroke.
    void Lift() {
        if (m_isDown)
            m_canvas.Line(m_x, m_top, m_x, m_bottom, lineColour);
        m_isDown = false;
    }

private:
    Canvas& m_canvas;
    bool m_isDown = false;
    int m_x = 0;
    int m_y = 0;
    int m_top = 0;
    int m_bottom = 0;
};

class LinePlot {
public:
    LinePlot(const Series& series, int width) : m_series(series), m_heights(HeightsOf(series)), m_width(width) {
        const int height = std::max(width * 2 / 5, 160);
        const ShownHeights& shown = m_heights;
        m_vertical.Choose(shown.HasAny() ? shown.minimum : 0, shown.HasAny() ? shown.maximum : 0, height / 40);
        ChoosePositions();
        const int left = margin + m_vertical.GetWidest() + 8;
        m_plot = {left, margin + 2 * lineHeight + 10, std::max(width - left - 3 * margin, 50), height};
        m_horizontal.Choose(m_least, m_greatest, std::max(2, m_plot.width / 90));
    }

    Picture Draw(const std::string& title) const {
        const auto caption = WrapTexts({DescribeExtremes(m_heights), Count(m_heights.numPoints, "point", "points"),
                                        DescribeMissing(m_heights) + (m_heights.numMissing > 0 ? " (gaps)" : "")},
                                       m_width - 2 * margin);
        const int below = m_plot.y + m_plot.height;
        Canvas canvas(m_width, below + 8 + static_cast<int>(caption.size() + 2) * lineHeight + margin);
        canvas.Text(margin, margin, FitText(title, m_width - 2 * margin));
        DrawAxes(canvas);
        if (m_heights.HasAny())
            DrawLine(canvas);
        for (std::size_t i = 0; i < caption.size(); ++i)
            canvas.Text(margin, below + 12 + static_cast<int>(i + 2) * lineHeight, caption[i]);
        return {std::move(canvas), m_plot, m_heights};
    }

private:
    void ChoosePositions() {
        m_least = m_greatest = m_series.axis.GetPosition(0);
        for (std::size_t i = 0; i < m_series.axis.GetCount(); ++i) {
            m_least = std::min(m_least, m_series.axis.GetPosition(i));
            m_greatest = std::max(m_greatest, m_series.axis.GetPosition(i));
        }
        m_positionUnit = ChooseUnit(m_series.axis.GetUnit(), std::max(std::abs(m_least), std::abs(m_greatest)));
        m_least *= m_positionUnit.factor;
        m_greatest *= m_positionUnit.factor;
    }

    int PlaceX(double position) const { return m_plot.x + m_horizontal.Place(position, m_plot.width); }
    int PlaceY(double height) const { return m_plot.y + m_plot.height - 1 - m_vertical.Place(height, m_plot.height); }

    void DrawAxes(Canvas& canvas) const {
        const int bottom = m_plot.y + m_plot.height;
        for (const Tick& tick : m_vertical.ticks) {
            const int y = PlaceY(tick.value);
            canvas.Fill({m_plot.x, y, m_plot.width, 1}, gridColour);
            canvas.Fill({m_plot.x - 5, y, 5, 1}, frameColour);
            canvas.Text(m_plot.x - 8 - TextWidth(tick.label), y - glyphHeight / 2, tick.label);
        }
        for (const Tick& tick : m_horizontal.ticks) {
            const int x = PlaceX(tick.value);
            canvas.Fill({x, m_plot.y, 1, m_plot.height}, gridColour);
            canvas.Fill({x, bottom, 1, 5}, frameColour);
            canvas.Text(x - TextWidth(tick.label) / 2, bottom + 8, tick.label);
        }
        canvas.Frame(m_plot, frameColour);
        canvas.Text(margin, margin + lineHeight + 6, "height" + m_heights.unit.InBrackets());
        const std::string below = m_series.axis.IsKnown() ? "position" + m_positionUnit.InBrackets() : "index";
        canvas.Text(m_plot.x + (m_plot.width - TextWidth(below)) / 2, bottom + 8 + lineHeight, below);
    }

    void DrawLine(Canvas& canvas) const {
        Pen pen(canvas);
        for (std::size_t i = 0; i < m_series.axis.GetCount(); ++i) {
            const double height = m_series.At(i) * m_heights.factor;
            if (std::isfinite(height))
                pen.Go(PlaceX(m_series.axis.GetPosition(i) * m_positionUnit.factor), PlaceY(height));
            else
                pen.Lift();
        }
        pen.Lift();
    }

    const Series& m_series;
    ShownHeights m_heights;
    int m_width;
    Box m_plot;
    double m_least = 0;
    double m_greatest = 0;
    ShownUnit m_positionUnit;
    Scale m_vertical;
    Scale m_horizontal;
};

} // namespace

Picture DrawProfile(const Data1D& profile, const std::string& title, int width) {
    const Series series{SampleAxis::Of(profile), RequireSamples(profile), 0, profile.GetDataScale()};
    return LinePlot(series, width).Draw(title);
}

Picture DrawMiddleRow(const Data2D& surface, const std::string& title, int width) {
    const std::size_t row = surface.GetNumDimension1Points() / 2;
    const Series series{SampleAxis::Of(surface, 2), RequireSamples(surface), row, surface.GetDataScale()};
    return LinePlot(series, width).Draw(title);
}

} // namespace Qor::Tivor::Tool
