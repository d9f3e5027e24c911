#include "Alerts.h"
#include "StoredBytes.h"
#include "TemporaryDirectory.h"
#include "TestHeap.h"
#include "TestedTypes.h"
#include "Trickle.h"

#include <QorCore/Base64.h>
#include <QorCore/BufferedStreams.h>
#include <QorCore/Context.h>
#include <QorCore/MemoryStreams.h>
#include <Tivor/Data1D.h>
#include <Tivor/Data2D.h>
#include <Tivor/DataSet.h>
#include <Tivor/ScalarData.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iostream>

#if __has_include(<pthread.h>)
#include <pthread.h>
#endif

namespace Qor::Tivor::Testing {

namespace {

constexpr std::uint64_t mebibyte = 1 << 20;

/// Where the bytes come from: a stream that knows how many there are, one in front of that, and one that knows nothing
/// and gives little at a time.
enum class ESource { eMEMORY, eBUFFERED, eTRICKLING };
constexpr ESource allSources[] = {ESource::eMEMORY, ESource::eBUFFERED, ESource::eTRICKLING};

/// A form in which containers are stored.
struct Form {
    const char* name;
    std::string (*write)(const DataContainer& container);
    void (*read)(DataContainer& container, Core::BinaryInputStream& stream);
    const char* suspects; ///< bytes that mean something
};

const Form binaryForm = {"Binary", [](const DataContainer& container) { return Stored(container); },
                         [](DataContainer& container, Core::BinaryInputStream& stream) { container.InputData(stream); },
                         "\x01\x7F\x80\xFF"};
const Form xmlForm = {"XML", StoredXML,
                      [](DataContainer& container, Core::BinaryInputStream& stream) { container.InputXML(stream); },
                      "<&\" \xFF"};
const Form allForms[] = {binaryForm, xmlForm};

bool IsXML(const Form& form) { return form.read == xmlForm.read; }

// A parser has buffers of its own.
std::uint64_t GetHeapBound(const Form& form, std::uint64_t input) {
    return 64 * input + mebibyte + (IsXML(form) ? mebibyte / 8 : 0);
}

void PrintTo(const Form& form, std::ostream* stream) { *stream << form.name; }

void ReadFrom(const Form& form, ESource source, const std::string& bytes, DataContainer& container) {
    const std::vector<char> exactly(bytes.begin(), bytes.end());
    Core::MemoryInputStream memory(exactly.data(), exactly.size());
    Core::BufferedInputStream buffered(memory, 7);
    Core::Testing::Trickle trickling(std::as_bytes(std::span(exactly)), 5);
    const HeapWatch watch(GetHeapBound(form, bytes.size()));
    try {
        form.read(container, source == ESource::eMEMORY     ? static_cast<Core::BinaryInputStream&>(memory)
                             : source == ESource::eBUFFERED ? static_cast<Core::BinaryInputStream&>(buffered)
                                                            : trickling);
    } catch (...) {
        EXPECT_LE(watch.GetPeak(), GetHeapBound(form, bytes.size()));
        throw;
    }
    EXPECT_LE(watch.GetPeak(), GetHeapBound(form, bytes.size()));
}

/// False when it was refused, by one error of the library.
bool IsRead(const Form& form, ESource source, const std::string& bytes, DataContainer& container) {
    bool read = false;
    try {
        ReadFrom(form, source, bytes, container);
        read = true;
    } catch (const Core::Error&) {
        // as it should be
    } catch (const std::exception& error) {
        ADD_FAILURE() << "not an error of the library: " << error.what();
    }
    const Core::Context& context = Core::Context::Current();
    EXPECT_TRUE(context.nestingDepth == 0 && context.operation == nullptr && context.lockSet == nullptr);
    return read;
}

using Entries = std::vector<std::pair<std::string, std::shared_ptr<DataObject>>>;

Entries EntriesOf(const DataContainer& container) {
    Entries entries;
    for (const DataContainer::Entry& entry : container)
        entries.emplace_back(entry.key, entry.object);
    return entries;
}

/// Reads what may be damaged, into an empty container and into one with entries: an object or an error, and after an
/// error everything is as before. What was accepted can be written, and reads the same again.
bool Withstands(const Form& form, ESource source, const std::string& bytes) {
    DataContainer filled;
    filled.PutValue("a", 1.0);
    filled.PutValue("kept", 2);
    filled.GetSubData({"n", "deeper"}, true);
    const Entries before = EntriesOf(filled);
    DataContainer container;
    const bool accepted = IsRead(form, source, bytes, container);
    EXPECT_EQ(IsRead(form, source, bytes, filled), accepted);
    if (accepted) {
        const std::string written = form.write(container);
        DataContainer again;
        EXPECT_TRUE(IsRead(form, ESource::eMEMORY, written, again));
        EXPECT_TRUE(again == container);
        EXPECT_EQ(form.write(again), written);
        EXPECT_TRUE(filled.Exists("kept"));
    } else {
        EXPECT_TRUE(container.IsEmpty());
        EXPECT_TRUE(EntriesOf(filled) == before);
    }
    return accepted;
}

std::shared_ptr<ScalarData> MakeScalar(ETypeID kind, std::uint64_t width) {
    const std::string bytes("\x01\x02\x03\x04\x05\x06\x07\x40", 8);
    auto scalar = std::make_shared<ScalarData>("Kind", kind);
    Core::MemoryInputStream stream(bytes.data() + bytes.size() - width, width);
    scalar->GetSerializer()->DataFromBinary(width, stream);
    return scalar;
}

struct Sample {
    const char* name;
    void (*fill)(DataContainer& container);
    bool hasAlien = false; ///< in front stands an entry of an unknown class
};

void PrintTo(const Sample& sample, std::ostream* stream) { *stream << sample.name; }

const Sample samples[] = {
    {"Empty", [](DataContainer&) {}},
    {"Values",
     [](DataContainer& container) {
         container.PutValue("text", std::string("nul\0, \xC3\xA4, \xFF", 11));
         container.PutValue("wide", std::wstring(L"wide \u00E4\u20AC"));
         container.PutValue("matrix", RowMajorMatrix<double>(1, 2));
         container.PutValue("none", ColumnMajorMatrix<double>(0, 3));
         container.Put("scalar", MakeScalar(eFLOATING_POINT_TYPE, 4));
         container.PutValue("time", Core::Time(1));
     }},
    {"Nested",
     [](DataContainer& container) {
         container.GetSubData({"n", "deeper", "deepest"}, true)->PutValue("v", true);
         container.GetSubData({"n", "empty"}, true);
         container.GetSubData({sMETA_DATA}, true)->PutValue("text", "t");
         container.PutValue("behind", 1.5f);
     }},
    {"OddKeys",
     [](DataContainer& container) {
         const std::string keys[] = {
             "",  std::string("\0", 1), "\xFF\xFE\x80", "a/b\\c", "\r\n\t", "\x7F\xFF\xFF", "%1% {",
             "a", std::string(260, 'k')};
         for (const std::string& key : keys)
             container.PutValue(key, std::int64_t{-1});
     }},
    {"SharedObjects",
     [](DataContainer& container) {
         const auto shared = MakeData(std::string("shared"));
         container.Put("a", shared);
         container.GetSubData({"n"}, true)->Put("b", shared);
         container.Put("m", container.GetSubData({"n"}, false));
     }},
    {"DataSet",
     [](DataContainer& container) {
         container.PutValue("set", DataSet(Data2D::Create(MakeData(RowMajorMatrix<char>(1, 2))), "s"));
     }},
    {"Alien", [](DataContainer& container) { container.PutValue("known", 7u); }, true},
};

std::string BytesOf(const Form& form, const Sample& sample) {
    DataContainer container;
    sample.fill(container);
    std::string bytes = form.write(container);
    if (!sample.hasAlien)
        return bytes;
    if (IsXML(form))
        return bytes.insert(bytes.find("<Data "), "<Data key=\"alien\" typeid=\"0\" typename=\"Alien\" version=\"2\" "
                                                  "module=\"alien.dll\" size=\"3\" encoding=\"def/base64\">"
                                                  "<![CDATA[eHl6]]></Data>");
    return Bytes("05000000 'alien' | 00 05000000 'Alien' 01000000 '2' 09000000 'alien.dll' 01 03 | 'xyz'") + bytes;
}

std::vector<std::string> ChangesOf(const Form& form, const std::string& bytes, std::size_t position) {
    std::vector<std::string> changed;
    const char former = bytes[position];
    std::string values(1, '\0');
    for (const char value : (values + form.suspects) + static_cast<char>(former + 1) + static_cast<char>(former - 1))
        if (value != former)
            (changed.emplace_back(bytes))[position] = value;
    return changed;
}

double SecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Runs the work on a thread with the smallest stack that applications give theirs.
void RunOnSmallStack(const std::function<void()>& work) {
#if __has_include(<pthread.h>)
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, mebibyte), 0);
    pthread_t thread{};
    const auto run = [](void* argument) -> void* {
        (*static_cast<const std::function<void()>*>(argument))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&work)), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
