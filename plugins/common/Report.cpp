#include "Report.h"

#include <algorithm>

namespace Qor::Tivor::Measurements {

MalformedMeasurement::~MalformedMeasurement() = default;
UnwritableMeasurement::~UnwritableMeasurement() = default;
DeviatingMeasurement::~DeviatingMeasurement() = default;
LosingData::~LosingData() = default;

namespace {

template <class Alert>
Alert Tell(const std::string& place, const std::string& text, const std::string& fileName = {}) {
    Alert alert(place + ": " + text);
    alert.AddVariable("Place", place);
    if (!fileName.empty()) // errors get it from the data file
        alert.AddVariable("File", fileName);
    return alert;
}

const char* NameOf(ELoss kind) {
    switch (kind) {
    case ELoss::dropped:
        return "dropped";
    case ELoss::retyped:
        return "retyped";
    case ELoss::rounded:
        return "rounded";
    }
    return "";
}

std::string Contrast(const std::string& expected, const std::string& found) {
    return "expected " + expected + ", found " + found;
}

} // namespace

void Report::Fail(const std::string& place, const std::string& expected, const std::string& found) const {
    Core::Error::RaiseError(Tell<MalformedMeasurement>(place, Contrast(expected, found)),
                            QOR_CODE_CONTEXT("MeasurementFile"), m_category);
}

void Report::Refuse(const std::string& place, const std::string& expected, const std::string& found) const {
    Core::Error::RaiseError(Tell<UnwritableMeasurement>(place, Contrast(expected, found)),
                            QOR_CODE_CONTEXT("MeasurementFile"), m_category);
}

void Report::Deviates(const std::string& place, const std::string& expected, const std::string& found) const {
    Core::Warning::RaiseWarning(Tell<DeviatingMeasurement>(place, Contrast(expected, found), m_fileName),
                                QOR_CODE_CONTEXT("MeasurementFile"), m_category);
}

void Report::Loses(const std::string& place, const std::string& what, ELoss kind) const {
    LosingData warning = Tell<LosingData>(place, what, m_fileName);
    warning.AddVariable("Kind", NameOf(kind));
    Core::Warning::RaiseWarning(std::move(warning), QOR_CODE_CONTEXT("MeasurementFile"), m_category);
}

std::string Quote(std::string_view text) {
    static constexpr std::size_t longest = 60;
    std::string shown(text.substr(0, longest));
    // No byte of a character alone, and nothing that a terminal would obey.
    while (text.size() > longest && !shown.empty() && (shown.back() & 0xC0) == 0x80)
        shown.pop_back();
    std::replace_if(
        shown.begin(), shown.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
    return '"' + shown + (text.size() > longest ? "...\"" : "\"");
}

} // namespace Qor::Tivor::Measurements
