#include "HeightMap.h"

#include "ColourMap.h"
#include "Display.h"
#include "Font.h"
#include "SampleAxis.h"
#include "Samples.h"

#include <Tivor/SampleStatistics.h>

#include <algorithm>
#include <cmath>

namespace Qor::Tivor::Tool {

namespace {

constexpr int barWidth = 18;
constexpr int leastBarHeight = 120;
constexpr int checkerSize = 4;
constexpr Colour titleColour = 0x000000;

struct Size {
    int width;
    int height;
};

/// How much longer one unit is along y than along x; 1 where that has no meaning.
double CompareUnits(const SampleAxis& y, const SampleAxis& x) {
    const double ratio = y.GetUnit().GetScale() / x.GetUnit().GetScale();
    return y.GetUnit().IsDimensionallyEquivalent(x.GetUnit()) && std::isnormal(ratio) ? std::abs(ratio) : 1;
}

Size ChooseSize(const SampleAxis& y, const SampleAxis& x, int longSide) {
    const bool areKnown = y.IsKnown() && x.IsKnown();
    const double stepX = areKnown ? x.GetStep() : 1;
    const double stepY = areKnown ? y.GetStep() * CompareUnits(y, x) : 1;
    const double pixel = std::min(stepX, stepY);
    double width = static_cast<double>(x.GetCount()) * (stepX / pixel);
    double height = static_cast<double>(y.GetCount()) * (stepY / pixel);
    const double larger = std::max(width, height);
    const double factor = larger > longSide ? longSide / larger : std::floor(longSide / larger);
    const auto round = [&](double length) {
        return static_cast<int>(std::clamp(std::round(length * factor), 1.0, static_cast<double>(longSide)));
    };
    return {round(width), round(height)};
}

/// Where few samples lie so far away that the others would have hardly any colours, these get all of them.
void ChooseColours(ShownHeights& heights, const Samples& samples, std::size_t rows, std::size_t columns) {
    constexpr std::size_t most = 1 << 20;
    const std::size_t count = rows * columns;
    const std::size_t step = std::max<std::size_t>(1, count / most) | 1;
    std::vector<double> some;
    for (std::size_t i = 0; i < count; i += step)
        if (const double sample = static_cast<double>(samples.At(i / columns, i % columns)) * heights.factor;
            std::isfinite(sample))
            some.push_back(sample);
    const auto share = [&](double part) {
        const auto place = some.begin() + std::lround(part * static_cast<double>(some.size() - 1));
        std::nth_element(some.begin(), place, some.end());
        return *place;
    };
    if (some.size() < 1000)
        return;
    const double from = share(0.001);
    const double to = share(0.999);
    if (!(to > from) || to - from >= (heights.maximum - heights.minimum) / 10)
        return;
    heights.from = from;
    heights.to = to;
    heights.isClipped = true;
}

class HeightMap {
public:
    HeightMap(const Data2D& surface, int longSide)
        : m_y(SampleAxis::Of(surface, 1)), m_x(SampleAxis::Of(surface, 2)),
          m_samples(RequireSamples(surface)), m_map{margin, margin + 2 * lineHeight, 0, 0} {
        const SampleStatistics statistics = GetStatistics(surface);
        m_heights = ShowHeights(statistics.numPoints, statistics.numMissing, statistics.minimum, statistics.maximum,
                                surface.GetDataScale());
        if (m_heights.HasAny())
            ChooseColours(m_heights, m_samples, m_y.GetCount(), m_x.GetCount());
        const Size size = ChooseSize(m_y, m_x, longSide);
        m_map.width = size.width;
        m_map.height = size.height;
        m_ticks = MakeTicks(m_heights.from, m_heights.to, std::max(2, BarHeight() / 40));
        if (m_heights.HasAny() && m_ticks.empty())
            m_ticks = {{m_heights.from, DigitsText(m_heights.from)}};
    }

    Picture Draw(const std::string& title) const {
        const int width = std::max(m_map.width + 2 * margin + BarSpace(), 420);
        const int bodyEnd = m_map.y + (m_heights.HasAny() ? std::max(m_map.height, BarHeight()) : m_map.height) + 8;
        const auto caption = WrapTexts(Caption(), width - 2 * margin);
        Canvas canvas(width, bodyEnd + static_cast<int>(caption.size() + 1) * lineHeight + margin);
        canvas.Text(margin, margin, FitText(title, width - 2 * margin), titleColour);
        DrawMap(canvas);
        canvas.Frame(m_map, frameColour);
        if (m_heights.HasAny())
            DrawColourBar(canvas);
        DrawScaleBar(canvas, bodyEnd);
        for (std::size_t i = 0; i < caption.size(); ++i)
            canvas.Text(margin, bodyEnd + static_cast<int>(i + 1) * lineHeight + 4, caption[i]);
        return {std::move(canvas), m_map, m_heights};
    }

private:
    int BarHeight() const { return std::max(m_map.height, leastBarHeight); }

