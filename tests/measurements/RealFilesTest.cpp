// Measured surfaces and profiles, in the formats of others: what they hold was found without this library.
#include <QorCore/MemoryStreams.h>
#include <QorCore/PathName.h>
#include <Tivor/Codec.h>
#include <Tivor/MatrixView.h>

#include <gtest/gtest.h>

#include <Alerts.h>
#include <Imported.h>
#include <Measured.h>
#include <SameEntries.h>
#include <TemporaryDirectory.h>
#include <cmath>
#include <cstdlib>
#include <nlohmann/json.hpp>

namespace Qor::Tivor::Testing {

namespace {

using namespace Core::Testing;
using Json = nlohmann::json;

/// The measured array of a data set that `expected.json` tells of.
std::shared_ptr<DataObject> FindMain(IDataSet& set) {
    if (const auto surface = set.GetPrimaryData2D())
        return ValueTraits<Data2D>::MakeData(surface);
    for (const char* const key : {"Profile", "Z"})
        if (const auto profile = set.GetData1D(key))
            return ValueTraits<Data1D>::MakeData(profile);
    return nullptr;
}

std::shared_ptr<DataContainer> OpenMeasurement(const Core::PathName& path, const std::string& kind) {
    if (kind.find("text") == std::string::npos)
        return DataFile::Open(path.ToString(), DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, "", nullptr);
    const auto container = DataContainer::Create();
    Tool::PutImported(*container, ReadMeasuredText(path.ToString()));
    return container;
}

class Expectation {
public:
    Expectation(const Json& expected, const DataObject& object)
        : m_expected(expected), m_facts(Tool::FindMeasuredFacts(object).value()), m_scale(m_facts.scale.GetSIValue()) {}

    void CheckStatistics() const {
        EXPECT_EQ(m_facts.statistics->numPoints, m_expected["points"]);
        EXPECT_EQ(m_facts.statistics->numMissing, m_expected["missing"]);
        ExpectNear(m_facts.statistics->minimum * m_scale, m_expected["min"], "minimum");
        ExpectNear(m_facts.statistics->maximum * m_scale, m_expected["max"], "maximum");
        ExpectNear(m_facts.statistics->mean * m_scale, m_expected["mean"], "mean");
        ExpectNear(m_facts.statistics->rms * m_scale, m_expected["rms"], "rms");
    }

    /// A surface lies y by x; the list tells x first.
    void CheckPlaces() const {
        if (!m_expected.contains("matrix"))
            return;
        const char* const spacings[] = {"dy", "dx"};
        const char* const begins[] = {"y0", "x0"};
        for (std::size_t i = 0; i < m_facts.axes.size(); ++i) {
            const auto& axis = m_facts.axes[i];
            EXPECT_EQ(axis.points, m_expected["matrix"][1 - i]);
            if (axis.spacing)
                ExpectNear(axis.spacing->GetSIValue(), m_expected[spacings[i]], spacings[i]);
            else if (!IsAbsolute(i))
                ExpectNear(axis.ends->first.GetSIValue(), m_expected[begins[i]], begins[i]);
        }
    }

    void CheckProbes(const Data2D& surface) const {
        if (!m_expected.contains("probe"))
            return;
        for (const auto& [place, expected] : m_expected["probe"].items()) {
            std::size_t row = 0, column = 0;
            ASSERT_EQ(std::sscanf(place.c_str(), "z[%zu,%zu]", &row, &column), 2);
            const double height = SampleAt(surface, row, column) * m_scale;
            if (expected.is_null())
                EXPECT_TRUE(std::isnan(height)) << place;
            else
                EXPECT_DOUBLE_EQ(height, expected.get<double>()) << place;
        }
    }

private:
    static void ExpectNear(double found, const Json& expected, const char* what) {
        EXPECT_NEAR(found, expected.get<double>(), std::abs(expected.get<double>()) * 1e-9) << what;
    }

    bool IsAbsolute(std::size_t dimension) const {
        return m_expected.contains("axes") && m_expected["axes"][dimension == 0 ? "CY" : "CX"]["axis"] == "A";
    }

    static double SampleAt(const Data2D& surface, std::size_t row, std::size_t column) {
        if (surface.GetValueType() == eFLOAT)
            return static_cast<double>(MatrixView<const float>(surface)(row, column));
        if (surface.GetValueType() == eINT16)
            return MatrixView<const short>(surface)(row, column);
        return MatrixView<const double>(surface)(row, column);
    }

    const Json& m_expected;
    Tool::MeasuredFacts m_facts;
    double m_scale;
};

/// Whatever was read is the same after a way through both of the library's own types.
void CheckOwnTypes(const DataContainer& read) {
    for (const char* const type : {"QOR Binary Data File", "QOR XML Data File"}) {
        const auto file = DataFile::OpenMemory({}, DataFile::eREAD_WRITE, type, nullptr);
        file->Assign(read);
        file->Flush();
        const auto again = DataFile::OpenMemory(file->GetContent(), DataFile::eREAD_ONLY, "", nullptr);
        EXPECT_EQ(Tool::FindDifference(read, *again), "") << type;
    }
}

void CheckFolder(const std::string& folder) {
    const Json list = Json::parse(ReadFileText(Core::PathName(folder) / "expected.json"));
    for (const auto& [name, expected] : list.items()) {
        SCOPED_TRACE(name);
        const Warnings deviations;
        const auto content = OpenMeasurement(Core::PathName(folder) / name, expected["kind"]);
        const auto set = Decode(std::make_shared<DataContainer>(*content), "");
        const auto object = FindMain(*set);
        ASSERT_TRUE(object);
        const Expectation expectation(expected, *object);
        expectation.CheckStatistics();
        expectation.CheckPlaces();
        if (const auto surface = set->GetPrimaryData2D())
            expectation.CheckProbes(*surface);
        CheckOwnTypes(*content);
    }
}

} // namespace

TEST(RealFiles, HoldWhatOthersFoundInThem) { CheckFolder(TIVOR_PROJECT "/data"); }

TEST(RealFiles, OfAnotherFolderToo) {
    const char* const folder = std::getenv("TIVOR_SAMPLES");
    if (folder == nullptr)
        GTEST_SKIP() << "TIVOR_SAMPLES names no folder with files and an expected.json";
    CheckFolder(folder);
}

} // namespace Qor::Tivor::Testing