#else
    std::cout << "SKIPPED: the limit of the stack; there are no POSIX threads here\n";
    work();
#endif
}

constexpr std::size_t mostLevels = 256;

/// Containers in one another under empty keys, the outermost being level 1.
std::string NestedBytes(std::size_t levels) {
    std::vector<DataObjectHeader> headers(levels);
    std::uint64_t size = 7;
    for (std::size_t level = levels; level-- > 1;) {
        headers[level].typeCode = eDATA_CONTAINER;
        headers[level].dataSize = size;
        size += 4 + headers[level].GetSize_bytes() + 7;
    }
    Core::MemoryOutputStream stream(size);
    for (std::size_t level = 1; level < levels; ++level) {
        stream.WriteZeros(4);
        headers[level].Output(stream);
    }
    for (std::size_t level = 0; level < levels; ++level)
        stream.Write("\0\0\0\0\x7F\xFF\xFF", 7);
    return {reinterpret_cast<const char*>(stream.GetBytes().data()), stream.GetSize()};
}

constexpr std::uint64_t most = ~std::uint64_t{0};
constexpr std::uint64_t bombSizes[] = {most, most - 15, 1ull << 63, 1ull << 32, 2 * mebibyte};
constexpr ETypeID bombCodes[] = {eNO_TYPE,        eASCII_STRING,         eUNICODE_STRING,   eMATRIX_DOUBLE,
                                 eDATA_CONTAINER, eSIGNED_INTEGRAL_TYPE, eSCALAR_CONTAINER, eVECTOR_DOUBLE};
