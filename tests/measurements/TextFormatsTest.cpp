// GSF and SDF files that are not what their formats ask for: told with their places, or refused.
#include <Tivor/DataFile.h>

#include <gtest/gtest.h>

#include <Alerts.h>
#include <cstring>

namespace Qor::Tivor::Testing {

namespace {

using namespace Core::Testing;
using Texts = std::vector<std::string>;

/// What is told when a file of that content is opened: the warnings, or the error.
Texts Read(const std::string& type, const std::string& text) {
    const Warnings warnings;
    try {
        DataFile::OpenMemory(std::as_bytes(std::span(text)), DataFile::eREAD_ONLY, type, nullptr);
    } catch (const Core::Error& error) {
        return {"error: " + error.GetText()};
    }
    Texts texts;
    for (const Core::Warning& warning : warnings.seen)
        texts.push_back(warning.GetText());
    return texts;
}

std::string Gsf(const std::string& fields, const std::string& padding = "", std::vector<float> samples = {1, 2}) {
    std::string text = "Gwyddion Simple Field 1.0\n" + fields;
    text.append(4 - text.size() % 4, '\0');
    text += padding;
    return text.append(reinterpret_cast<const char*>(samples.data()), samples.size() * sizeof(float));
}

const std::string metres = "XReal = 1e-6\nYReal=1e-6\nXYUnits=m\n";
const std::string plain = "XRes = 2\nYRes = 1\n" + metres;

std::string Sdf(const std::string& from = "", const std::string& to = "") {
    std::string text = "aISO-1.0\nManufacID = M\nCreateDate = 010220241530\nModDate = 010220241530\nNumPoints = 3\n"
                       "NumProfiles = 2\nXscale = 1e-6\nYscale = 1e-6\nZscale = 1e-9\nZresolution = 1e-12\n"
                       "Compression = 0\nDataType = 5\nCheckType = 0\n*\n1 2 3\n4 BAD 6\n*\ntrailer\n*\n";
    return from.empty() ? text : text.replace(text.find(from), from.size(), to);
}

} // namespace

TEST(TextFormats, TellEachDeviationOfGsfByItsPlace) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    const std::pair<std::string, Texts> rows[] = {
        {Gsf(plain), {}},
        {Gsf(plain).replace(24, 1, "1"),
         {"error: line 1: expected Gwyddion Simple Field 1.0, found \"Gwyddion Simple Field 1.1 XRes = 2 YRes = 1 "
          "XReal = "
          "1e-6 YRe...\""}},
        {Gsf("YRes = 1\n"), {"error: header: expected a line XRes = a number of points, found none"}},
        {Gsf("XRes = 0\n"), {"error: XRes, line 2: expected a number of points, found \"0\""}},
        {Gsf("XRes = 2\nYRes = 1\nXReal = -1\n"), {"error: XReal, line 4: expected a positive number, found \"-1\""}},
        {Gsf("XRes = 4000000000\nYRes = 4000000000\n"),
         {"error: samples: expected 4000000000 x 4000000000 of 4 bytes each, found 8 bytes"}},
        {Gsf(plain + "XRes = 3\n"),
         {"line 7: expected each field once, found \"XRes\" again, after line 2; the first one counts"}},
        {Gsf(plain + "a line\n"), {"line 7: expected a line Name = value, found \"a line\", which is passed over"}},
        {Gsf(plain + "ZUnits = furlong\n"),
         {"ZUnits, line 7: expected a unit, found \"furlong\", which is not known; its numbers stay plain numbers"}},
        {Gsf(plain, "", {1, infinity}),
         {"samples: expected NaN for missing points, found 1 infinities, which become NaN"}},
        {Gsf(plain, "", {1, 2, 3}),
         {"end: expected the end of the file behind the samples, found 4 bytes, which are passed over"}},
        {"Gwyddion Simple Field 1.0\n" + plain,
         {"error: header: expected a zero byte within 1048576 bytes, found none"}},
    };
    for (const auto& [text, told] : rows)
        EXPECT_EQ(Read("Gwyddion Simple Field", text), told);
}

TEST(TextFormats, TellEachDeviationOfSdfByItsPlace) {
    const std::pair<std::string, Texts> rows[] = {
        {Sdf(), {}},
        {Sdf("aISO", "bISO"),
         {"error: line 1: expected a version, as aISO-1.0, found \"bISO-1.0\"; it is a surface data file in binary "
          "form; only "
          "those in ASCII are read"}},
        {Sdf("NumPoints = 3\n", ""), {"error: header: expected a line NumPoints = a number of points, found none"}},
        {Sdf("NumPoints = 3", "NumPoints = 4000000000"),
         {"error: samples: expected 4000000000 x 2, found 26 bytes, too few for them"}},
        {Sdf("Zscale = 1e-9", "Zscale = 0"),
         {"error: line 9: expected a line Zscale = a number other than 0, found \"0\""}},
        {Sdf("DataType = 5", "DataType = 9"),
         {"line 12: expected a line DataType = a number from 0 to 7, found \"9\"; the samples are read as doubles"}},
        {Sdf("Compression = 0", "Compression = 1"), {"line 11: expected a line Compression = 0, found \"1\""}},
        {Sdf("010220241530", "1.2.2024"),
         {"line 3: expected a line CreateDate = ddmmyyyyhhmm, 12 digits, found \"1.2.2024\""}},
        {Sdf("CheckType", "Checks"),
         {"line 13: expected a field of the header, found \"Checks = 0\", which is passed over",
          "header: expected a line CheckType = 0, found none"}},
        {Sdf("1 2 3", "1 2.5 3"),
         {"line 15: expected samples of DataType 5, found 1 samples that are no such numbers; all are read as "
          "doubles"}},
        {Sdf("1 2 3", "1 two 3"), {"error: line 15: expected a sample, found \"two\""}},
        {Sdf("1 2 3", "1 3"), {"error: line 17: expected 3 x 2 samples, found the end of the samples after 5"}},
        {Sdf("1 2 3", "1 2 3 9"), {"line 16: expected 3 x 2 samples, found 1 more, which are passed over"}},
        {Sdf("6\n*\ntrailer\n*\n", "6\n"),
         {"line 16: expected a line * behind the samples, found the end of the file"}},
    };
    for (const auto& [text, told] : rows)
        EXPECT_EQ(Read("Surface Data File", text), told);
}

} // namespace Qor::Tivor::Testing
