#include "Alerts.h"
#include "Samples.h"
#include "StoredBytes.h"
#include "TemporaryDirectory.h"

#include <Tivor/BinaryDataFile.h>
#include <Tivor/DataObjectFactory.h>
#include <Tivor/XMLDataFile.h>

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

// Every class that the library stores goes through the same tests, by its samples and by its golden file.

namespace Qor::Tivor::Testing {

namespace {

using namespace Core::Testing;

struct Row {
    ETypeID id;
    std::string className;
    NamedObjects (*make)();
    NamedObjects (*makeLarge)() = [] { return NamedObjects(); };
    const std::type_info* held = nullptr;
    void (*checkCopies)(DataObject& object) = nullptr;
};

/// Copies share nothing with their original.
template <class Object>
void CheckCopies(DataObject& object) {
    auto& original = dynamic_cast<Object&>(object);
    const auto clone = std::dynamic_pointer_cast<Object>(object.Clone());
    ASSERT_TRUE(clone && (clone->GetData() != original.GetData() || !clone->GetData()));
    if constexpr (requires { original.GetValue(); }) {
        using T = std::remove_cvref_t<decltype(original.GetValue())>;
        if constexpr (requires(T & value) {
                          { value.data() } -> std::convertible_to<const void*>;
                      }) {
            EXPECT_TRUE(clone->GetValue().size() == 0 || clone->GetValue().data() != original.GetValue().data());
        }
        DataContainer container;
        container.PutValue("k", original.GetValue());
        EXPECT_TRUE(container.GetPtr<T>("k") && container.GetPtr<T>("k") != original.GetData());
        EXPECT_TRUE(bool(container.Get("k")->HoldsSameValueAs(object)));
        const std::optional<T> value = container.GetValue<T>("k");
        EXPECT_TRUE(value && bool(MakeData(T(*value))->HoldsSameValueAs(object)));
    }
}

NamedObjects Containers() {
    const auto nested = DataContainer::Create();
    nested->PutValue("flag", true);
    nested->PutValue("count", -2);
    nested->GetSubData({"inner"}, true)->PutValue("text", "Gr\xC3\xBC\xC3\x9F\x65");
    return {{"empty", std::make_shared<DataContainerWrapper>()},
            {"nested", std::make_shared<DataContainerWrapper>(nested)}};
}

template <class Held, class Object, class Sampled>
Row RowOf(ETypeID id, std::string_view className) {
    return {
        id, std::string(className), &ObjectsOf<Sampled>, &LargeObjectsOf<Sampled>, &typeid(Held), &CheckCopies<Object>};
}

const Row rows[] = {
#define TIVOR_VALUE(T, id, name) RowOf<T, Data<T>, T>(id, builtInTypeFacts[rowOf<T>].className),
    TIVOR_BUILT_IN_VALUES TIVOR_COLLECTION_VALUES
#undef TIVOR_VALUE
#define TIVOR_ROW(T, STEM, code, position, name)                                                                       \
    RowOf<boost::shared_array<T>, Array<T>, Array<T>>(eSCALAR_ARRAY, "Array_" name),
        TIVOR_ARRAY_ELEMENT_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
#define TIVOR_VALUE(T, id, name) RowOf<T, Tivor::DataOf<T>, T>(id, name),
            TIVOR_POSITION_1D_VALUES TIVOR_POSITION_2D_VALUES
#undef TIVOR_VALUE
    {eSIGNED_INTEGRAL_TYPE, "Golden::Signed", &ScalarsOf<eSIGNED_INTEGRAL_TYPE, char, short, int, std::int64_t>},
    {eUNSIGNED_INTEGRAL_TYPE, "Golden::Unsigned",
     &ScalarsOf<eUNSIGNED_INTEGRAL_TYPE, unsigned char, unsigned short, unsigned, std::uint64_t>},
    {eFLOATING_POINT_TYPE, "Golden::Floating", &ScalarsOf<eFLOATING_POINT_TYPE, float, double>},
    {eDATA_SET, "DataSet", &DataSets},
    {eNAMED_CLASS, "Data1D", &Profiles},
    {eNAMED_CLASS, "Data2D", &Surfaces},
    {eDATA_CONTAINER, "DataContainer", &Containers},
};

bool IsZero(DataObject& object) { return object.ToString() == "0" || object.ToString() == "-0"; }

const std::string goldenFolder = TIVOR_TEST_DATA "/golden/";

std::vector<std::string> ListGoldenFiles() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(goldenFolder))
        if (entry.path().extension() == ".qordata")
            names.push_back(entry.path().filename().string());
    return names;
}

