#include "Alerts.h"
#include "Threads.h"

#include <QorCore/Context.h>
#include <QorCore/LockSet.h>
#include <QorCore/Mutex.h>
#include <QorCore/Notification.h>
#include <QorCore/ReadersWriterMutex.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Qor::Core;
using Testing::LetOthersRun;
using Testing::OnThreads;

bool IsFreeForOthers(Mutex& mutex) {
    bool isFree = false;
    OnThreads(1, [&](int) {
        isFree = mutex.TryAcquire();
        if (isFree)
            mutex.Release();
    });
    return isFree;
}

void WaitUntil(const std::atomic<bool>& flag) {
    while (!flag)
        std::this_thread::yield();
}

TEST(MutexThreads, IsFreeWhenItsOwnerReleasedItAsOftenAsItAcquiredIt) {
    Mutex mutex;
    for (const int depth : {1, 2, 65'536, 200'000}) {
        for (int level = 0; level < depth; ++level)
            mutex.Acquire();
        for (int level = 1; level < depth; ++level)
            mutex.Release();
        EXPECT_TRUE(mutex.IsHeldByCaller() && !IsFreeForOthers(mutex)) << depth;
        mutex.Release();
        EXPECT_TRUE(!mutex.IsHeldByCaller() && IsFreeForOthers(mutex)) << depth;
    }
}

