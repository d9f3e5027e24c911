#pragma once

#include <Tivor/BuiltInDataObjects.h>

#include <string>
#include <utility>
#include <vector>

/// A number as the text has it, with the unit behind it.
struct Length {
    double number = 0;
    std::string unit;
};

/// A surface as a text file holds it: header lines "# Name: text", then one line for each row of points, the heights
/// separated by tabs.
struct SurfaceText {
    std::vector<std::pair<std::string, std::string>> header; ///< in the order of the lines
    Length width;
    Length height;
    /// Dimension 1: rows, along y; dimension 2: the points of a row, along x.
    Qor::Tivor::RowMajorMatrix<double> heights;

    /// The text of that header line; raises `std::runtime_error` when there is none.
    const std::string& GetHeader(const std::string& name) const;
};

/// Reads such a file. Raises `std::runtime_error`, whose text says file, line, what was expected and what was found.
SurfaceText ReadSurfaceText(const std::string& fileName);
