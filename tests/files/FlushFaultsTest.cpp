#include "Alerts.h"
#include "FaultyFileSystem.h"
#include "ForeignObject.h"
#include "StoredBytes.h"
#include "TemporaryDirectory.h"
#include "TestHeap.h"
#include "TestedTypes.h"

#include <QorCore/MemoryStreams.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>

namespace Qor::Tivor::Testing {

namespace {

using namespace Core::Testing;

std::shared_ptr<DataContainer> Content(int number, std::size_t size) {
    auto container = DataContainer::Create();
    container->PutValue("number", number);
    container->GetSubData({"nested", "deeper"}, true)->PutValue("text", std::string(size, 't'));
    container->PutValue("matrix", RowMajorMatrix<double>(2, 0));
    return container;
}

bool IsFlushed(DataFile& file) {
    try {
        file.Flush();
    } catch (const Core::Error& error) {
        EXPECT_FALSE(error.GetVariable("File").empty());
        return false;
    } catch (...) {
        return false;
    }
    return true;
}

/// One file with changes to be saved, and what must hold after a save that may have failed.
class Saving {
public:
    explicit Saving(const TestedType& type) : m_type(type) {
        m_old = m_type.fileOf(*Content(1, size));
        WriteFileText(m_path, m_old);
        EXPECT_TRUE(m_file.Open(m_path.ToString(), DataFile::eREAD_WRITE, DataFile::eOPEN_EXISTING, m_bound));
        Change();
    }

    void Change() {
        static_cast<DataContainer&>(m_file).Assign(*Content(++m_number, size + 1000));
        m_new = m_type.fileOf(m_file);
        EXPECT_TRUE(m_file.IsModified());
    }

    StreamedDataFile& GetFile() { return m_file; }

    void ExpectOldOrNew(bool flushed) {
        const std::string now = ReadFileText(m_path);
        EXPECT_TRUE(now == m_new || (!flushed && now == m_old)) << now.size() << " bytes";
        EXPECT_TRUE(m_file.IsOpen());
        EXPECT_EQ(m_file.IsModified(), !flushed);
        ExpectNothingHeld(m_file);
    }
    void ExpectOld() {
        EXPECT_EQ(ReadFileText(m_path), m_old);
        ExpectOldOrNew(false);
    }

    void ExpectNextFlushSucceeds() {
        Change();
        EXPECT_TRUE(IsFlushed(m_file));
        EXPECT_EQ(ReadFileText(m_path), m_new);
        const auto fresh = m_type.make();
        EXPECT_TRUE(fresh->OpenMemory(std::as_bytes(std::span(m_new)), DataFile::eREAD_ONLY, nullptr));
        EXPECT_TRUE(*fresh == m_file);
        EXPECT_EQ(fresh->NumDataObjects(), 3u);
        m_old = m_new;
    }

private:
    static constexpr std::size_t size = 100'000;

