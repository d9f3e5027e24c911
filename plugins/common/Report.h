#pragma once

#include <QorCore/Message.h>
#include <Tivor/DataFile.h>

#include <string>

namespace Qor::Tivor::Measurements {

/// A file that is not what its format asks for, and cannot be read.
QOR_DECLARE_ALERT(, MalformedMeasurement, DataFileError);
/// What is to be written has no form in the format.
QOR_DECLARE_ALERT(, UnwritableMeasurement, DataFileError);
/// Something in a file that its format does not allow, or that cannot be meant; the file is read in spite of it.
QOR_DECLARE_ALERT(, DeviatingMeasurement, Core::Warning);
/// Something that the format has no place for, and the file that is written will not hold.
QOR_DECLARE_ALERT(, LosingData, Core::Warning);

/// What becomes of that which a file will not hold.
enum class ELoss {
    dropped, ///< it is not written
    retyped, ///< readers take it for another type
    rounded  ///< numbers lose digits
};

/// Tells what is wrong with one file, always as a place, what was expected there and what was found. The place and the
/// file are also the variables "Place" and "File" of the alerts.
class Report {
public:
    /// `category`: the dotted category of the format's alerts.
    Report(std::string fileName, const char* category) : m_fileName(std::move(fileName)), m_category(category) {}

    /// Raises `MalformedMeasurement`.
    [[noreturn]] void Fail(const std::string& place, const std::string& expected, const std::string& found) const;
    /// Raises `UnwritableMeasurement`.
    [[noreturn]] void Refuse(const std::string& place, const std::string& expected, const std::string& found) const;
    /// Raises the warning `DeviatingMeasurement`.
    void Deviates(const std::string& place, const std::string& expected, const std::string& found) const;
    /// Raises the warning `LosingData`, whose variable "Kind" is the name of the kind.
    void Loses(const std::string& place, const std::string& what, ELoss kind = ELoss::dropped) const;

private:
    std::string m_fileName;
    const char* m_category;
};

/// A text as it is shown in a report: in quotes, cut where it is long.
std::string Quote(std::string_view text);

} // namespace Qor::Tivor::Measurements