// Each row asks for them, and so does each of the hundreds of processes that run a test.
const std::vector<std::string>& GoldenFiles() {
    static const std::vector<std::string> names = ListGoldenFiles();
    return names;
}

/// The name of a class's golden file: the code, and the class where it does not follow from the code.
std::string GoldenFileOf(ETypeID id, std::string className) {
    const std::string code = std::to_string(1000 + id).substr(1) + '-';
    if (const std::size_t scope = className.rfind(':'); scope != std::string::npos)
        className.erase(0, scope + 1);
    for (const std::string& name : GoldenFiles())
        if (CarriesClassName(static_cast<std::uint16_t>(id)) && !className.empty()
                ? name == code + className + ".qordata"
                : name.starts_with(code))
            return name;
    return {};
}

void PrintTo(const Row& row, std::ostream* out) { *out << row.className; }

std::string NameOf(const testing::TestParamInfo<Row>& row) {
    std::string name = GoldenFileOf(row.param.id, row.param.className);
    name.resize(name.find('.'));
    name[name.find('-')] = '_';
    return name;
}

/// One element more, and so many that of the bytes of elements of some width an overflow leaves what is there.
constexpr std::uint64_t moreCounts[] = {1, 1ull << 60, 1ull << 61, 1ull << 62, 1ull << 63};

/// Where a class's data has counts: of elements, or the extents of a matrix; of positions in two arrays, the first one.
std::vector<std::size_t> CountsIn(ETypeID id, const std::string& className) {
    if (className.starts_with("ArrayPosition"))
        return {static_cast<std::size_t>(Core::UnitDescriptor().GetSerializedSize())};
    if (id == eSCALAR_ARRAY)
        return {4};
    if (id >= eMATRIX_INT8 && id <= eFORTRAN_MATRIX_COMPLEX)
        return {0, 8};
    if (id >= eVECTOR_INT8 && id <= eUNITIZED_CONTAINER)
        return {0};
    return {};
}

} // namespace

class StoredClass : public testing::TestWithParam<Row> {};
class WrapperClass : public StoredClass {};

TEST_P(WrapperClass, IsHeldComparedAndCopied) {
    NamedObjects objects = GetParam().make();
    NamedObjects twins = GetParam().make();
    for (NamedObjects* const all : {&objects, &twins})
        for (auto& large : GetParam().makeLarge())
            all->push_back(std::move(large));
    const std::shared_ptr<DataObject> stranger = std::make_shared<DataContainerWrapper>();
    for (std::size_t i = 0; i < objects.size(); ++i) {
        DataObject& object = *objects[i].second;
        SCOPED_TRACE(testing::Message() << i << " " << objects[i].first);
        EXPECT_TRUE(object.HoldsType(*GetParam().held) && !object.HoldsType(typeid(Row)));
        EXPECT_FALSE(object.HoldsSameTypeAs(*stranger) || stranger->HoldsSameTypeAs(object));
        EXPECT_TRUE(bool(!object.HoldsSameValueAs(*stranger)));
        EXPECT_TRUE(i == 0 || !object.ToString().empty());
        const std::string bytes = Stored(object);
        for (const auto& [key, twin] : twins) {
            EXPECT_TRUE(object.HoldsSameTypeAs(*twin));
            const bool isSame = bytes == Stored(*twin) || (IsZero(object) && IsZero(*twin));
            EXPECT_EQ(object.HoldsSameValueAs(*twin), boost::logic::tribool(isSame)) << key;
        }
        GetParam().checkCopies(object);

        EXPECT_TRUE(object.EnableDataLocking());
        std::vector<std::shared_ptr<Core::Lock>> locks;
        object.AcquireLocks(locks);
        EXPECT_EQ(locks.size(), 1u);
        locks.clear();

        const std::shared_ptr<DataObject> read = Read(bytes);
        const std::shared_ptr<DataObject> clone = object.Clone();
        const std::shared_ptr<DataObject> made =
            DataObjectFactory::Instance().CreateBuiltInDataObject(GetParam().id, GetParam().className);
        const std::string other = DataOf(*twins[(i + 1) % twins.size()].second);
        for (const auto& copy : {read, clone, made}) {
            ASSERT_TRUE(copy && copy->HoldsSameTypeAs(object));
            EXPECT_EQ(copy->GetTypeID(), GetParam().id);
            EXPECT_EQ(copy->GetTypeName(), GetParam().className);
            EXPECT_TRUE(copy == made || Stored(*copy) == bytes);
            EXPECT_EQ(Fill(*copy, other, other.size()), other.size());
            EXPECT_TRUE(DataOf(*copy) == other && Stored(object) == bytes);
        }
    }
}