constexpr std::pair<std::uint64_t, std::uint64_t> bombExtents[] = {{most, 1},
                                                                   {1, most},
                                                                   {most, most},
                                                                   {1ull << 32, 1ull << 32},
                                                                   {1ull << 63, 2},
                                                                   {1ull << 61, 1},
                                                                   {1ull << 31, 1ull << 31},
                                                                   {1ull << 20, 1ull << 17},
                                                                   {3, 1ull << 40},
                                                                   {mebibyte, 1}};

/// An entry with a header whose numbers say what they like, and little behind it.
std::string Bomb(ETypeID code, std::uint64_t size, const std::vector<std::uint64_t>& numbers = {}) {
    Core::MemoryOutputStream stream;
    Core::DataOutputStream data(stream);
    data.Write(std::string_view("bomb"));
    data.Write(static_cast<std::uint8_t>(code));
    if (code == eNO_TYPE || CarriesClassName(static_cast<std::uint16_t>(code)))
        data.Write(std::string_view("Class"));
    if (code == eNO_TYPE)
        stream.WriteZeros(8);
    data.Write(std::uint8_t{8});
    data.Write(size);
    for (const std::uint64_t number : numbers)
        data.Write(number);
    stream.WriteZeros(40);
    return {reinterpret_cast<const char*>(stream.GetBytes().data()), stream.GetSize()};
}

std::string NestedElements(const std::string& name, std::size_t levels) {
    std::string document;
    for (const std::string& tag : {'<' + name + '>', "</" + name + '>'})
        for (std::size_t level = 0; level < levels; ++level)
            document += tag;
    return document;
}

