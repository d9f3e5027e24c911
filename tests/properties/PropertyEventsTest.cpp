#include "Alerts.h"
#include "Instrument.h"

#include <gtest/gtest.h>

#include <thread>

namespace Qor::Tivor::Testing {

namespace {

using Core::Testing::RaisedBy;
using Sentry = PropertyContainer::MultiPropertyUpdateSentry;

} // namespace

TEST(PropertyEvents, WaitForTheOutermostUpdate) {
    Instrument instrument;
    instrument.Add("a", 1);
    EventLog log(instrument);
    {
        const Sentry outer(instrument);
        {
            const Sentry inner(instrument);
            instrument.SetValue("a", 2);
            instrument.Add("b", 1);
        }
        instrument.SetValue("a", 3);
        EXPECT_TRUE(instrument.PerformingMultiPropertyUpdate());
        EXPECT_EQ(log.Take(), Events());
    }
    EXPECT_EQ(log.Take(), (Events{"a: 1 -> 2", "b: none -> 1", "a: 2 -> 3"}));
    Sentry(instrument).Dismiss();
    instrument.SetValue("a", 4);
    EXPECT_EQ(log.Take(), Events());
}

TEST(PropertyEvents, ReachListenersThenDelegates) {
    Instrument instrument;
    instrument.Add("a", 1);
    instrument.Add("b", 1);
    EventLog first(instrument);
    EventLog second(instrument);
    Events told;
    first.action = [&](const PropertyChangeEvent& event) {
        told.push_back("first");
        EXPECT_EQ(instrument.GetActiveChangeEvent(), &event);
        throw Core::Error("listener");
    };
    second.action = [&](const PropertyChangeEvent&) { told.push_back("second"); };
    const auto delegate = Delegating([&](const PropertyChangeEvent&) { told.push_back("delegate"); });
    instrument.AddPropertyChangeDelegate("a", delegate);
    EXPECT_EQ(RaisedBy<Core::Error>([&] { instrument.SetValue("a", 2); }).GetText(), "listener");
    EXPECT_EQ(told, (Events{"first", "second", "delegate"}));
    EXPECT_EQ(instrument.GetValue<int>("a"), 2);
    EXPECT_EQ(instrument.GetActiveChangeEvent(), nullptr);
    told.clear();
    first.action = nullptr;
    instrument.SetValue("b", 2);
    EXPECT_EQ(told, Events{"second"});
    instrument.RemovePropertyChangeListener(first);
    instrument.RemovePropertyChangeListener(second);
    EXPECT_TRUE(instrument.HasPropertyChangeListeners());
    instrument.RemovePropertyChangeDelegate("a", delegate);
    EXPECT_FALSE(instrument.HasPropertyChangeListeners());
    struct Gone final : PropertyContainer::ChangeDelegate {
        void Execute(const PropertyChangeEvent&) override {}
        bool IsCallable() const override { return false; }
    };
    instrument.AddPropertyChangeDelegate("a", std::make_shared<Gone>());
    const auto gone = RaisedBy<Core::NullPointerError>([&] { instrument.SetValue("a", 3); });
    EXPECT_EQ(gone.GetText() + gone.GetCategory(), "Invalid DelegateQor.Core.PropertyChangeDelegator");
}

TEST(PropertyEvents, ListenersCallBackAndEndThings) {
    Instrument instrument;
    instrument.Add("a", 1);
    EventLog log(instrument);
    log.action = [&](const PropertyChangeEvent&) {
        std::thread([&] { instrument.GetValue<int>("a"); }).join(); // no lock is held
        if (*instrument.GetValue<int>("a") < 3)
            instrument.SetValue("a", *instrument.GetValue<int>("a") + 1);
    };
    instrument.SetValue("a", 2);
    EXPECT_EQ(log.Take(), (Events{"a: 1 -> 2", "a: 2 -> 3"}));

    for (const bool shared : {false, true}) {
        auto mortal = std::make_shared<Instrument>();
        mortal->Add("a", 1);
        EventLog ending(*mortal);
        int told = 0;
        mortal->AddPropertyChangeDelegate("a", Delegating([&](const PropertyChangeEvent&) { ++told; }));
        Instrument* const raw = mortal.get();
        std::unique_ptr<Instrument> alone;
        if (!shared) { // nothing keeps it
            alone = std::make_unique<Instrument>();
            alone->Add("a", 1);
            alone->AddPropertyChangeListener(ending);
            alone->AddPropertyChangeDelegate("a", Delegating([&](const PropertyChangeEvent&) { ++told; }));
        }
        ending.action = [&](const PropertyChangeEvent&) { shared ? mortal.reset() : alone.reset(); };
        (shared ? raw : alone.get())->SetValue("a", 2);
        EXPECT_EQ(told, shared ? 1 : 0);
    }
}

TEST(PropertyEvents, OfAFailedScopeAreLogged) {
    Instrument instrument;
    instrument.Add("a", 1);
    EventLog log(instrument);
    log.action = [](const PropertyChangeEvent&) { throw Core::Error("listener"); };
    EXPECT_EQ(RaisedBy<Core::Error>([&] {
                  const Sentry sentry(instrument);
                  instrument.SetValue("a", 2);
                  throw Core::Error("scope");
              }).GetText(),
              "scope");
    EXPECT_EQ(log.Take(), Events{"a: 1 -> 2"});
    RaisedBy<Core::Error>([&] {
        const Sentry sentry(instrument);
        instrument.SetValue("a", 3);
    });
}

TEST(RestorePoints, BringBackWhatWasThere) {
    Instrument instrument(true);
    auto sub = std::make_shared<Instrument>();
    sub->Add("inner", 1);
    instrument.Add("a", 1);
    instrument.Add("gone", 1);
    instrument.Aggregate(sub, "sub", "", "", "");
    EventLog log(instrument);
    EventLog subLog(*sub);
    PropertyContainer::RestorePoint point(instrument);
    EXPECT_FALSE(point.PropertiesChanged());
    point.RestoreProperties();
    EXPECT_EQ(log.Take(), Events());

    instrument.SetValue("a", 2);
    instrument.RemoveProperty("gone");
    instrument.SetValue("added", 3);
    instrument.SetAttribute("a", sPROPERTY_CATEGORY, "x");
    sub->SetValue("inner", 5);
    log.Take();
    subLog.Take();
    const PropertyContainer::RestorePoint later(instrument);
    const std::weak_ptr<Instrument> kept = sub;
    std::dynamic_pointer_cast<GenericWrapper<PropertyContainer>>(Instrument::GetPropertyData(instrument)->Get("sub"))
        ->SetData(std::make_shared<Instrument>());
    sub.reset();
    EXPECT_FALSE(kept.expired());
    EXPECT_TRUE(point.PropertiesChanged());
    point.RestoreProperties();
    EXPECT_FALSE(point.PropertiesChanged());
    EXPECT_TRUE(later.PropertiesChanged());
    EXPECT_EQ(log.Take(), (Events{"added: 3 -> none", "a: 2 -> 1", "gone: none -> 1"}));
    EXPECT_EQ(subLog.Take(), Events{"inner: 5 -> 1"});
    EXPECT_EQ(instrument.GetAttributeByPropertyName("a", sPROPERTY_CATEGORY), nullptr);
    std::vector<std::string> names;
    instrument.EnumProperties(names);
    EXPECT_EQ(names, (std::vector<std::string>{"a", "gone", "sub"}));
    PropertyContainer::RestorePoint copy(later);
    copy = point;
    EXPECT_FALSE(copy.PropertiesChanged());
}

TEST(PropertiesStress, ReadersSettersBatchesAndDelegates) {
    Instrument instrument;
    for (const char* const name : {"a", "b", "c", "d"})
        instrument.Add(name, 0);
    std::atomic<int> told{0};
    const auto counting = Delegating([&](const PropertyChangeEvent& event) {
        ++told;
        instrument.GetValue<int>(event.GetPropertyName());
    });
    for (const char* const name : {"a", "b", "c", "d"})
        instrument.AddPropertyChangeDelegate(name, counting);
    const auto work = [&](int seed) {
        for (int i = 0; i < 300; ++i) {
            switch ((seed + i) % 4) {
            case 0:
                instrument.SetValue("a", seed * 1000 + i);
                break;
            case 1: {
                DataContainer values;
                values.PutValue("b", i);
                values.PutValue("c", seed);
                instrument.SetProperties(values);
                break;
            }
            case 2:
                instrument.GetValue<int>("d");
                break;
            default: {
                const Sentry sentry(instrument);
                instrument.SetValue("d", seed + i);
            }
            }
        }
    };
    std::vector<std::thread> threads;
    for (int seed = 0; seed < 4; ++seed)
        threads.emplace_back(work, seed);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_GT(told, 300);
    EXPECT_FALSE(instrument.PerformingMultiPropertyUpdate());
}

} // namespace Qor::Tivor::Testing
