#include "Alerts.h"
#include "MarkedFile.h"
#include "StoredBytes.h"
#include "TemporaryDirectory.h"
#include "Threads.h"

#include <QorCore/Log.h>
#include <Tivor/BinaryDataFile.h>
#include <Tivor/DataFileTypeManager.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <optional>

namespace Qor::Tivor::Testing {

namespace {

using namespace Core::Testing;
using Names = std::vector<std::string>;

const std::string binary = "QOR Binary Data File";

DataFileTypeManager& Manager() { return DataFileTypeManager::Instance(); }

/// The lines that are logged about data files while it lives.
class LogLines {
public:
    LogLines() {
        m_former = Core::SetLogSink([this](const std::string& category, const std::string& text) {
            const std::lock_guard guard(m_mutex);
            if (category == "Qor.Tivor.DataFile")
                m_lines.push_back(text);
        });
    }
    LogLines(const LogLines&) = delete;
    LogLines& operator=(const LogLines&) = delete;
    ~LogLines() { Core::SetLogSink(m_former); }

    Names Take() { return std::exchange(m_lines, {}); }

private:
    std::mutex m_mutex;
    Names m_lines;
    Core::LogSink m_former;
};

std::shared_ptr<MarkedFileFactory> Registered(const std::string& fileType, const std::string& mark,
                                              const Names& extensions) {
    const auto factory = std::make_shared<MarkedFileFactory>(fileType, mark, extensions);
    Manager().SetFactory(factory);
    return factory;
}

std::string MarkedContent(const std::string& mark) {
    DataContainer container;
    container.PutValue("n", 7);
    return mark + Stored(container);
}

std::string BinaryContent() { return MarkedContent(Bytes("'QOR DATA' 01 0000 'A'")); }

/// The type of what is opened, "-" for nothing, or the name of the error.
template <class Operation>
std::string Opened(Operation operation, const std::string& fileName) {
    try {
        const std::shared_ptr<DataFile> file = operation();
        EXPECT_TRUE(!file || (file->IsOpen() && file->GetFileName() == fileName));
        return file ? file->GetFileType() : "-";
    } catch (const Core::Error& error) {
        EXPECT_TRUE(fileName.empty() || error.GetVariable("File") == fileName) << error.ToString();
        return error.GetTypeName();
    }
}

std::span<const std::byte> AsBytes(const std::string& text) { return std::as_bytes(std::span(text)); }

} // namespace

class FileTypes : public testing::Test {
protected:
    FileTypes() {
        Registered("A", "MA", {"aa", "Shared"});
        Registered("B", "MB", {"bb", "shared", "dataset"});
        Registered("As A", "MA", {"also"});
        Registered("Error", "ME", {"ee"})->onTest = [] {
            Core::Error::RaiseError(Core::LogicError("raised"), QOR_CODE_CONTEXT("Test"), "Test");
        };
        Registered("Int", "MI", {"ii"})->onTest = [] { throw 7; };
        Manager().SetDefault("");
    }
    ~FileTypes() override { Manager().SetDefault(""); }
};

TEST_F(FileTypes, AreReplacedWithAWarning) {
    LogLines log;
    const std::string registered = "Registered DataFile type: R";
    const std::string replacing = "Replacing registered DataFile::Factory for R";
    const auto first = Registered("R", "R1", {"r1"});
    EXPECT_EQ(log.Take().back(), registered);
    const std::size_t count = Manager().GetFactories().size();
    const auto replacement = std::make_shared<MarkedFileFactory>("R", "R2", Names{"R2"});
    for (const bool isRefused : {true, false}) {
        const Warnings warnings(isRefused);
        EXPECT_EQ(ErrorOf([&] { Manager().SetFactory(replacement); }), isRefused ? "Error [] refused" : "");
        EXPECT_EQ(Manager().GetFactory("R"), isRefused ? first : replacement);
        EXPECT_EQ(Manager().FindFactoryByExtension("x.r1"), isRefused ? first : nullptr);
        EXPECT_EQ(warnings.Tell(), Names{"ReplacingDataFileFactory [Qor.Tivor.DataFile] " + replacing});
        const std::string logged = "ReplacingDataFileFactory: " + replacing;
        EXPECT_EQ(log.Take(), isRefused ? Names{logged} : (Names{logged, registered}));
    }
    EXPECT_EQ(Manager().FindFactoryByExtension("x.r2"), replacement);
    std::unordered_map<std::string, std::string> fileTypes;
    DataFile::EnumFileTypes(fileTypes);
    EXPECT_EQ(fileTypes.at("R"), "begins with R2");
    EXPECT_EQ(fileTypes.size(), count);
    RaisedBy<Core::NullPointerError>([] { Manager().SetFactory(nullptr); });
    RaisedBy<Core::LogicError>([] { Manager().SetFactory(std::make_shared<MarkedFileFactory>("", "C")); });
    EXPECT_TRUE(log.Take().empty());
}

TEST_F(FileTypes, AreFoundByTheirClass) {
    const auto factory = std::make_shared<MarkedFileFactory>("Of a class", "C");
    RaisedBy<InvalidDataFileType>([] { DataFile::GetFactory<MarkedFile>(); });
    RaisedBy<InvalidDataFileType>([] { DataFile::SetDefault<MarkedFile>(); });
    DataFile::SetFactory<MarkedFile>(factory);
    EXPECT_EQ(DataFile::GetFactory<MarkedFile>(), factory);
    EXPECT_EQ(Manager().GetFactory("Of a class"), factory);
    EXPECT_EQ(DataFile::GetFactory<BinaryDataFile>(), Manager().GetFactory(binary));
    DataFile::SetDefault<MarkedFile>();
    EXPECT_EQ(DataFile::GetDefaultFileType(), "Of a class");
    const auto byName = Registered("Of a class", "D", {});
    EXPECT_EQ(DataFile::GetFactory<MarkedFile>(), byName) << "the name keeps its class";
    const auto other = std::make_shared<MarkedFileFactory>("Of that class now", "C");
    DataFile::SetFactory<MarkedFile>(other);
    EXPECT_EQ(DataFile::GetFactory<MarkedFile>(), other);
    EXPECT_EQ(Manager().GetFactory("Of a class"), byName);
}

TEST_F(FileTypes, HaveADefault) {
    LogLines log;
    const Warnings warnings;
    const std::string text = "Default DataFile type was not set, auto setting it to " + binary;
    EXPECT_EQ(DataFile::GetDefaultFileType(), "");
    EXPECT_TRUE(log.Take().empty());
    for (const char* const after : {"first", "second"}) {
        EXPECT_EQ(Manager().GetDefaultFactory(), Manager().GetFactory(binary)) << after;
        EXPECT_EQ(DataFile::GetDefaultFileType(), binary);
    }
    EXPECT_EQ(log.Take(),
              (Names{"Default DataFile type automatically set to " + binary, "NoDefaultDataFile: " + text}));
    DataFile::SetDefaultFileType("A");
    const std::string missing = "InvalidDataFileType [Qor.Tivor.DataFile] Missing installed data file type: ";
    EXPECT_EQ(ErrorOf([] { DataFile::SetDefaultFileType("None"); }), missing + "None");
    EXPECT_EQ(ErrorOf([] { Manager().GetFactory("a"); }), missing + "a");
    EXPECT_EQ(Manager().GetDefaultFactory(), Manager().GetFactory("A"));
    DataFile::SetDefaultFileType("");
    EXPECT_EQ(DataFile::GetDefaultFileType(), "");
    EXPECT_EQ(warnings.Tell(), Names{"NoDefaultDataFile [Qor.Tivor.DataFile] " + text});
}

TEST_F(FileTypes, OfFilesAreChosen) {
    const auto existing = DataFile::eOPEN_EXISTING;
    const std::string a = MarkedContent("MA");
    const std::string b = MarkedContent("MB");
    const std::string data = BinaryContent();
    const std::string unknown = "UnknownDataFileType";
    struct Row {
        const char* name;
        std::optional<std::string> content;
        int behavior;
        const char* fileType;
        std::string outcome;
    };
    const Row rows[] = {
        {"f.aa", std::nullopt, existing, "", "-"},
        {"f.aa", std::nullopt, DataFile::eOPEN_ALWAYS, "", "B"}, // the default
        {"f.aa", std::nullopt, DataFile::eCREATE_ALWAYS, "", "B"},
        {"f.aa", std::nullopt, DataFile::eCREATE_NEW, "", "B"},
        {"f.bb", std::nullopt, DataFile::eCREATE_NEW, "A", "A"},
        {"f.bb", std::nullopt, DataFile::eCREATE_NEW, "None", "InvalidDataFileType"},
        {"f.aa", a, existing, "", "A"},
        {"f.aa", data, DataFile::eOPEN_ALWAYS, "", binary},
        {"f.AA", "", existing, "", "A"},
        {"f.sHARED", a, existing, "", "A"},
        {"f.shared", b, existing, "", "B"},
        {"f.also", a, existing, "", "As A"},
        {"d.also/f", a, existing, "", "A"},
        {"f.x", a, existing, "", "A"},
        {"f.aa", a, DataFile::eCREATE_ALWAYS, "", "B"},
        {"f.aa", a, DataFile::eCREATE_ALWAYS, "As A", "As A"},
        {"f.aa", a, DataFile::eCREATE_NEW, "", "-"},
        {"f.aa", "MX and more", existing, "", unknown},
        {"f.aa", "MX and more", DataFile::eOPEN_ALWAYS, "", unknown},
        {"f.aa", "MX and more", existing, "A", "IOError"},
        {"f.aa", "MX and more", existing, "None", "InvalidDataFileType"},
        {"f.shared", "", DataFile::eOPEN_ALWAYS, "", "A"},
        {"f.dataset", "", existing, "", binary},
        {"f.x", "", existing, "", unknown},
        {".aa", "", existing, "", unknown},
        {"f.aa", "MA", existing, "", "EndOfStreamOnInput"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.name) + ": " + row.content.value_or("none") + ' ' + std::to_string(row.behavior));
        Manager().SetDefault("B");
        const TemporaryDirectory directory;
        const std::string path = (directory / row.name).ToString();
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        if (row.content)
            WriteFileText(Core::PathName(path), *row.content);
        const auto container = DataContainer::Create();
        const auto open = [&] {
            return DataFile::Open(path, DataFile::eREAD_WRITE, static_cast<DataFile::EOpenBehavior>(row.behavior),
                                  row.fileType, container);
        };
        EXPECT_EQ(Opened(open, path), row.outcome);
        const bool isRead = row.content.value_or("").size() > 3 && row.behavior < 2 &&
                            row.outcome.find("Type") == row.outcome.npos &&
                            row.outcome.find("Error") == row.outcome.npos;
        EXPECT_EQ(Keys(*container), isRead ? "n " : "");
    }
}