    int BarSpace() const {
        int widest = TextWidth(m_heights.unit.symbol);
        for (const Tick& tick : m_ticks)
            widest = std::max(widest, TextWidth(tick.label));
        return m_heights.HasAny() ? margin + barWidth + 8 + widest : 0;
    }

    double ShareOf(double height) const {
        const double span = m_heights.to - m_heights.from;
        return span > 0 ? (height - m_heights.from) / span : 0;
    }

    void DrawMap(Canvas& canvas) const {
        std::vector<std::size_t> columns;
        for (int x = 0; x < m_map.width; ++x)
            columns.push_back(m_x.FindIndex((x + 0.5) / m_map.width));
        for (int y = 0; y < m_map.height; ++y) {
            const std::size_t row = m_y.FindIndex((y + 0.5) / m_map.height);
            for (int x = 0; x < m_map.width; ++x) {
                const double height =
                    static_cast<double>(m_samples.At(row, columns[static_cast<std::size_t>(x)])) * m_heights.factor;
                const auto square = static_cast<std::size_t>((x / checkerSize + y / checkerSize) % 2);
                canvas.Set(m_map.x + x, m_map.y + y,
                           std::isfinite(height) ? MapColour(ShareOf(height)) : missingColours[square]);
            }
        }
    }

    void DrawColourBar(Canvas& canvas) const {
        const Box bar{m_map.x + m_map.width + margin, m_map.y, barWidth, BarHeight()};
        for (int y = 0; y < bar.height; ++y)
            canvas.Fill({bar.x, bar.y + bar.height - 1 - y, bar.width, 1}, MapColour((y + 0.5) / bar.height));
        canvas.Frame(bar, frameColour);
        const std::string& unit = m_heights.unit.symbol;
        canvas.Text(bar.x + (TextWidth(unit) < barWidth ? (barWidth - TextWidth(unit)) / 2 : 0), bar.y - lineHeight,
                    unit);
        for (const Tick& tick : m_ticks) {
            const int y =
                bar.y + bar.height - 1 - static_cast<int>(std::lround(ShareOf(tick.value) * (bar.height - 1)));
            canvas.Fill({bar.x + bar.width, y, 5, 1}, frameColour);
            canvas.Text(bar.x + bar.width + 8, y - glyphHeight / 2, tick.label);
        }
    }

    std::string LengthText(double length) const {
        if (!m_x.IsKnown())
            return DigitsText(length) + (length == 1 ? " point" : " points");
        const ShownUnit unit = ChooseUnit(m_x.GetUnit(), length);
        return unit.Show(length * unit.factor);
    }

    void DrawScaleBar(Canvas& canvas, int top) const {
        const double perPixel = m_x.GetLength() / m_map.width;
        const ShownUnit unit = m_x.IsKnown() ? ChooseUnit(m_x.GetUnit(), m_x.GetLength() / 3) : ShownUnit();
        const double length = RoundDown(m_x.GetLength() / 3 * unit.factor) / unit.factor;
        const int pixels = std::max(1, static_cast<int>(std::lround(length / perPixel)));
        const int y = top + glyphHeight / 2;
        canvas.Fill({m_map.x, y - 1, pixels, 3}, black);
        canvas.Fill({m_map.x, y - 4, 1, 9}, black);
        canvas.Fill({m_map.x + pixels - 1, y - 4, 1, 9}, black);
        canvas.Text(m_map.x + pixels + 8, top, LengthText(length));
    }

    std::vector<std::string> Caption() const {
        std::vector<std::string> texts{DescribeExtremes(m_heights)};
        if (m_heights.HasAny())
            texts.push_back(m_heights.isClipped
                                ? "colours from " + m_heights.unit.Show(m_heights.from) + " to " +
                                      m_heights.unit.Show(m_heights.to) + ", the percentiles 0.1 and 99.9"
                                : "colours from min to max");
        texts.push_back(std::to_string(m_y.GetCount()) + " rows x " + std::to_string(m_x.GetCount()) + " columns");
        texts.push_back(DescribeMissing(m_heights) + (m_heights.numMissing > 0 ? " (checkered)" : ""));
        return texts;
    }

    SampleAxis m_y;
    SampleAxis m_x;
    Samples m_samples;
    ShownHeights m_heights;
    Box m_map;
    std::vector<Tick> m_ticks;
};

} // namespace

Picture DrawHeightMap(const Data2D& surface, const std::string& title, int longSide) {
    return HeightMap(surface, longSide).Draw(title);
}

} // namespace Qor::Tivor::Tool
