// Whoever is called by a container may do anything: the container stays whole, free and truthful.
#include "Alerts.h"
#include "Instrument.h"

#include <gtest/gtest.h>

#include <map>

namespace Qor::Tivor::Testing {

namespace {

enum class EPlace { validator, change, external, read, listener, delegate };

/// A container, and what a listener believes of it from the events alone.
struct Scene {
    explicit Scene(EPlace where) : place(where), name(where == EPlace::external ? "x" : "p") {
        instrument->Add("p", 1);
        instrument->Add("q", 1);
        log.action = [this](const PropertyChangeEvent& event) {
            const auto text = [](const auto& value) { return value ? value->ToString() : std::string(); };
            if (!event.IsNewProperty()) {
                EXPECT_EQ(believed[event.GetPropertyName()], text(event.GetOldValue())) << event.GetPropertyName();
            }
            believed[event.GetPropertyName()] = text(event.GetNewValue());
            NeedTheLock(event.GetChangedObject());
        };
        instrument->AddPropertyChangeListener(log);
        point = std::make_unique<PropertyContainer::RestorePoint>(*instrument);
    }

    std::string ValueOf(const std::string& property) const {
        const auto value = Instrument::GetPropertyData(*instrument)->Get(property);
        return value ? value->ToString() : std::string();
    }
    void SetMany(int value, std::initializer_list<const char*> properties) const {
        DataContainer values;
        for (const char* const property : properties)
            values.PutValue(property, value);
        instrument->SetProperties(values);
    }

    EPlace place;
    std::string name;
    std::shared_ptr<Instrument> instrument = std::make_shared<Instrument>(true);
    std::weak_ptr<Instrument> watched = instrument;
    std::map<std::string, std::string> believed{{"p", "1"}, {"q", "1"}};
    EventLog log;
    EventLog other;
    std::unique_ptr<PropertyContainer::RestorePoint> point;
    PropertyContainer::OfferedValue* offered = nullptr;
    EPropertyChangeResult answer = eACCEPT_CHANGE;
    bool readable = true;
    bool wasAtWork = false;
};

enum class EOutcome { change, refusal, failure };

struct Misbehaviour {
    const char* name;
    EOutcome outcome;
    std::function<void(Scene&)> act;
    bool isSilent = false; ///< what it does is not told, or to nobody
    bool setsFirst = false;
};

const std::vector<Misbehaviour> misbehaviours = {
    {"library error", EOutcome::failure, [](Scene&) { throw Core::Error("refused"); }},
    {"standard exception", EOutcome::failure, [](Scene&) { throw std::runtime_error("refused"); }},
    {"int", EOutcome::failure, [](Scene&) { throw 7; }},
    {"refusal", EOutcome::refusal,
     [](Scene& scene) {
         scene.answer = eREFUSE_CHANGE;
         scene.readable = false;
     }},
    {"null", EOutcome::change,
     [](Scene& scene) {
         if (scene.offered != nullptr)
             scene.offered->second = nullptr;
     }},
    {"another value", EOutcome::change,
     [](Scene& scene) {
         if (scene.offered != nullptr)
             scene.offered->second = MakeData(60);
     }},
    {"unknown answer", EOutcome::change, [](Scene& scene) { scene.answer = static_cast<EPropertyChangeResult>(99); },
     true},
    {"sets it", EOutcome::change, [](Scene& scene) { scene.instrument->SetValue(scene.name, 50); }},
    {"sets another one", EOutcome::change, [](Scene& scene) { scene.instrument->SetValue("q", 50); }},
    {"sets it and throws", EOutcome::failure,
     [](Scene& scene) {
         scene.instrument->SetValue(scene.name, 50);
         throw 7;
     },
     false, true},
    {"sets it and refuses", EOutcome::refusal,
     [](Scene& scene) {
         scene.instrument->SetValue(scene.name, 50);
         scene.answer = eREFUSE_CHANGE;
     },
     false, true},
    {"sets many", EOutcome::change,
     [](Scene& scene) {
         scene.SetMany(51, {"p", "q", "new"});
     }},
    {"fails to set many", EOutcome::change,
     [](Scene& scene) {
         scene.instrument->Add("guarded", 1, Validating([](auto&) { throw Core::Error("guard"); }));
         EXPECT_THROW(scene.SetMany(52, {"q", "guarded"}), Core::Error);
     }},
    {"removes it", EOutcome::change, [](Scene& scene) { scene.instrument->RemoveProperty(scene.name); }, true},
    {"makes it anew", EOutcome::change, [](Scene& scene) { scene.instrument->Add(scene.name, 1); }},
    {"clears", EOutcome::change, [](Scene& scene) { scene.instrument->Clear(); }, true},
    {"restores", EOutcome::change, [](Scene& scene) { scene.point->RestoreProperties(); }},
    {"takes the guards away", EOutcome::change,
     [](Scene& scene) {
         std::list<std::shared_ptr<PropertyContainer::Validator>> validators;
         if (scene.instrument->PropertyExists("p"))
             scene.instrument->GetValidators("p", validators);
         for (const auto& validator : validators)
             scene.instrument->RemoveValidator("p", validator);
         scene.instrument->SetReadHandler("p", nullptr);
         scene.instrument->SetChangeHandler("p", nullptr);
     }},
    {"adds a listener", EOutcome::change,
     [](Scene& scene) { scene.instrument->AddPropertyChangeListener(scene.other); }},
    {"removes listeners", EOutcome::change, [](Scene& scene) { scene.instrument->RemoveAllPropertyChangeListeners(); },
     true},
    {"reads all", EOutcome::change,
     [](Scene& scene) {
         std::map<std::string, PropertyContainer::EPermissions> all;
         scene.instrument->EnumProperties(all);
         for (const auto& entry : all)
             scene.instrument->GetPropertyByName(entry.first);
     }},
    {"parses", EOutcome::change, [](Scene&) { EXPECT_THROW(DataContainer::FromXMLString("<a><b></a>"), Core::Error); }},
    {"drops the container", EOutcome::change, [](Scene& scene) { scene.instrument.reset(); }},
};

/// Misbehaves once.
struct Culprit final : PropertyChangeListener {
    Culprit(Scene& where, const Misbehaviour& how) : scene(where), what(how) {}
    ~Culprit() override { Unregister(); }
    void Act() {
        if (!std::exchange(scene.wasAtWork, true))
            what.act(scene);
    }
    void PropertyChanged(const PropertyChangeEvent&) override { Act(); }