TEST_F(FileTypes, SayWhyTheyDecline) {
    const TemporaryDirectory directory;
    const std::string path = (directory / "f.aa").ToString();
    WriteFileText(Core::PathName(path), "MX!");
    const auto error = RaisedBy<UnknownDataFileType>(
        [&] { DataFile::Open(path, DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, "", nullptr); });
    EXPECT_EQ(error.GetText(), "Failed to determine file type of " + path + ", unable to open file");
    EXPECT_EQ(error.GetCategory(), "Qor.Tivor.DataFile");
    const std::pair<std::string, std::string> rows[] = {
        {"A", "it is not a file of this type"},
        {"B", "it is not a file of this type"},
        {"Error", "raised"},
        {"Int", "an exception of unknown type"},
        {binary, "its 3 bytes do not begin with a header of 12 bytes, the first of them \"QOR DATA\""},
        {"QOR XML Data File", "it is no XML document whose first element is <DataContainer>"},
        {"File", path}};
    for (const auto& [name, value] : rows)
        EXPECT_EQ(error.GetVariable(name), value);
    EXPECT_EQ(error.GetVariables().size(), Manager().GetFactories().size() + 1);
    EXPECT_EQ(error.GetVariables().front().name, "A") << "that of the extension is asked first";
    EXPECT_EQ(RaisedBy<UnknownDataFileType>([] { Manager().FindFactoryFor(AsBytes("MX!")); }).GetVariable("Error"),
              "raised");
}

