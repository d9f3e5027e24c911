#pragma once

#include "Elements.h"

#include <Tivor/Position1D.h>
#include <Tivor/Position2D.h>

namespace Qor::Tivor::Tool {

/// Whether such a position function is shown on one line: a fixed spacing is. Of arrays each position stands on a line
/// of its own, those along dimension 1 first.
template <class T>
inline constexpr bool isOneLine = std::is_same_v<T, FixedSpacing1D> || std::is_same_v<T, FixedSpacing2D>;

void PositionLines(const FixedSpacing1D& positions, const LineSink& print);
void PositionLines(const ArrayPosition1D& positions, const LineSink& print);
void PositionLines(const FixedSpacing2D& positions, const LineSink& print);
void PositionLines(const ArrayPosition2D& positions, const LineSink& print);

/// {spacing} or {positions, unit}; of two dimensions a list of two.
Json PositionJson(const FixedSpacing1D& positions);
Json PositionJson(const ArrayPosition1D& positions);
Json PositionJson(const FixedSpacing2D& positions);
Json PositionJson(const ArrayPosition2D& positions);

} // namespace Qor::Tivor::Tool