TEST(LockThreads, EndOnAnyThreadHoweverManyThereAre) {
    const auto mutex = std::make_shared<Mutex>();
    for (const int count : {1, 200'000}) {
        std::vector<std::shared_ptr<Lock>> locks;
        for (int index = 0; index < count; ++index)
            Lock::Append(locks, std::make_shared<Lock>(index % 2 == 0 ? mutex : std::make_shared<Mutex>()));
        OnThreads(1, [&](int) {
            EXPECT_EQ(Lock::Try(mutex), nullptr);
            locks.clear();
            EXPECT_NE(Lock::Try(mutex), nullptr);
        });
        EXPECT_TRUE(IsFreeForOthers(*mutex));
    }
}

TEST(LockThreads, AListReleasesInReverseOrder) {
    for (const bool atOnce : {false, true}) {
        // Each mutex notes, when its lock lets it go, which are held still.
        std::vector<Mutex> mutexes(5);
        std::vector<std::string> notes;
        std::vector<std::shared_ptr<Lock>> locks;
        for (Mutex& mutex : mutexes)
            Lock::Append(locks, std::make_shared<Lock>(std::shared_ptr<Mutex>(&mutex, [&](Mutex*) {
                             notes.emplace_back();
                             for (const Mutex& each : mutexes)
                                 notes.back() += each.IsHeldByCaller() ? 'X' : '.';
                         })));
        while (!locks.empty())
            locks.resize(atOnce ? 0 : locks.size() - 1);
        EXPECT_EQ(notes.size(), 5u);
        EXPECT_TRUE(std::is_sorted(notes.rbegin(), notes.rend()));
        for (const std::string& note : notes)
            EXPECT_EQ(note.find(".X"), std::string::npos) << note;
    }
}

TEST(LockSetThreads, SetsInAnyOrderDoNotDeadlock) {
    std::vector<std::shared_ptr<Mutex>> mutexes;
    while (mutexes.size() < 6)
        mutexes.push_back(std::make_shared<Mutex>());
    int count = 0;
    OnThreads(4, [&](int seed) {
        std::minstd_rand random(static_cast<unsigned>(seed + 1));
        auto order = mutexes;
        for (int round = 0; round < 500; ++round) {
            std::shuffle(order.begin(), order.end(), random);
            std::vector<std::shared_ptr<Lock>> locks;
            LockSet::Acquire(locks, [&] {
                for (const auto& mutex : order)
                    if (LockSet::Collecting()->Add(mutex) == LockSet::EResult::busy)
                        return;
            });
            ASSERT_EQ(locks.size(), mutexes.size());
            ++count;
        }
    });
    EXPECT_EQ(count, 2000);
}

TEST(ReadersWriterMutexThreads, IsReentrantForItsOwner) {
    ReadersWriterMutex mutex;
    const Context& lender = Context::Current();
    {
        WriterLock outer(mutex);
        const WriterLock inner(mutex);
        ReaderLock reader(mutex);
        OnThreads(1, [&](int) {
            const Context::Loan loan(lender);
            const WriterLock borrowed(mutex);
        });
        outer.Release();
        outer.Release();
        reader.Release();
        const WriterLock again(mutex);
    }
    // A waiting writer holds up those who come newly, not those who read already.
    std::atomic<bool> isWritten{false};
    std::atomic<bool> isReadByOther{false};
    std::optional<ReaderLock> reading(std::in_place, mutex);
    EXPECT_THROW(WriterLock{mutex}, LogicError);
    std::thread writer([&] {
        const WriterLock lock(mutex);
        EXPECT_FALSE(isReadByOther);
        isWritten = true;
    });
    LetOthersRun();
    std::thread other([&] {
        const ReaderLock lock(mutex);
        isReadByOther = true;
    });
    std::optional<ReaderLock> again(std::in_place, mutex);
    LetOthersRun();
    again.reset();
    EXPECT_FALSE(isWritten);
    reading.reset();
    writer.join();
    other.join();
    EXPECT_TRUE(isWritten && isReadByOther);
}

TEST(ReadersWriterMutexThreads, ReadersMeetEachOtherAndWritersNobody) {
    ReadersWriterMutex mutex;
    {
        const ReaderLock reader(mutex);
        OnThreads(1, [&](int) { const ReaderLock together(mutex); });
    }
    int written = 0;
    OnThreads(4, [&](int thread) {
        for (int round = 0; round < 3000; ++round)
            if ((round + thread) % 3 == 0) {
                const WriterLock lock(mutex);
                written += 2;
                --written;
            } else {
                const ReaderLock lock(mutex);
                const int before = written;
                const ReaderLock again(mutex);
                ASSERT_EQ(written, before);
            }
    });
    EXPECT_EQ(written, 4000);
}

// Counts its calls, and does what it was told to do in them.
class Listener : public NotificationListener {
public:
    explicit Listener(std::function<void()> action = [] {}) : m_action(std::move(action)) {}
    ~Listener() override { Unregister(); }

    void OnEvent() {
        ++*m_calls;
        m_action();
    }
    int GetCalls() const { return *m_calls; }

private:
    std::function<void()> m_action;
    // On the heap, where a call after the end is seen.
    std::unique_ptr<std::atomic<int>> m_calls = std::make_unique<std::atomic<int>>(0);
};

void Notify(const NotificationSupport& support) {
    support.Broadcast([](NotificationListener& listener) { static_cast<Listener&>(listener).OnEvent(); });
}

TEST(NotificationThreads, ReachesEachListenerOnceAndNoneThatLeft) {
    auto support = std::make_unique<NotificationSupport>();
    Listener first;
    Listener second;
    for (Listener* const listener : {&first, &second, &first})
        support->AddListener(*listener);
    Notify(*support);
    EXPECT_EQ(first.GetCalls() + second.GetCalls(), 2);
    support->RemoveListener(first);
    support->RemoveListener(first);
    Notify(*support);
    EXPECT_EQ(first.GetCalls(), 1);
    {
        Listener third;
        support->AddListener(third);
        second.Unregister();
        EXPECT_TRUE(support->HasListeners());
    }
    EXPECT_FALSE(support->HasListeners());
    support->AddListener(first);
    support->RemoveAll();
    Notify(*support);
    EXPECT_EQ(first.GetCalls() + second.GetCalls(), 3);
    // Listeners forget who ended before them.
    support->AddListener(first);
    support = std::make_unique<NotificationSupport>();
    support->AddListener(first);
    Notify(*support);
    EXPECT_EQ(first.GetCalls(), 2);
}

TEST(NotificationThreads, ChangesDuringADeliveryHoldFromThere) {
    auto support = std::make_unique<NotificationSupport>();
    Listener added;
    Listener removed;
    Listener changing([&] {
        support->AddListener(added);
        support->RemoveListener(removed);
        support->RemoveListener(changing);
    });
    auto dying = std::make_unique<Listener>();
    Listener killing([&] { dying.reset(); });
    std::unique_ptr<Listener> leaving;
    leaving = std::make_unique<Listener>([&] { leaving.reset(); });
    for (Listener* const listener : {&changing, &removed, &killing, dying.get(), leaving.get()})
        support->AddListener(*listener);
    Notify(*support);
    EXPECT_EQ(changing.GetCalls() + removed.GetCalls() + added.GetCalls(), 1);
    EXPECT_EQ(leaving, nullptr);
    Notify(*support);
    EXPECT_EQ(changing.GetCalls(), 1);
    EXPECT_EQ(added.GetCalls(), 1);

    Listener destroying([&] { support.reset(); });
    Listener late;
    support->AddListener(destroying);
    support->AddListener(late);
    Notify(*support);
    EXPECT_EQ(support, nullptr);
    EXPECT_EQ(late.GetCalls(), 0);
}

TEST(NotificationThreads, ExceptionsDoNotKeepTheOthersFromBeingCalled) {
    NotificationSupport support;
    Listener first([] { throw Error("first"); });
    Listener second([] { throw Error("second"); });
    Listener quiet;
    for (Listener* const listener : {&first, &second, &quiet})
        support.AddListener(*listener);
    EXPECT_EQ(Testing::RaisedBy<Error>([&] { Notify(support); }).GetText(), "first");
    EXPECT_EQ(second.GetCalls() + quiet.GetCalls(), 2);
    // Nobody is taken for being called still.
    OnThreads(1, [&](int) { support.RemoveAll(); });
}

TEST(NotificationThreads, ARemovalWaitsForADeliveryOnAnotherThread) {
    using Removal = void (*)(NotificationSupport&, Listener&);
    const Removal removals[] = {[](NotificationSupport& support, Listener& l) { support.RemoveListener(l); },
                                [](NotificationSupport& support, Listener&) { support.RemoveAll(); },
                                [](NotificationSupport&, Listener& l) { l.Unregister(); }};
    for (const Removal remove : removals) {
        NotificationSupport support;
        std::atomic<bool> isCalled{false};
        std::atomic<bool> mayReturn{false};
        std::atomic<bool> isRemoved{false};
        Listener listener([&] {
            isCalled = true;
            WaitUntil(mayReturn);
            EXPECT_FALSE(isRemoved);
        });
        support.AddListener(listener);
        std::thread delivery([&] { Notify(support); });
        WaitUntil(isCalled);
        std::thread removal([&] {
            remove(support, listener);
            isRemoved = true;
        });
        LetOthersRun();
        EXPECT_FALSE(isRemoved);
        mayReturn = true;
        removal.join();
        delivery.join();
        Notify(support);
        EXPECT_EQ(listener.GetCalls(), 1);
    }
}

TEST(NotificationThreads, ListenersComeAndGoDuringDeliveries) {
    NotificationSupport support;
    Listener lasting;
    support.AddListener(lasting);
    std::atomic<bool> isOver{false};
    std::atomic<int> broadcasts{0};
    OnThreads(4, [&](int thread) {
        if (thread < 2) {
            for (; !isOver || broadcasts < 100; ++broadcasts)
                Notify(support);
            return;
        }
        for (int round = 0; round < 1000; ++round) {
            Listener passing;
            support.AddListener(passing);
            if (round % 2 == 0)
                support.RemoveListener(passing);
        }
        isOver = true;
    });
    EXPECT_EQ(lasting.GetCalls(), broadcasts);
    support.RemoveListener(lasting);
    EXPECT_FALSE(support.HasListeners());
}

} // namespace