TEST_F(FileTypes, PassOnWhatTheirFilesRaise) {
    const TemporaryDirectory directory;
    const std::string path = (directory / "f.fail").ToString();
    WriteFileText(Core::PathName(path), "MF");
    const auto factory = Registered("Fails", "MF", {"fail"});
    const auto open = [&] { return DataFile::Open(path, DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, "", nullptr); };
    factory->onOpen = [] { throw ClosedDataFileError("mine"); };
    EXPECT_EQ(RaisedBy<ClosedDataFileError>(open).ToString(), "ClosedDataFileError [] mine; File = " + path);
    factory->onOpen = [] { throw std::runtime_error("other"); };
    EXPECT_THROW(open(), std::runtime_error);
}

TEST_F(FileTypes, OfContentInMemoryAreChosen) {
    const std::string a = MarkedContent("MA");
    const std::string b = MarkedContent("MB");
    const std::tuple<std::string, const char*, std::string> rows[] = {
        {a, "", "A"},
        {b, "", "B"},
        {a, "As A", "As A"},
        {BinaryContent(), "", binary},
        {"", "", "B"}, // the default
        {"", "A", "A"},
        {"MX", "", "UnknownDataFileType"},
        {"MX", "A", "IOError"},
        {a, "None", "InvalidDataFileType"},
        {"MA", "", "EndOfStreamOnInput"},
    };
    for (const auto& [content, fileType, outcome] : rows) {
        SCOPED_TRACE(content + " as " + fileType);
        Manager().SetDefault("B");
        EXPECT_EQ(Opened(
                      [&, &content = content, &fileType = fileType] {
                          return DataFile::OpenMemory(AsBytes(content), DataFile::eREAD_ONLY, fileType, nullptr);
                      },
                      ""),
                  outcome);
    }
}

