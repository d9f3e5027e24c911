#pragma once

#include "MeasuredText.h"

#include <Tivor/DataContainer.h>

#include <functional>
#include <string>

namespace Qor::Tivor::Tool {

/// Under which key a text becomes a measured array: Surface, a `Data2D`, or Profile, a `Data1D`.
const char* GetMeasuredKey(const MeasuredText& text);

/// Puts what the text holds into an empty container: the measured array; Comments with Source, what the header says,
/// and Review. The samples are the numbers of the text; units that are not known count as those of plain numbers.
void PutImported(DataContainer& container, const MeasuredText& text);
/// The units of that text that are not known.
std::vector<std::string> FindUnknownUnits(const MeasuredText& text);

/// Where a container is not what `PutImported` makes of the text, sample by sample, bit by bit; what stands in
/// Comments/Review is not compared. Calls back for each deviation.
void CompareImported(DataContainer& container, const MeasuredText& text,
                     const std::function<void(const std::string& deviation)>& tell);

} // namespace Qor::Tivor::Tool
