// What the formats of measurements make of content that they cannot hold: it is refused, or each loss is told before
// anything is written; and what they hold comes back as it was.
#include <QorCore/MemoryStreams.h>
#include <Tivor/Codec.h>
#include <Tivor/DataFile.h>
#include <Tivor/MatrixView.h>

#include <gtest/gtest.h>

#include <Alerts.h>
#include <SameMeasurements.h>
#include <functional>
#include <limits>

namespace Qor::Tivor::Testing {

namespace {

using namespace Core::Testing;
using Texts = std::vector<std::string>;

const std::vector<std::string> types{"X3P", "Gwyddion Simple Field", "Surface Data File"};
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

template <class T>
std::shared_ptr<Data2D> Surface(const std::vector<T>& samples, const std::string& unit = "Meter") {
    RowMajorMatrix<T> matrix(2, samples.size() / 2);
    std::copy(samples.begin(), samples.end(), matrix.data());
    const auto surface = Data2D::Create(MakeData(matrix));
    surface->SetDataKind(sHEIGHT_DATA);
    surface->SetDataScale(UnitizedDouble(0.5, unit));
    surface->SetFixedSpacing(UnitizedDouble(2, "Micrometer"), UnitizedDouble(3, "Micrometer"));
    return surface;
}

std::shared_ptr<Data2D> Usual() { return Surface<double>({1, 2, nan, 4, 5, -6}); }

/// A surface to which something was done.
std::shared_ptr<Data2D> With(const std::function<void(Data2D&)>& change) {
    const auto surface = Usual();
    change(*surface);
    return surface;
}

std::shared_ptr<DataContainer> Holding(const std::shared_ptr<Data2D>& surface) {
    const auto content = DataContainer::Create();
    DataSet(surface, "S").StoreDataSet(*content);
    return content;
}

std::vector<std::byte> Write(const DataContainer& content, const std::string& type) {
    const auto file = DataFile::OpenMemory({}, DataFile::eREAD_WRITE, type, nullptr);
    file->Assign(content);
    file->Flush();
    return file->GetContent();
}

std::shared_ptr<DataFile> Read(const std::vector<std::byte>& bytes) {
    return DataFile::OpenMemory(bytes, DataFile::eREAD_ONLY, "", nullptr);
}

/// What is told when the content is written: the losses, or the refusal.
Texts Losses(const DataContainer& content, const std::string& type) {
    const Warnings warnings;
    try {
        Write(content, type);
    } catch (const Core::Error& error) {
        return {"refused: " + error.GetText()};
    }
    Texts texts;
    for (const Core::Warning& warning : warnings.seen)
        texts.push_back(warning.GetText());
    return texts;
}

struct Row {
    std::shared_ptr<DataContainer> content;
    Texts told[3]; ///< by the types in their order
};

ArrayPosition2D Uneven(const std::string& unit) {
    const auto positions = AllocateArray<double>(3);
    std::copy_n(std::begin({1.0, 2.0, 4.0}), 3, positions.get());
    const auto units = UnitizedDouble(1, unit).GetUnits()->Clone();
    return {positions, positions, 2, 3, units, units};
}

std::shared_ptr<DataContainer> Crowded() {
    DataSet set(Usual(), "S");
    set.StoreData(Surface<double>({7, 8, 9, 10, 11, 12}), "T"); // of the same places
    set.StoreData(Surface<double>({7, 8}), "U");
    set.StoreData(Data1D::CreateFrom(std::make_shared<Array<double>>(3)), "P");
    set.MetaData().PutValue("Operator", std::string("me"));
    const auto content = DataContainer::Create();
    set.StoreDataSet(*content);
    content->PutValue("Beside", 1);
    return content;
}

const std::vector<Row>& GetRows() {
    static const std::string noPlace = ": the format has no place for it";
    static const std::string beside = noPlace + " beside what is written";
    static const std::vector<Row> rows{
        {Holding(Usual()), {{}, {}, {}}},
        {DataContainer::Create(),
         {{"refused: content: expected a surface or profile of real samples whose scale is a length, found none"},
          {"refused: content: expected a surface with samples, found none"},
          {"refused: content: expected a surface or a profile with samples, found none"}}},
        {Holding(Surface<std::complex<double>>({1, 2})),
         {{"refused: content: expected a surface or profile of real samples whose scale is a length, found S of "
           "complex in \"0.5 m\""},
          {"refused: S: expected real samples, found samples of complex"},
          {"refused: S: expected real samples, found samples of complex"}}},
        {Holding(Surface<float>({1, 2}, "Volt")),
         {{"refused: content: expected a surface or profile of real samples whose scale is a length, found S of float "
           "in "
           "\"0.5 V\""},
          {"S: the format does not say what kind of data it holds; this is \"Height\""},
          {"refused: S: expected samples whose scale is a length other than 0, found the scale \"0.5 V\""}}},
        {Holding(With([](Data2D& surface) { surface.RemovePositionInfo(); })),
         {{"refused: S: expected positions, which the format asks for, found none"},
          {"S: its positions are not known, and the format's readers take 1 for the width"},
          {"refused: S: expected evenly spaced samples, their spacing a positive length, found no positions"}}},
        {Holding(With([](Data2D& surface) {
             surface.SetPositionFunction(std::make_shared<ArrayPosition2D>(Uneven("Micrometer")));
         })),
         {{},
          {"refused: S: expected evenly spaced samples, which are all that the format can hold, found uneven "
           "positions"},
          {"refused: S: expected evenly spaced samples, their spacing a positive length, found uneven positions"}}},
        {Holding(With([](Data2D& surface) {
             surface.SetFixedSpacing(UnitizedDouble(1, "Second"), UnitizedDouble(1, "Second"));
         })),
         {{"refused: S: expected positions in a unit of length, found \"Second\""},
          {},
          {"refused: S: expected evenly spaced samples, their spacing a positive length, found the spacing \"1 s\""}}},
        {Holding(With(
             [](Data2D& surface) { surface.SetFixedSpacing(UnitizedDouble(0, "Meter"), UnitizedDouble(0, "Meter")); })),
         {{},
          {"refused: S: expected positions that increase by a spacing, found the spacing \"0 m\""},
          {"refused: S: expected evenly spaced samples, their spacing a positive length, found the spacing \"0 m\""}}},
        {Holding(With([](Data2D& surface) {
             surface.SetDataKind(sPHASE_DATA);
             surface.SetOrigin(Data2D::eLOWER_LEFT);
         })),
         {{"S: the format does not say what kind of data it holds; this is \"Phase\"",
           "S: the format does not say in which corner the first sample lies"},
          {"S: the format does not say what kind of data it holds; this is \"Phase\"",
           "S: the format does not say in which corner the first sample lies"},
          {"S: the format does not say what kind of data it holds; this is \"Phase\"",
           "S: the format does not say in which corner the first sample lies"}}},
        {Holding(Surface<std::uint64_t>({1, 9007199254740993u})),
         {{"S: 1 of 2 samples are rounded to 64-bit floats"},
          {"S: 1 of 2 samples are rounded to 32-bit floats in \"Meter\""},
          {"S: 1 of 2 samples are rounded to doubles"}}},
        {Holding(Surface<double>({1, 1e300}, "Meter")),
         {{}, {"refused: S: expected samples that 32-bit floats can hold, found 1e+300 times 0.5"}, {}}},
        {Crowded(),
         {{"U" + beside, "P" + beside, "Operator" + noPlace, "Beside" + noPlace},
          {"T" + beside, "U" + beside, "P" + beside, "Operator" + noPlace, "Beside" + noPlace},
          {"T" + beside, "U" + beside, "P" + beside, "Operator" + noPlace, "Beside" + noPlace}}},
    };
    return rows;
}

} // namespace

TEST(MeasurementWriting, TellsWhatTheFormatCannotHold) {
    for (const Row& row : GetRows())
        for (std::size_t i = 0; i < types.size(); ++i)
            EXPECT_EQ(Losses(*row.content, types[i]), row.told[i]) << types[i];
}

// What refuses a warning refuses the saving: the file is as it was.
TEST(MeasurementWriting, EndsWhereALossIsNotTaken) {
    for (const std::string& type : types) {
        const auto file = DataFile::OpenMemory(Write(*Holding(Usual()), type), DataFile::eREAD_WRITE, type, nullptr);
        const auto before = file->GetContent();
        file->PutValue("Beside", 1);
        const Warnings warnings(true);
        EXPECT_NE(ErrorOf([&] { file->Flush(); }), "") << type;
        EXPECT_EQ(file->GetContent(), before) << type;
    }
}

// Whatever the length of the header is, the samples begin behind a zero byte, at a multiple of four.
TEST(MeasurementWriting, PadsHeadersOfEachLength) {
    for (const std::string title : {"a", "ab", "abc", "abcd"}) {
        const auto content = Holding(Usual());
        content->GetSubData({sMETA_DATA}, false)->PutValue(sDATASET_NAME, title);
        const auto again = Read(Write(*content, "Gwyddion Simple Field"));
        EXPECT_EQ(Tool::FindForeignMeasurement(*content, *again), "") << title;
        EXPECT_EQ(again->GetSubData({sMETA_DATA}, false)->GetValue<std::string>(sDATASET_NAME), title);
    }
}

// Each element type, missing points where the type knows them, in both storage orders.
TEST(MeasurementWriting, KeepsSamplesOfEachType) {
    const auto check = []<class T>(T) {
        std::vector<T> samples{0, 1, 2, std::numeric_limits<T>::max(), std::numeric_limits<T>::lowest(), 77};
        if constexpr (std::is_floating_point_v<T>)
            samples = {0,       T(0.1), -2, std::numeric_limits<T>::quiet_NaN(), std::numeric_limits<T>::infinity(),
                       T(1e-30)};
        const auto rows = Surface<T>(samples);
        ColumnMajorMatrix<T> matrix(2, 3);
        for (std::size_t i = 0; i < samples.size(); ++i)
            matrix(i / 3, i % 3) = samples[i];
        const auto columns = Data2D::Create(*rows);
        columns->SetMatrixDataObject(MakeData(matrix));
        for (const auto& surface : {rows, columns})
            for (const std::string& type : types) {
                const Warnings warnings;
                const auto content = Holding(surface);
                const auto again = Read(Write(*content, type));
                EXPECT_EQ(Tool::FindForeignMeasurement(*content, *again), "") << type << ' ' << typeid(T).name();
            }
    };
#define TIVOR_ROW(T, STEM, code, position, name) check(static_cast<T>(0));
    TIVOR_NUMERIC_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
}

} // namespace Qor::Tivor::Testing
