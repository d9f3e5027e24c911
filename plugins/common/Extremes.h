#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <span>

namespace Qor::Tivor::Measurements {

template <class T>
struct Extremes {
    using Limits = std::numeric_limits<T>;

    /// NaN changes nothing.
    void Add(T value) {
        lowest = value < lowest ? value : lowest;
        highest = value > highest ? value : highest;
    }

    T lowest = Limits::has_infinity ? Limits::infinity() : Limits::max();
    T highest = Limits::has_infinity ? -Limits::infinity() : Limits::lowest();
};

template <class T>
Extremes<T> FindExtremes(std::span<const T> samples) {
    static constexpr std::size_t numLanes = 32; // none waits for another, and compilers keep the loop over them
    Extremes<T> all;
    T lowest[numLanes];
    T highest[numLanes];
    std::fill_n(lowest, numLanes, all.lowest);
    std::fill_n(highest, numLanes, all.highest);
    std::size_t i = 0;
    for (; i + numLanes <= samples.size(); i += numLanes)
        for (std::size_t lane = 0; lane < numLanes; ++lane) {
            const T sample = samples[i + lane];
            lowest[lane] = sample < lowest[lane] ? sample : lowest[lane];
            highest[lane] = sample > highest[lane] ? sample : highest[lane];
        }
    all.lowest = *std::min_element(lowest, lowest + numLanes);
    all.highest = *std::max_element(highest, highest + numLanes);
    for (const T sample : samples.subspan(i))
        all.Add(sample);
    return all;
}

/// The lowest and the highest height that is finite.
template <class T>
Extremes<double> FindHeights(std::span<const T> samples, double scale) {
    const auto heightOf = [=](T sample) { return static_cast<double>(sample) * scale; };
    const Extremes<T> extremes = FindExtremes(samples);
    Extremes<double> heights;
    heights.Add(heightOf(extremes.lowest));
    heights.Add(heightOf(extremes.highest));
    if (extremes.lowest <= extremes.highest && std::isfinite(heights.lowest) && std::isfinite(heights.highest))
        return heights;
    heights = {};
    for (const T sample : samples)
        if (const double height = heightOf(sample); std::isfinite(height))
            heights.Add(height);
    return heights;
}

} // namespace Qor::Tivor::Measurements