// Whether the block is shorter than its data, or the stream, or whether a count says more than the block holds: an
// error, and the object is as before.
TEST_P(StoredClass, DamagedDataChangesNothing) {
    const std::vector<std::size_t> counts = CountsIn(GetParam().id, GetParam().className);
    const std::string& name = GetParam().className;
    const bool anySizeIsGood = name.ends_with("String") && counts.empty();
    const NamedObjects objects = GetParam().make();
    for (const auto& [key, object] : objects) {
        const std::string data = DataOf(*object);
        const auto target = objects[objects[0].second == object ? 1 : 0].second->Clone();
        const std::string before = DataOf(*target);
        const auto refuses = [&](const std::string& damaged, std::uint64_t size) {
            RaisedBy<Core::Error>([&] { Fill(*target, damaged, size); });
            EXPECT_EQ(DataOf(*target), before);
        };
        for (std::size_t cut = 0; cut < data.size() && !HasFailure(); ++cut) {
            SCOPED_TRACE(testing::Message() << key << " cut at " << cut);
            refuses(data.substr(0, cut), data.size());
            if (!anySizeIsGood && (!name.starts_with("Golden") || (cut & (cut - 1)) != 0))
                refuses(data.substr(0, cut), cut);
        }
        for (const std::size_t place : key == "many" ? counts : std::vector<std::size_t>())
            for (const std::uint64_t more : moreCounts) {
                const std::uint64_t count = static_cast<unsigned char>(data[place]) + more;
                SCOPED_TRACE(testing::Message() << "count " << count << " at " << place);
                std::string damaged = data;
                std::memcpy(damaged.data() + place, &count, sizeof count);
                refuses(damaged, damaged.size());
            }
        if (!counts.empty()) {
            EXPECT_EQ(Fill(*target, data + "more", data.size() + 4), data.size());
            EXPECT_EQ(DataOf(*target), data);
        }
    }
}

/// The golden file is what is written, and holds it when it is read.
template <class File>
void CheckGoldenFile(DataContainer& made, const std::string& name, const std::string& written) {
    const Core::PathName path(goldenFolder + name);
    const std::string bytes = ReadFileText(path);
    EXPECT_EQ(written, bytes);

    const Warnings refusing(true);
    const File file(path.ToString(), DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, nullptr);
    ASSERT_TRUE(file.IsOpen());
    EXPECT_EQ(Keys(file), Keys(made));
    EXPECT_TRUE(file == made);
    for (const DataContainer::Entry& entry : file)
        EXPECT_EQ(Stored(*entry.object), Stored(*made.Get(entry.key))) << entry.key;
}

TEST_P(StoredClass, HasItsGoldenFiles) {
    const std::string name = GoldenFileOf(GetParam().id, GetParam().className);
    DataContainer made;
    for (const auto& [key, object] : GetParam().make())
        made.Put(key, object);
    CheckGoldenFile<BinaryDataFile>(made, name, Bytes("'QOR DATA' 01 0000 'A'") + Stored(made));
    CheckGoldenFile<XMLDataFile>(made, name.substr(0, name.rfind('.')) + ".qordml", StoredXML(made));
}

INSTANTIATE_TEST_SUITE_P(, StoredClass, testing::ValuesIn(rows), NameOf);
INSTANTIATE_TEST_SUITE_P(, WrapperClass, testing::ValuesIn(rows, std::end(rows) - 7), NameOf); // of one value type each