std::string Nested(const Form& form, std::size_t levels) {
    return IsXML(form) ? NestedElements("DataContainer", levels) : NestedBytes(levels);
}

std::string LongName(std::string front, std::uint32_t length) {
    front.append(reinterpret_cast<const char*>(&length), sizeof length);
    return front + std::string(40, 'x');
}

std::vector<std::string> BinaryBombs() {
    std::vector<std::string> bombs;
    for (const std::uint64_t size : bombSizes)
        for (const ETypeID code : bombCodes)
            bombs.push_back(Bomb(code, size));
    for (const auto& [size1, size2] : bombExtents)
        for (const ETypeID code : {eMATRIX_DOUBLE, eMATRIX_INT8, eFORTRAN_MATRIX_COMPLEX})
            for (const std::uint64_t size : {most, size1 * size2 * 8 + 16})
                bombs.push_back(Bomb(code, size, {size1, size2}));
    const std::string key(4, '\0');
    for (const std::uint32_t length : {0xFFFFFFFFu, 0x80000000u, 0x100001u, 0x100000u, 0x10001u, 0x10000u, 41u}) {
        bombs.push_back(LongName("", length));
        for (const std::string& front : {key + "\x7C", key + std::string("\0", 1), key + std::string("\0\0\0\0\0", 5),
                                         key + std::string("\0\0\0\0\0\0\0\0\0", 9)})
            bombs.push_back(LongName(front, length));
    }
    return bombs;
}

std::string EntryElement(ETypeID code, const std::string& size, const char* encoding, const std::string& content) {
    return "<DataContainer><Data key='k' typename='Class' typeid='" + std::to_string(code) + "' size='" + size +
           "' encoding='def/" + encoding + "'>" + content + "</Data></DataContainer>";
}

std::vector<std::string> XMLBombs() {
    std::vector<std::string> bombs;
    for (const ETypeID code : bombCodes) {
        bombs.push_back(EntryElement(code, "99999999999999999999999", "base64", "AAAA"));
        for (const std::uint64_t size : bombSizes)
            for (const auto& [encoding, content] :
                 {std::pair("base64", "AAAA"), {"base64", "<![CDATA[AAAA]]>"}, {"hex64", "FFFFFFFFFFFFFFFF"}})
                bombs.push_back(EntryElement(code, std::to_string(size), encoding, content));
    }
    for (const auto& [size1, size2] : bombExtents)
        for (const std::uint64_t size : {most, size1 * size2 * 8 + 16}) {
            const std::uint64_t numbers[] = {size1, size2, 0, 0};
            const std::string text = Core::EncodeBase64({reinterpret_cast<const char*>(numbers), sizeof numbers});
            bombs.push_back(EntryElement(eMATRIX_DOUBLE, std::to_string(size), "base64", text));
        }
    return bombs;
}

/// Cuts and changes the bytes at every `step`-th position; returns how many changed ones were accepted.
int AcceptedAfterDamage(const Form& form, const std::string& bytes, std::size_t step) {
    int accepted = 0;
    const std::size_t end = IsXML(form) ? bytes.rfind('>') + 1 : bytes.size();
    for (const ESource source : allSources)
        EXPECT_TRUE(Withstands(form, source, bytes));
    for (std::size_t position = 0; position < bytes.size() && !testing::Test::HasFailure(); position += step) {
        SCOPED_TRACE(position);
        const ESource source = allSources[position % std::size(allSources)];
        EXPECT_EQ(Withstands(form, source, bytes.substr(0, position)), position >= end) << "cut";
        for (const std::string& changed : ChangesOf(form, bytes, position))
            accepted += Withstands(form, source, changed) ? 1 : 0;
    }
    return accepted;
}

} // namespace

class DamagedFile : public testing::TestWithParam<std::tuple<Form, Sample>> {};

TEST_P(DamagedFile, IsAnObjectOrOneErrorWhicheverByteIsWrong) {
    const auto& [form, sample] = GetParam();
    const std::string bytes = BytesOf(form, sample);
    EXPECT_TRUE(AcceptedAfterDamage(form, bytes, 1) > 0 || sample.name == std::string("Empty"));
}

