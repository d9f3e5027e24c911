#pragma once

#include "Archive.h"
#include "Description.h"

#include <Tivor/BuiltInDataObjects.h>

#include <memory>
#include <string>
#include <vector>

namespace Qor::Tivor::Measurements {

/// The numbers of an X3P file, as far as it stores them.
struct Points {
    /// Of each point, in metres, along an axis that is absolute or whose indices a list names; empty along others. NaN
    /// where the file does not say.
    std::vector<double> x, y;
    /// For each layer a matrix of y by x, of the type in which z is stored, or, where points are missing and that has
    /// no NaN, of the floating point type that holds all of its numbers.
    std::vector<std::shared_ptr<DataObject>> layers;
    /// What the samples are multiplied by to be metres: an offset of the axis is in them.
    double scale = 1;
    bool isWidened = false;
};

/// `folder`: where the links of the document begin.
Points ReadPoints(const MainDocument& document, const Description& description, const ArchiveReader& archive,
                  const std::string& folder, const Report& report);

} // namespace Qor::Tivor::Measurements