TEST(GoldenFiles, AreThoseOfTheClassesThatCanBeCreated) {
    std::set<std::string> expected;
    for (const TypeFacts& facts : builtInTypeFacts) {
        const std::string name(facts.className);
        const std::string file = GoldenFileOf(facts.id, name);
        const bool canBeCreated = DataObjectFactory::Instance().CreateBuiltInDataObject(facts.id, name) != nullptr;
        EXPECT_EQ(!file.empty(), canBeCreated) << name << " " << facts.id;
        if (canBeCreated && !expected.insert(file).second)
            ADD_FAILURE() << file << " stands for two classes";
    }
    EXPECT_EQ(expected.size(), GoldenFiles().size());
    EXPECT_EQ(expected.size(), std::size(rows));
}

TEST(StoredCollections, KeepWhatCanStandInThem) {
    const struct {
        std::shared_ptr<DataObject> object;
        const char* stored;
        const char* kept;
        const char* counts = nullptr; ///< that the warning names
    } repairs[] = {
        {MakeData(std::set<double>()),
         "04 00000000000000 000000000000F03F 0000000000000080 0000000000000000 000000000000F03F",
         "02 00000000000000 0000000000000080 000000000000F03F", "42"},
        {MakeData(std::set<double>()), "03 00000000000000 000000000000F87F 000000000000F03F 0000000000000040",
         "02 00000000000000 000000000000F03F 0000000000000040", "32"},
        {MakeData(std::set<float>()), "02 00000000000000 0000803F 0000C07F", "01 00000000000000 0000803F", "21"},
        {MakeData(std::set<float>()), "02 00000000000000 0000C07F 0100C07F", "01 00000000000000 0000C07F", "21"},
        {MakeData(std::set<std::string>()), "03 00000000000000 01000000 'b' 01000000 'a' 01000000 'b'",
         "02 00000000000000 01000000 'a' 01000000 'b'", "32"},
        {MakeData(SelfMap<std::string>()),
         "03 00000000000000 01000000 'b' 01000000 '1' 01000000 'a' 01000000 '2' 01000000 'b' 01000000 '3'",
         "02 00000000000000 01000000 'a' 01000000 '2' 01000000 'b' 01000000 '3'", "32"},
        {MakeData(SelfUnorderedMap<std::wstring>()),
         "03 00000000000000 01000000 'b' 01000000 '1' 01000000 'a' 01000000 '2' 01000000 'b' 01000000 '3'",
         "02 00000000000000 01000000 'a' 01000000 '2' 01000000 'b' 01000000 '3'", "32"},
        {MakeData(std::vector<bool>()), "03 00000000000000 02 80 00", "03 00000000000000 01 01 00"},
        {std::make_shared<Array<bool>>(), "01 000000 03 00000000000000 02 80 00",
         "01 000000 03 00000000000000 01 01 00"},
    };
    for (const auto& [object, notation, kept, counts] : repairs) {
        SCOPED_TRACE(object->GetTypeName() + " " + notation);
        const std::string stored = Bytes(notation);
        const Warnings warnings;
        EXPECT_EQ(Fill(*object, stored, stored.size()), stored.size());
        EXPECT_EQ(DataOf(*object), Bytes(kept));
        ASSERT_EQ(warnings.seen.size(), counts != nullptr ? 1u : 0u);
        for (const Core::Warning& warning : warnings.seen) {
            EXPECT_EQ(warning.GetTypeName(), "ShrunkCollection");
            for (const char digit : std::string(counts))
                EXPECT_NE(warning.GetText().find(digit), std::string::npos) << warning.GetText();
        }
    }
}

TEST(StoredElements, HaveTheirOwnSize) {
    for (const char* const elementSize : {"00 000000", "04 000000", "10 000000", "08 000001"}) {
        const std::string data = Bytes(elementSize) + Bytes("00 00000000000000");
        EXPECT_EQ(
            RaisedBy<Core::AssertionError>([&] { Fill(*MakeArray(std::span<double>()), data, data.size()); }).GetText(),
            "sizeof(element_type) == ui32ElementSize");
    }
#define TIVOR_ROW(T, name)                                                                                             \
    for (const std::size_t size : {std::size_t{0}, sizeof(T), 2 * sizeof(T) - 1, 2 * sizeof(T) + 1})                   \
        RaisedBy<InvalidComplexType>([&] { Fill(*MakeData(std::complex<T>()), std::string(40, '\0'), size); });
    TIVOR_COMPLEX_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
}

} // namespace Qor::Tivor::Testing
