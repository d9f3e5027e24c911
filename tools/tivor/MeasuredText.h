#pragma once

#include <Tivor/BuiltInDataObjects.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

/// A number as the text has it, with the unit behind it.
struct Length {
    double number = 0;
    std::string unit;
};

/// What a text file holds that somebody measured. A surface: header lines "# Name: text", then one line for each row of
/// points. A profile: no header, and a line with position and height for each point. The numbers stand between tabs, or
/// where a line has none between blanks.
struct MeasuredText {
    bool isProfile = false;
    std::vector<std::pair<std::string, std::string>> header; ///< in the order of the lines
    Length width;
    Length height;
    /// Of a surface the heights, dimension 1: rows, along y; dimension 2: the points of a row, along x. Of a profile
    /// two columns, positions and heights.
    Qor::Tivor::RowMajorMatrix<double> numbers;
    /// What a one stands for in the place of the last digit that the text has of the first number of each line.
    std::vector<double> lastDigits;

    /// The text of that header line; raises `std::runtime_error` when there is none.
    const std::string& GetHeader(const std::string& name) const;
};

/// Reads such a file; calls back from time to time with how many lines were read. Raises `std::runtime_error`, whose
/// text says file, line, what was expected and what was found.
MeasuredText ReadMeasuredText(const std::string& fileName, const std::function<void(std::size_t lines)>& tell = {});
