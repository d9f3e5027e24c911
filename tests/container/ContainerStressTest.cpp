#include "Platform.h"
#include "StoredBytes.h"
#include "TemporaryDirectory.h"
#include "Threads.h"

#include <QorCore/MemoryStreams.h>
#include <Tivor/BinaryDataFile.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <random>
#include <set>

namespace Qor::Tivor::Testing {

namespace {

using namespace std::chrono_literals;

constexpr auto duration = 1500ms;

/// Random numbers of one thread.
class Dice {
public:
    explicit Dice(int seed) : m_engine(static_cast<unsigned>(seed)) {}
    std::size_t Below(std::size_t end) { return std::uniform_int_distribution<std::size_t>(0, end - 1)(m_engine); }
    std::string Key() { return "k" + std::to_string(Below(8)); }

private:
    std::mt19937 m_engine;
};

using Action = std::function<void(Dice& dice)>;

/// Four threads do one of the actions after the other. Refusals that the rules of nesting demand are no failure.
void RunTogether(const std::vector<Action>& actions) {
    const auto end = std::chrono::steady_clock::now() + duration;
    std::atomic<int> done{0};
    Core::Testing::OnThreads(4, [&](int number) {
        Dice dice(number);
        while (std::chrono::steady_clock::now() < end)
            try {
                ++done;
                actions[dice.Below(actions.size())](dice);
            } catch (const Core::LogicError&) {
            }
    });
    EXPECT_GT(done, 100) << "the threads only waited";
}

std::shared_ptr<Data<int>> LockableNumber(int value) {
    auto number = MakeData(value);
    number->EnableDataLocking();
    return number;
}

/// Whether a container can still be used in every way, and its parts agree.
void ExpectSound(DataContainer& container) {
    std::vector<std::string> keys;
    container.EnumData(keys);
    EXPECT_EQ(keys.size(), container.NumDataObjects());
    for (const std::string& key : keys)
        EXPECT_TRUE(container.Get(key)) << key;
    const std::string bytes = Stored(container);
    EXPECT_EQ(bytes.size(), container.GetDataSize_bytes());
    DataContainer again;
    ReadInto(again, bytes);
    EXPECT_TRUE(again == container);
    EXPECT_TRUE(*container.Clone() == container);
}

} // namespace

TEST(ContainerStress, OneContainerForAll) {
    DataContainer container(true);
    DataContainer other(true);
    const auto shared = LockableNumber(0);
    DataContainer source;
    source.PutValue("k1", std::string("read"));
    source.GetSubData({"k2", "deeper"}, true)->PutValue("x", 1.0);
    const std::string bytes = Stored(source);
    container.EnableSizeTracking(true);
    RunTogether({
        [&](Dice& dice) { container.PutValue(dice.Key(), static_cast<int>(dice.Below(100))); },
        [&](Dice& dice) { container.Put(dice.Key(), shared); },
        [&](Dice& dice) {
            container.GetSubData({dice.Key(), dice.Key()}, true);
        },
        [&](Dice& dice) { container.Remove(dice.Key()); },
        [&](Dice& dice) {
            const auto number = std::dynamic_pointer_cast<Data<int>>(container.Get(dice.Key()));
            if (number)
                number->SetValue(static_cast<int>(dice.Below(100)));
        },
        [&](Dice&) {
            std::set<std::string> keys;
            container.EnumData(keys);
            for (const DataContainer::Entry& entry : container)
                EXPECT_TRUE(entry.object && keys.size() <= 9);
        },
        [&](Dice&) { static_cast<void>(*container.Clone() == container); },
        [&](Dice&) { other.Append(container); },
        [&](Dice& dice) { dice.Below(50) == 0 ? container.Clear() : other.Assign(container); },
        [&](Dice&) {
            Core::MemoryOutputStream stream;
            const std::uint64_t written = container.OutputData(stream, true);
            EXPECT_EQ(stream.GetSize(), written);
            DataContainer again;
            Core::MemoryInputStream input(stream.GetBytes());
            EXPECT_EQ(again.InputData(input), written);
        },
        [&](Dice&) {
            Core::MemoryInputStream input(bytes.data(), bytes.size());
            container.InputData(input);
        },
        [&](Dice&) {
            std::vector<std::shared_ptr<Core::Lock>> locks;
            container.AcquireLocks(locks);
            EXPECT_EQ(container.GetDataSize_bytes(), Stored(container).size());
        },
        [&](Dice& dice) { container.EnableSizeTracking(dice.Below(2) == 0); },
    });
    ExpectSound(container);
    ExpectSound(other);
}

TEST(ContainerStress, ContainersMoveBetweenParents) {
    std::vector<std::shared_ptr<DataContainer>> all(6);
    std::generate(all.begin(), all.end(), [] { return DataContainer::Create(true); });
    const auto leaf = LockableNumber(0);
    const auto any = [&](Dice& dice) -> DataContainer& { return *all[dice.Below(all.size())]; };
    RunTogether({
        [&](Dice& dice) { any(dice).Put(dice.Key(), all[dice.Below(all.size())]); },
        [&](Dice& dice) {
            if (const auto moved = any(dice).Remove(dice.Key()))
                any(dice).Put(dice.Key(), moved);
        },
        [&](Dice& dice) { any(dice).Remove(dice.Key()); },
        [&](Dice& dice) { any(dice).Remove(dice.Key()); },
        [&](Dice& dice) {
            if (const auto wrapper = std::dynamic_pointer_cast<DataContainerWrapper>(any(dice).Get(dice.Key())))
                wrapper->SetData(all[dice.Below(all.size())]);
        },
        [&](Dice& dice) { any(dice).Put(dice.Key(), leaf); },
        [&](Dice& dice) { leaf->SetValue(static_cast<int>(dice.Below(100))); },
        [&](Dice& dice) {
            any(dice).GetSubData({dice.Key(), dice.Key()}, dice.Below(2) == 0);
        },
        [&](Dice& dice) { EXPECT_GE(any(dice).GetDataSize_bytes(), 7u); },
        [&](Dice& dice) { dice.Below(8) == 0 ? any(dice).Clear() : any(dice).EnableSizeTracking(dice.Below(2) == 0); },
    });
    // Whatever stood where: emptied containers can be stored again, and hold nothing else.
    for (const auto& container : all)
        container->Clear();
    for (std::size_t i = 1; i < all.size(); ++i)
        all[i - 1]->Put("next", all[i]);
    EXPECT_EQ(Stored(*all[0]).size(), all[0]->GetDataSize_bytes());
    EXPECT_THROW(all.back()->Put("first", all[0]), Core::LogicError);
}

// What is on disk, or in XML, is always one state of the container, and at the end the last one.
TEST(ContainerStress, FileIsSavedWhileItChanges) {
    const Core::Testing::TemporaryDirectory directory;
    const std::string path = (directory / "data").ToString();
    const auto container = DataContainer::Create(true);
    const auto nested = container->GetSubData({"nested"}, true);
    const auto left = LockableNumber(0);
    const auto right = LockableNumber(0);
    container->Put("left", left);
    nested->Put("right", right);
    nested->PutValue("large", RowMajorMatrix<double>(10, 70)); // a second thread writes it into XML
    const auto expectOneState = [](DataContainer& state) {
        EXPECT_EQ(state.GetValue<int>("left"), state.GetSubData({"nested"}, false)->GetValue<int>("right"));
    };
    BinaryDataFile file(path, DataFile::eREAD_WRITE, DataFile::eCREATE_NEW, container);
    file.Flush();
    RunTogether({
        [&](Dice& dice) { container->PutValue(dice.Key(), static_cast<int>(dice.Below(100))); },
        [&](Dice& dice) { container->Remove(dice.Key()); },
        [&](Dice& dice) { nested->PutValue(dice.Key(), std::string(dice.Below(3000), 'x')); },
        [&](Dice& dice) {
            std::vector<std::shared_ptr<Core::Lock>> locks;
            container->AcquireLocks(locks);
            const int value = static_cast<int>(dice.Below(1000));
            left->SetValue(value);
            right->SetValue(value);
        },
        [&](Dice&) { file.Flush(); },
        [&](Dice&) {
            if (Core::Testing::isWindows)
                return; // there, a reader that comes between closing and replacing makes the save fail
            BinaryDataFile reader(path, DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, nullptr);
            expectOneState(reader);
        },
        [&](Dice&) { expectOneState(*DataContainer::FromXMLString(StoredXML(*container))); },
        [&](Dice&) { EXPECT_TRUE(file.IsOpen() && file.GetFileAccess() == DataFile::eREAD_WRITE); },
    });
    file.Flush();
    EXPECT_FALSE(file.IsModified());
    EXPECT_TRUE(file == *container);
    file.Close();
    BinaryDataFile reader(path, DataFile::eREAD_ONLY, DataFile::eOPEN_EXISTING, nullptr);
    EXPECT_TRUE(reader == *container);
}

} // namespace Qor::Tivor::Testing
