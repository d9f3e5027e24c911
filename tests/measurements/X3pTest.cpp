// X3P files that are not what the standard asks for: each deviation is told with its place, and what cannot be read is
// refused; and what the writer does with content that X3P has no place for.
#include <QorCore/MemoryStreams.h>
#include <QorCore/System.h>
#include <Tivor/MatrixView.h>

#include <gtest/gtest.h>

#include <Alerts.h>
#include <common/Measured.h>
#include <x3p/Archive.h>
#include <x3p/Checksum.h>
#include <x3p/X3p.h>

namespace Qor::Tivor::Testing {

namespace {

using namespace Core::Testing;
using namespace Measurements;
using Texts = std::vector<std::string>;
using Entries = std::vector<std::pair<std::string, std::string>>;

const Report report("test.x3p", X3p::category);

const std::string good = R"(<p:ISO5436_2 xmlns:p="http://www.opengps.eu/2008/ISO5436_2">
<Record1><Revision>ISO5436 - 2000</Revision><FeatureType>SUR</FeatureType><Axes>
<CX><AxisType>I</AxisType><DataType>D</DataType><Increment>1e-6</Increment><Offset>0</Offset></CX>
<CY><AxisType>I</AxisType><DataType>D</DataType><Increment>2e-6</Increment><Offset>0</Offset></CY>
<CZ><AxisType>A</AxisType><DataType>I</DataType><Increment>1e-9</Increment><Offset>0</Offset></CZ>
</Axes></Record1>
<Record2><Date>2009-06-09T13:40:58.25+01:00</Date><Instrument><Manufacturer>M</Manufacturer><Model>N</Model><Serial>1</Serial>
<Version>2</Version></Instrument><CalibrationDate>2009-06-09T13:40:58Z</CalibrationDate>
<ProbingSystem><Type>Contacting</Type><Identification/></ProbingSystem></Record2>
<Record3><MatrixDimension><SizeX>3</SizeX><SizeY>2</SizeY><SizeZ>1</SizeZ></MatrixDimension>
<DataList><Datum>1</Datum><Datum>2</Datum><Datum>+3</Datum><Datum>-4</Datum><Datum>5</Datum><Datum>6</Datum></DataList>
</Record3><Record4><ChecksumFile>md5checksum.hex</ChecksumFile></Record4></p:ISO5436_2>
)";
const std::string list = "<DataList><Datum>1</Datum><Datum>2</Datum><Datum>+3</Datum><Datum>-4</Datum><Datum>5</Datum>"
                         "<Datum>6</Datum></DataList>";
const std::string link = "<DataLink><PointDataLink>bindata/data.bin</PointDataLink><MD5ChecksumPointData>"
                         "f6050cdac59263109f2a853227bed520</MD5ChecksumPointData></DataLink>";

std::string Pack(const Entries& entries) {
    ArchiveWriter writer(report);
    for (const auto& [name, text] : entries)
        writer.Add(name, std::as_bytes(std::span(text)));
    Core::MemoryOutputStream stream;
    writer.WriteTo(stream);
    return {reinterpret_cast<const char*>(stream.GetBytes().data()), stream.GetSize()};
}

Entries Document(const std::string& xml, Entries others = {}) {
    others.insert(others.begin(),
                  {{"main.xml", xml}, {"md5checksum.hex", ChecksumOf(xml.data(), xml.size()) + " *main.xml\n"}});
    return others;
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    const std::size_t place = text.find(from);
    EXPECT_NE(place, std::string::npos) << from;
    return text.replace(place, from.size(), to);
}

/// Good content, but for one edit.
Entries Edited(const std::string& from, const std::string& to, Entries others = {}) {
    return Document(Replaced(good, from, to), std::move(others));
}

DataContainer Read(const Entries& entries) {
    const std::string bytes = Pack(entries);
    Core::MemoryInputStream stream(bytes.data(), bytes.size());
    DataContainer content;
    X3p::Read(stream, report, content);
    return content;
}

/// The texts of the warnings, or that of the error, without class and category.
Texts TellOf(const std::function<void()>& work) {
    const Warnings warnings;
    Texts texts;
    try {
        work();
    } catch (const Core::Error& error) {
        return {"error: " + error.GetText()};
    }
    for (const Core::Warning& warning : warnings.seen)
        texts.push_back(warning.GetText());
    return texts;
}

struct Row {
    Entries entries;
    Texts told;
};

const std::vector<Row>& GetRows() {
    static const std::string sixShorts("\1\0\2\0\3\0\4\0\5\0\6\0", 12);
    static const Entries points{{"bindata/data.bin", sixShorts}};
    static const auto binary = [](const std::string& from, const std::string& to, const Entries& others) {
        return Document(Replaced(Replaced(good, list, link), from, to), others);
    };
    static const std::vector<Row> rows{
        {Document(good), {}},
        {{{"other.xml", good}}, {"error: container: expected an entry main.xml, found none"}},
        {{{"a/main.xml", good}, {"__MACOSX/a/._main.xml", "x"}, {"a/.DS_Store", ""}},
         {"a/main.xml: expected main.xml at the top of the container, found it below the folder \"a/\"",
          "container: expected an entry md5checksum.hex, found none",
          "__MACOSX/a/._main.xml: expected entries of the measurement, found one that an operating system left, which "
          "is dropped",
          "a/.DS_Store: expected entries of the measurement, found one that an operating system left, which is "
          "dropped"}},
        {{{"main.xml", good}, {"md5checksum.hex", "0123"}},
         {"md5checksum.hex: expected the checksum of main.xml, " + ChecksumOf(good.data(), good.size()) +
          ", found \"0123\""}},
        {{{"main.xml", good}, {"md5checksum.hex", ChecksumOf(good.data(), good.size())}},
         {"md5checksum.hex: expected the name main.xml behind the checksum, found none"}},
        {Document("\xEF\xBB\xBF" + good), {"main.xml, byte 0: expected no byte order mark, found that of UTF-8"}},
        {Edited("/Record4>", "/Record5>"),
         {"error: main.xml: expected a well-formed document, found line 12, column 66: mismatched tag"}},
        {Edited("2008/ISO5436_2\"", "2010\""),
         {"main.xml, line 1, ISO5436_2: expected a root element ISO5436_2 of http://www.opengps.eu/2008/ISO5436_2, "
          "found "
          "\"p:ISO5436_2\" of another"}},
        {Edited(">SUR<", ">XYZ<"),
         {"main.xml, line 2, FeatureType: expected FeatureType SUR or PRF for a matrix of points, found \"XYZ\""}},
        {Edited(">SUR<", ">PRF<"),
         {"main.xml, line 10, Record3: expected a SizeY of 1 for a profile, found 2, as of a surface"}},
        {Edited("<MatrixDimension><SizeX>3</SizeX><SizeY>2</SizeY><SizeZ>1</SizeZ></MatrixDimension>",
                "<ListDimension>6</ListDimension>"),
         {"main.xml, line 2, FeatureType: expected FeatureType PCL for a list of points, found \"SUR\""}},
        {Edited("<AxisType>A", "<AxisType>I"), {"error: main.xml, line 5, CZ: expected AxisType A, found \"I\""}},
        {Edited("<DataType>I", "<DataType>Q"),
         {"error: main.xml, line 5, CZ: expected DataType I, L, F or D, found \"Q\""}},
        {Edited("1e-6</Increment><Offset>0</Offset>", "0</Increment><Offset/>"),
         {"error: main.xml, line 3, CX: expected an Increment that is not 0, found 0"}},
        {Edited("1e-6<", "1e-6x<"), {"error: main.xml, line 3, Increment: expected a number, found \"1e-6x\""}},
        {Edited("<Offset>0<", "<Offset><"),
         {"main.xml, line 3, Offset: expected a number, found none, as if the element were not there"}},
        {Edited("<Increment>1e-9</Increment>", ""),
         {"main.xml, line 5, CZ: expected an Increment beside the Offset, found none, which counts as 1",
          "Surface: expected lowest and highest point 0 m to 0.1 m apart, found 10 m, which is implausible; the unit "
          "may be "
          "another one"}},
        {Edited("1e-6<", "1<"),
         {"Surface: expected samples along x 1e-12 m to 0.001 m apart, found 1 m, which is implausible; the unit may "
          "be "
          "another one",
          "Surface: expected ends along x 1e-12 m to 1 m apart, found 2 m, which is implausible; the unit may be "
          "another "
          "one"}},
        {Edited("<SizeX>3", "<SizeX>4"), {"error: main.xml, DataList: expected 8 points, found 6"}},
        {Edited("<SizeX>3", "<SizeX>0"),
         {"error: main.xml, line 10, SizeX: expected a number of points below 2^32, found \"0\""}},
        {Edited("<SizeZ>1", "<SizeZ>4000000000"),
         {"error: main.xml, line 10, Record3: expected at most 10000 layers, found 4000000000"}},
        {Edited("<Datum>+3", "<Datum>x"),
         {"error: main.xml, point 3 of DataList: expected a number of DataType I, found \"x\""}},
        {Edited("<Datum>+3", "<Datum>32768"),
         {"error: main.xml, point 3 of DataList: expected a number of DataType I, found \"32768\""}},
        {Edited("<Datum>+3", "<Datum>1;2"),
         {"error: main.xml, point 3 of DataList: expected 1 numbers with ; between them, found \"1;2\""}},
        {Edited("<Datum>+3", "<Datum><Datum/>+3"),
         {"error: main.xml, line 11, Datum: expected numbers, found an element Datum"}},
        {Edited("2009-06-09T13:40:58.25", "9.6.2009 "),
         {"main.xml, line 7, Date: expected a date and time as 2009-06-09T13:40:58, found \"9.6.2009 +01:00\""}},
        {Edited(">Contacting<", ">N/A<"),
         {"main.xml, line 9, Type: expected Contacting, NonContacting or Software, found \"N/A\""}},
        {Edited("<Serial>1</Serial>", ""), {"main.xml, line 7, Instrument: expected an element Serial, found none"}},
        {Edited("</Record3>", "<Mask a=\"b\">c</Mask></Record3>"),
         {"main.xml, line 12, Mask: expected an element of the standard, once, found \"Record3/Mask\", which is kept "
          "in the "
          "metadata"}},
        {Edited("<Record4>", "<Record1/><Record4>"),
         {"main.xml, line 12, Record1: expected an element of the standard, once, found \"Record1\", which is kept in "
          "the "
          "metadata"}},
        {binary("bindata/", "bindata/", points), {}},
        {binary(">f6", ">F7", points),
         {"main.xml, line 11, MD5ChecksumPointData: expected the checksum of bindata/data.bin, "
          "f6050cdac59263109f2a853227bed520, found \"F7050cdac59263109f2a853227bed520\""}},
        {binary("bindata/", "bindata\\", points),
         {"main.xml, line 11, PointDataLink: expected a path with /, found \"bindata\\data.bin\""}},
        {binary("data.bin", "x.bin", points),
         {"error: main.xml, line 11, PointDataLink: expected an entry of the container, found \"bindata/x.bin\", which "
          "is "
          "none"}},
        {binary("SizeX>3", "SizeX>300000000", points),
         {"error: bindata/data.bin: expected 600000000 points of 2 bytes, found 12 bytes"}},
        {binary("</DataLink>",
                "<ValidPointsLink>v</ValidPointsLink><MD5ChecksumValidPoints>0</MD5ChecksumValidPoints></DataLink>",
                {{"bindata/data.bin", sixShorts}, {"v", ""}}),
         {"error: v: expected 1 bytes, a bit for each point, found 0"}},
    };
    return rows;
}

} // namespace