INSTANTIATE_TEST_SUITE_P(, DamagedFile, testing::Combine(testing::ValuesIn(allForms), testing::ValuesIn(samples)),
                         [](const auto& row) {
                             return std::string(std::get<0>(row.param).name) + std::get<1>(row.param).name;
                         });

class DamagedGoldenFile : public testing::TestWithParam<Form> {};

// Together they hold every class.
TEST_P(DamagedGoldenFile, IsAnObjectOrOneError) {
    const Form& form = GetParam();
    for (const auto& file : std::filesystem::directory_iterator(TIVOR_TEST_DATA "/golden"))
        if (const Core::PathName path(file.path().string()); path.GetExtension() == "qordata") {
            SCOPED_TRACE(path.GetFileName());
            DataContainer container;
            ReadInto(container, Core::Testing::ReadFileText(path).substr(12));
            const std::string bytes = form.write(container);
            EXPECT_GT(AcceptedAfterDamage(form, bytes, 1 + bytes.size() / (IsXML(form) ? 30 : 400)), 0);
        }
}

INSTANTIATE_TEST_SUITE_P(, DamagedGoldenFile, testing::ValuesIn(allForms),
                         [](const auto& form) { return std::string(form.param.name); });

TEST(DamagedFiles, NoClaimIsPaidForInAdvance) {
    for (const Form& form : allForms) {
        const std::vector<std::string> bombs = IsXML(form) ? XMLBombs() : BinaryBombs();
        for (std::size_t number = 0; number < bombs.size(); ++number)
            for (const ESource source : allSources) {
                SCOPED_TRACE(testing::Message()
                             << form.name << " bomb " << number << ", source " << static_cast<int>(source));
                EXPECT_FALSE(Withstands(form, source, bombs[number]));
            }
    }
}