TEST(FileTypesThreads, AreUsedByAllAtOnce) {
    const TemporaryDirectory directory;
    const std::string data = (directory / "f.t0").ToString();
    WriteFileText(Core::PathName(data), BinaryContent());
    OnThreads(8, [&](int i) {
        const std::string name = "t" + std::to_string(i % 4);
        for (int round = 0; round < 50; ++round) {
            const Warnings warnings;
            const auto own = Registered(name, name, {name});
            const auto file = DataFile::Open(data, DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, "", nullptr);
            EXPECT_TRUE(file && file->GetFileType() == binary);
            std::unordered_map<std::string, std::string> fileTypes;
            DataFile::EnumFileTypes(fileTypes);
            EXPECT_EQ(fileTypes.count(name), 1u);
            EXPECT_EQ(Manager().FindFactoryByExtension("f." + name)->GetFileType(), name);
            DataFile::SetDefaultFileType(round % 2 == 0 ? "" : name);
            EXPECT_TRUE(Manager().GetDefaultFactory());
            DataFile::LoadPlugIns(directory.GetPath().ToString());
        }
    });
    const auto factories = Manager().GetFactories();
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(std::count_if(factories.begin(), factories.end(),
                                [&](const auto& one) { return one->GetFileType() == "t" + std::to_string(i); }),
                  1);
    Manager().SetDefault("");
}

} // namespace Qor::Tivor::Testing