TEST(X3p, TellsEachDeviationByItsPlace) {
    for (const Row& row : GetRows())
        EXPECT_EQ(TellOf([&] { Read(row.entries); }), row.told);
}

// Damage anywhere is an error, or told, or harmless; sizes are not believed.
TEST(X3p, DamageOfAnyByteIsNoMoreThanAnError) {
    const Entries entries = Document(Replaced(good, list, link), {{"bindata/data.bin", std::string(12, 'x')}});
    const std::string bytes = Pack(entries);
    const auto read = [](const std::string& damaged) {
        return ErrorOf([&] {
            const Warnings warnings;
            Core::MemoryInputStream stream(damaged.data(), damaged.size());
            DataContainer content;
            X3p::Read(stream, report, content);
        });
    };
    ASSERT_EQ(read(bytes), "");
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        EXPECT_NE(read(bytes.substr(0, i)), "") << i;
        for (const char mask : {'\x01', '\x80', '\xFF'}) {
            std::string damaged = bytes;
            damaged[i] = static_cast<char>(damaged[i] ^ mask);
            read(damaged);
        }
    }
    // The unpacked size of main.xml in the list of entries: bytes 24 to 27 of its row.
    std::string lies = bytes;
    lies.replace(lies.find("PK\x01\x02") + 24, 4, "\xFF\xFF\xFF\x7F");
    EXPECT_NE(read(lies).find("main.xml: expected at most "), std::string::npos) << read(lies);
}

} // namespace Qor::Tivor::Testing