// Honest files of the smallest entries keep to the bound as well, and so does one key again and again.
TEST(DamagedFiles, CrowdsKeepToTheBound) {
    const auto emptied = Data2D::Create();
    emptied->GetContent()->Clear();
    const auto emptiedSet = MakeData(DataSet());
    emptiedSet->GetValue().GetContent()->Clear();
    const std::shared_ptr<DataObject> smallest[] = {
        MakeData(true),
        MakeData(std::wstring()),
        MakeData(RowMajorMatrix<char>()),
        std::make_shared<DataContainerWrapper>(),
        MakeScalar(eSIGNED_INTEGRAL_TYPE, 1),
        MakeData(*emptied),
        emptiedSet,
        MakeData(Data1D()),
        MakeData(Data2D(MakeData(RowMajorMatrix<char>()))),
    };
    const auto start = std::chrono::steady_clock::now();
    for (const auto& object : smallest)
        for (const bool oneKey : {false, true}) {
            const std::string behindKey = Stored(*object, "").substr(4);
            const std::size_t count = 100'000 / behindKey.size();
            std::string bytes;
            for (std::size_t i = 0; i < count; ++i) {
                const std::string key = oneKey ? "" : std::to_string(i);
                bytes += static_cast<char>(key.size()) + std::string(3, '\0') + key + behindKey;
            }
            bytes += Stored(DataContainer());
            DataContainer container;
            EXPECT_TRUE(IsRead(binaryForm, ESource::eMEMORY, bytes, container));
            EXPECT_EQ(container.NumDataObjects(), oneKey ? 1u : count);
            EXPECT_TRUE(*container.Clone() == container);
        }
    DataContainer crowd;
    for (int i = 0; i < 20'000; ++i)
        crowd.PutValue(std::to_string(i), true);
    const auto crowded = Data2D::Create();
    crowded->InputProperties(crowd);
    for (const Form& form : allForms) {
        DataContainer container;
        container.PutValue("", *crowded);
        EXPECT_TRUE(IsRead(form, ESource::eMEMORY, form.write(container), container));
        EXPECT_TRUE(*container.GetPtr<Data2D>("") == *crowded);
    }
    EXPECT_LT(SecondsSince(start), 40);
}

TEST(DamagedFiles, DeepestFilesFitASmallStack) {
    RunOnSmallStack([] {
        for (const Form& form : allForms)
            for (const ESource source : allSources)
                EXPECT_TRUE(Withstands(form, source, Nested(form, mostLevels)));
        const auto container = DataContainer::Create();
        EXPECT_TRUE(IsRead(xmlForm, ESource::eMEMORY, Nested(xmlForm, mostLevels), *container));
        EXPECT_EQ(Stored(*container), NestedBytes(mostLevels));
        auto clone = container->Clone();
        EXPECT_TRUE(*clone == *container);
        clone->GetSubData(std::vector<std::string>(mostLevels - 1, ""), false)->PutValue("leaf", 1);
        EXPECT_FALSE(*clone == *container);
        EXPECT_EQ(clone->Get("")->ToString(), "DataContainer with 1 entries");
        std::vector<std::shared_ptr<Core::Lock>> locks;
        clone->AcquireLocks(locks);
        EXPECT_GE(locks.size(), mostLevels);
        const Core::Testing::TemporaryDirectory directory;
        for (const TestedType& type : testedTypes) {
            const std::string path = (directory / type.extension).ToString();
            const auto file = type.open(path, DataFile::eREAD_WRITE, DataFile::eCREATE_NEW, clone);
            file->Flush();
            file->Close();
            EXPECT_TRUE(*type.open(path, DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, nullptr) == *clone);
        }
    });
}

TEST(DamagedFiles, TooDeepIsRefusedHoweverItComesAbout) {
    RunOnSmallStack([] {
        for (const std::size_t levels : {mostLevels + 1, std::size_t{100'000}}) {
            for (const Form& form : allForms)
                for (const ESource source : allSources)
                    EXPECT_FALSE(Withstands(form, source, Nested(form, levels)));
            const auto container = DataContainer::Create();
            EXPECT_THROW(container->GetSubData(std::vector<std::string>(levels - 1, "k"), true), Core::LogicError);
        }
        DataContainer container;
        EXPECT_EQ(
            Core::Testing::RaisedBy<LimitExceeded>([&] { ReadInto(container, NestedBytes(mostLevels + 1)); }).GetText(),
            "Containers are nested deeper than the 256 levels that are allowed");
    });
}

/// Counts what its hooks hear.
class HearingContainer final : public DataContainer {
public:
    HearingContainer() { ReceiveChanges(); }
    ~HearingContainer() override { StopChanges(); }

    std::vector<std::string> heard;

protected:
    void OnDataValueChanged(const std::string& key, std::shared_ptr<DataObject>) override { heard.push_back(key); }
};

// 2^200 ways lead from the top to the bottom.
TEST(DamagedFiles, ManyWaysToOneObjectCostNoMoreThanTheirSteps) {
    constexpr int levels = 200;
    const auto start = std::chrono::steady_clock::now();
    for (const bool fromBottom : {true, false}) {
        const auto leaf = MakeData(1);
        HearingContainer top;
        std::vector<std::shared_ptr<DataContainer>> chain(levels);
        std::generate(chain.begin(), chain.end(), [] { return DataContainer::Create(); });
        const auto join = [&](std::size_t level) {
            DataContainer& above = level == 0 ? static_cast<DataContainer&>(top) : *chain[level - 1];
            above.Put("a", chain[level]);
            above.Put("b", chain[level]);
        };
        for (std::size_t i = 0; i < chain.size(); ++i)
            join(fromBottom ? chain.size() - 1 - i : i);
        chain.back()->Put("leaf", leaf);
        top.heard.clear();
        leaf->SetValue(2);
        std::sort(top.heard.begin(), top.heard.end());
        EXPECT_EQ(top.heard, (std::vector<std::string>{"a", "b"}));
        EXPECT_THROW(chain.back()->Put("c", chain.front()), Core::LogicError);
        std::vector<std::shared_ptr<Core::Lock>> locks;
        top.AcquireLocks(locks);
        EXPECT_EQ(locks.size(), levels + 1u);
        EXPECT_EQ(Stored(*chain[levels - 8]).size(), chain[levels - 8]->GetDataSize_bytes());
    }
    EXPECT_LT(SecondsSince(start), 20);
}

} // namespace Qor::Tivor::Testing