    Scene& scene;
    const Misbehaviour& what;
};

void Install(Culprit& culprit) {
    Scene& scene = culprit.scene;
    Instrument& instrument = *scene.instrument;
    const auto answer = [&](const PropertyChangeEvent&) {
        culprit.Act();
        return std::exchange(scene.answer, eACCEPT_CHANGE);
    };
    switch (scene.place) {
    case EPlace::validator:
        instrument.AddValidator("p", Validating([&](PropertyContainer::OfferedValue& offered) {
                                    scene.offered = &offered;
                                    const std::shared_ptr<void> end(nullptr, [&](void*) { scene.offered = nullptr; });
                                    culprit.Act();
                                }));
        break;
    case EPlace::change:
        instrument.SetChangeHandler("p", Handling(answer));
        break;
    case EPlace::external:
        instrument.onExternal = answer;
        break;
    case EPlace::read:
        instrument.SetReadHandler("p", Reading([&](const std::string&) {
                                      culprit.Act();
                                      return scene.readable;
                                  }));
        break;
    case EPlace::listener:
        instrument.AddPropertyChangeListener(culprit);
        break;
    case EPlace::delegate:
        instrument.AddPropertyChangeDelegate("p", Delegating([&](const PropertyChangeEvent&) { culprit.Act(); }));
    }
}

bool Throws(const std::function<void()>& work) {
    try {
        work();
        return false;
    } catch (...) {
        return true;
    }
}

void Misbehave(EPlace place, const Misbehaviour& what, bool together) {
    SCOPED_TRACE(std::string(what.name) + " at place " + std::to_string(static_cast<int>(place)) +
                 (together ? ", together" : ", alone"));
    Scene scene(place);
    Culprit culprit(scene, what);
    Install(culprit);
    Instrument* const raw = scene.instrument.get();
    const bool threw = Throws([&] {
        if (place == EPlace::read)
            raw->GetPropertyByName("p");
        else if (together)
            scene.SetMany(2, {scene.name.c_str()});
        else
            raw->SetValue(scene.name, 2);
    });
    EXPECT_TRUE(scene.wasAtWork);
    EXPECT_EQ(threw,
              what.outcome == EOutcome::failure || (place == EPlace::validator && what.name == std::string("null")));
    if (!scene.instrument) {
        EXPECT_TRUE(scene.watched.expired());
        return;
    }
    NeedTheLock(*raw);
    EXPECT_FALSE(raw->PerformingMultiPropertyUpdate());
    EXPECT_EQ(raw->GetActiveChangeEvent(), nullptr);
    const bool asksConsent = place == EPlace::change || place == EPlace::external;
    const bool isRefused =
        threw ? asksConsent || place == EPlace::validator : asksConsent && what.outcome == EOutcome::refusal;
    const bool stands =
        what.setsFirst && place == EPlace::validator && !together; // a change of its own, before the other
    if (isRefused) {
        EXPECT_EQ(scene.ValueOf(scene.name), stands ? "50" : place == EPlace::external ? "" : "1");
    }
    for (const char* const name : {"p", "q", "x"})
        EXPECT_TRUE(what.isSilent || scene.ValueOf(name) == scene.believed[name]) << name;
    raw->SetValue("q", 77);
    EXPECT_EQ(scene.ValueOf("q"), "77");
}

} // namespace

TEST(Properties, SurviveThoseWhomTheyCall) {
    for (const EPlace place :
         {EPlace::validator, EPlace::change, EPlace::external, EPlace::read, EPlace::listener, EPlace::delegate})
        for (const Misbehaviour& what : misbehaviours)
            for (const bool together : {false, true})
                Misbehave(place, what, together);
}

} // namespace Qor::Tivor::Testing