    const TestedType& m_type;
    TemporaryDirectory m_directory;
    Core::PathName m_path = m_directory / "data.bin";
    int m_number = 1;
    std::shared_ptr<DataContainer> m_bound = DataContainer::Create();
    std::shared_ptr<StreamedDataFile> m_owner = m_type.make();
    StreamedDataFile& m_file = *m_owner;
    std::string m_old;
    std::string m_new;
};

} // namespace

class FlushFaults : public testing::TestWithParam<TestedType> {};

INSTANTIATE_TEST_SUITE_P(, FlushFaults, testing::ValuesIn(testedTypes),
                         [](const auto& type) { return std::string(type.param.name); });

// The writer of files has a sweep of its own, of more faults.
TEST_P(FlushFaults, LeaveOldOrNewWhicheverCallFails) {
    for (const auto& [forEver, replacesOpenFiles] :
         {std::pair(true, true), {true, false}, {false, true}, {false, false}}) {
        int n = 0;
        for (bool met = true; met && !HasFailure();) {
            SCOPED_TRACE(++n);
            FaultyFileSystem faults;
            faults.SetReplacesOpenFiles(replacesOpenFiles && faults.ReplacesOpenFiles());
            Saving saving(GetParam());
            faults.FailCall(n, EFault::eIO, forEver);
            const bool flushed = IsFlushed(saving.GetFile());
            faults.Heal();
            met = faults.FaultsMade() != 0;
            EXPECT_TRUE(flushed || met);
            saving.ExpectOldOrNew(flushed);
            saving.ExpectNextFlushSucceeds();
        }
        EXPECT_GT(n, 5) << "the save made hardly any call";
    }
}

TEST_P(FlushFaults, ASerializerThatThrowsLeavesTheOldFile) {
    const std::function<void()> faults[] = {
        [] { throw Core::LogicError("no"); },
        [] { throw std::runtime_error("no"); },
        [] { throw std::bad_alloc(); },
        [] { throw 1; },
    };
    for (const auto& fault : faults)
        for (const bool whenWriting : {true, false})
            for (const bool isNested : {true, false}) {
                Saving saving(GetParam());
                const auto foreign = std::make_shared<ForeignObject>();
                foreign->written = "half";
                foreign->announced = 8;
                (whenWriting ? foreign->onWrite : foreign->onSize) = fault;
                (isNested ? *saving.GetFile().GetSubData({"nested"}, true) : saving.GetFile()).Put("odd", foreign);
                EXPECT_FALSE(IsFlushed(saving.GetFile()));
                saving.ExpectOld();
                saving.ExpectNextFlushSucceeds();
            }
}

TEST_P(FlushFaults, OpenThatFailsLeavesAClosedFileAndTheContainer) {
    const TemporaryDirectory directory;
    const Core::PathName path = directory / "data.bin";
    const auto content = Content(1, 200'000);
    WriteFileText(path, GetParam().fileOf(*content));
    for (const auto& [fault, forEver] : {std::pair(EFault::eIO, true), {EFault::eINTERRUPTED, false}}) {
        int n = 0;
        for (bool met = true; met && !HasFailure();) {
            SCOPED_TRACE(++n);
            FaultyFileSystem faults;
            const auto owner = GetParam().make();
            StreamedDataFile& file = *owner;
            const auto container = DataContainer::Create();
            container->PutValue("kept", 1);
            const auto kept = container->Get("kept");
            faults.FailCall(n, fault, forEver);
            bool open = false;
            try {
                open = file.Open(path.ToString(), DataFile::eREAD_WRITE, DataFile::eOPEN_EXISTING, container);
            } catch (const Core::IOError& error) {
                EXPECT_EQ(error.GetVariable("File"), path.ToString());
            }
            faults.Heal();
            met = faults.FaultsMade() != 0;
            EXPECT_TRUE(open || met);
            EXPECT_EQ(file.IsOpen(), open);
            EXPECT_TRUE(open ? *container == *content && file == *content
                             : file.IsEmpty() && file.GetFileName().empty() && container->NumDataObjects() == 1 &&
                                   container->Get("kept") == kept);
            ExpectNothingHeld(*container);
        }
        EXPECT_GT(n, 2);
    }
}

namespace {

/// What operations that run out of memory work on.
struct Scene {
    explicit Scene(const TestedType& testedType)
        : type(testedType),
          owner(type.open((directory / "data").ToString(), DataFile::eREAD_WRITE, DataFile::eCREATE_NEW, container)),
          file(*owner) {
        file.Flush();
        above.Put("container", container);
        other->GetSubData({"n", "m"}, true)->PutValue("w", std::wstring(40, L'w'));
        other->PutValue("number", 5);
        other->PutValue("matrix", RowMajorMatrix<double>(2, 0));
        bytes = Stored(*other);
        document = StoredXML(*other);
        container->PutValue("changed", 1);
    }

    /// Everything that an operation may change, as far as it can be seen.
    std::string See() const {
        std::string seen = Stored(above) + Stored(*other);
        std::vector<std::string> keys;
        container->EnumData(keys);
        for (const std::string& key : keys)
            EXPECT_TRUE(container->Exists(key));
        EXPECT_EQ(container->NumDataObjects(), keys.size());
        return seen + (ReadFileText(directory / "data") == type.fileOf(file) ? " saved" : " not saved");
    }

    /// Whether the objects that stand there still tell their containers, each of them once.
    void ExpectChangesAreHeard() {
        file.Flush();
        EXPECT_FALSE(file.IsModified());
        for (const DataContainer::Entry& entry : *container)
            if (const auto nested = std::dynamic_pointer_cast<DataContainerWrapper>(entry.object)) {
                nested->GetData()->PutValue("late", 1);
                EXPECT_TRUE(file.IsModified()) << entry.key;
                file.Flush();
            }
        EXPECT_EQ(ReadFileText(directory / "data"), type.fileOf(file));
    }

    const TestedType& type;
    FaultyFileSystem files; ///< without faults; it does not wait for the disk
    TemporaryDirectory directory;
    std::shared_ptr<DataContainer> container = Content(1, 100);
    std::shared_ptr<DataContainer> empty = container->GetSubData({"empty"}, true);
    std::shared_ptr<StreamedDataFile> owner;
    StreamedDataFile& file;
    DataContainer above;
    std::shared_ptr<DataContainer> other = DataContainer::Create();
    std::string bytes;
    std::string document;
};

struct Operation {
    const char* name;
    void (*run)(Scene& scene);
    bool undoes = false; ///< what was done before the failure is undone, which may take memory
    const TestedType& type = binaryType;
};

const Operation operations[] = {
    {"Put", [](Scene& s) { s.container->Put("number", s.other->Get("number")); }},
    {"PutNew", [](Scene& s) { s.container->Put("a rather long key, for the heap", s.other->Get("n")); }},
    {"PutOverContainer", [](Scene& s) { s.container->Put("nested", s.other->Get("n")); }},
    {"PutValueNew", [](Scene& s) { s.container->PutValue("value", std::wstring(30, L'v')); }},
    {"GetSubData", [](Scene& s) { s.container->GetSubData({"another"}, true); }},
    {"Remove", [](Scene& s) { s.container->Remove("nested"); }},
    {"Clear", [](Scene& s) { s.container->Clear(); }},
    {"Append", [](Scene& s) { s.container->Append(*s.other); }, true},
    {"Assign", [](Scene& s) { s.container->Assign(*s.other); }, true},
    {"CloneContents", [](Scene& s) { s.container->CloneContents(*s.other); }, true},
    {"InputData", [](Scene& s) { ReadInto(*s.container, s.bytes); }, true},
    {"InputDataOfEmpty", [](Scene& s) { ReadInto(*s.empty, s.bytes); }, true},
    {"InputXML", [](Scene& s) { ReadXMLInto(*s.container, s.document); }, true},
    {"OutputData", [](Scene& s) { Stored(*s.container); }},
    {"OutputXML", [](Scene& s) { StoredXML(*s.container); }},
    {"Clone", [](Scene& s) { EXPECT_TRUE(s.container->Clone()); }},
    {"SetData",
     [](Scene& s) { std::static_pointer_cast<DataContainerWrapper>(s.container->Get("nested"))->SetData(s.other); }},
    {"Flush", [](Scene& s) { s.file.Flush(); }},
    {"FlushXML", [](Scene& s) { s.file.Flush(); }, false, xmlType},
};

} // namespace

class OutOfMemory : public testing::TestWithParam<Operation> {};

TEST_P(OutOfMemory, LeavesEverythingAsBeforeOrComplete) {
    std::string before;
    std::string after;
    {
        Scene scene(GetParam().type);
        before = scene.See();
        GetParam().run(scene);
        after = scene.See();
    }
    for (const bool forEver : {false, true}) {
        int n = 0;
        for (bool failed = true; failed && !HasFailure() && n < 2000;) {
            SCOPED_TRACE(testing::Message() << "allocation " << ++n << (forEver ? " and all that follow" : ""));
            Scene scene(GetParam().type);
            bool finished = false;
            try {
                const FailingHeap heap(n, forEver);
                try {
                    GetParam().run(scene);
                    finished = true;
                } catch (const std::exception&) {
                    // bad_alloc, or what was made of it
                }
                failed = heap.HasFailed();
            } catch (...) {
                ADD_FAILURE() << "no standard exception";
            }
            const std::string seen = scene.See();
            // Where even undoing finds no memory, the container is left in between, and sound.
            EXPECT_TRUE(seen == after || (!finished && (seen == before || (forEver && GetParam().undoes))));
            ExpectNothingHeld(scene.above);
            scene.ExpectChangesAreHeard();
        }
        EXPECT_FALSE(HasFailure()) << "run " << n;
    }
}

INSTANTIATE_TEST_SUITE_P(, OutOfMemory, testing::ValuesIn(operations),
                         [](const auto& operation) { return std::string(operation.param.name); });

} // namespace Qor::Tivor::Testing
