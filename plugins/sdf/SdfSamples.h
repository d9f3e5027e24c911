#pragma once

#include "../common/Text.h"

namespace Qor::Tivor::Measurements {

/// What is left of a text, word by word.
class SdfWords {
public:
    explicit SdfWords(const Lines& lines) : m_lines(lines) {}

    /// Empty at the end of the text.
    std::string_view Next();
    /// Of the word that came last.
    std::string GetPlace() const { return m_lines.GetPlace(); }
    /// The text behind the word that came last.
    std::string_view GetRest() const;

private:
    Lines m_lines;
    std::string_view m_line; ///< what is left of the line
};

/// How many samples the header announces, and their DataType.
struct SdfGrid {
    std::uint64_t numX, numY;
    std::size_t dataType;
};

/// The samples that the words begin with, as an array for a single row, else as a matrix: of the element type of the
/// DataType where that holds all of them. Takes the asterisk behind them too.
std::shared_ptr<DataObject> ReadSdfSamples(SdfWords& words, const SdfGrid& grid, const Report& report);

} // namespace Qor::Tivor::Measurements
