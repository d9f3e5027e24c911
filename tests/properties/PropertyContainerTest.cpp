#include "Alerts.h"
#include "Instrument.h"
#include "StoredBytes.h"

#include <QorCore/Locale.h>
#include <QorCore/MemoryStreams.h>

#include <gtest/gtest.h>

namespace Qor::Tivor::Testing {

namespace {

using Core::Testing::RaisedBy;
using Core::Testing::Warnings;
using Permissions = PropertyContainer::EPermissions;

std::string TextOf(const PropertyContainer& container, const std::string& name) {
    const auto value = container.GetPropertyByName(name);
    return value ? value->ToString() : "none";
}

std::string TextOf(const DataContainer& container, const std::string& key) {
    const auto value = container.Get(key);
    return value ? value->ToString() : "none";
}

} // namespace

TEST(Properties, AreDescribed) {
    Instrument instrument;
    instrument.AddProperties(std::vector<Instrument::Description>{
        {"Gain", MakeData(2.5), Instrument::eREADABLE_WRITABLE, "Gain factor", "Detector", "How much", MakeData(1.0)},
        {"Serial", MakeData(std::string("A7")), Instrument::eREADABLE},
        {"Secret", MakeData(1), Instrument::eWRITABLE}});
    std::map<std::string, Permissions> permissions{{"old", Instrument::eREADABLE}};
    instrument.EnumProperties(permissions);
    EXPECT_EQ(permissions, (std::map<std::string, Permissions>{{"Gain", Instrument::eREADABLE_WRITABLE},
                                                               {"Serial", Instrument::eREADABLE},
                                                               {"Secret", Instrument::eWRITABLE}}));
    std::vector<std::string> names;
    instrument.EnumProperties(names);
    EXPECT_EQ(names, (std::vector<std::string>{"Gain", "Serial", "Secret"}));
    EXPECT_EQ(instrument.NumProperties(), 3u);
    EXPECT_TRUE(instrument.PropertyExists("Gain") && !instrument.PropertyExists("gain"));
    EXPECT_TRUE(instrument.IsReadable("Serial") && !instrument.IsWritable("Serial"));
    EXPECT_EQ(instrument.GetPermissions("none"), Instrument::eNO_PERMISSIONS);
    EXPECT_EQ(TextOf(instrument, "Secret"), "none");

    DataContainer attributes;
    instrument.GetAttributes("Gain", attributes);
    EXPECT_EQ(Keys(attributes), "Permissions Default DisplayName Category Description ");
    EXPECT_EQ(TextOf(attributes, sPROPERTY_DISPLAY_NAME) + TextOf(attributes, sPROPERTY_CATEGORY),
              "Gain factorDetector");
    EXPECT_EQ(attributes.Get(sPROPERTY_PERMISSIONS)->GetTypeName(), "PropertyContainer::EPermissions");
    EXPECT_FALSE(instrument.IsDefault("Gain"));
    EXPECT_TRUE(instrument.RestoreDefault("Gain") && instrument.IsDefault("Gain"));
    EXPECT_EQ(instrument.GetValue<double>("Gain"), 1.0);
    EXPECT_FALSE(instrument.GetValue<int>("Gain") || instrument.GetValue<double>("none"));

    instrument.SetPermissions("Gain", Instrument::eNO_PERMISSIONS);
    EXPECT_EQ(TextOf(instrument, "Gain"), "none");
    instrument.SetAttribute("Gain", sHAS_CUSTOM_EDITOR, MakeData(true));
    EXPECT_TRUE(instrument.HasCustomPropertyEditor("Gain") && !instrument.HasCustomPropertyEditor("Serial"));
    EXPECT_EQ(instrument.GetBrowsePermissions("Gain"), eNO_BROWSE_PERMISSIONS);
    instrument.SetAttribute("Gain", sBROWSE_PERMISSIONS, PropertyContainer::MakePropertyValue(eBROWSE_WRITABLE));
    EXPECT_EQ(instrument.GetBrowsePermissions("Gain"), eBROWSE_WRITABLE);
    instrument.SetAttribute("none", "x", "y");
    EXPECT_EQ(instrument.NumProperties(), 3u);
    EXPECT_TRUE(instrument.RemoveProperty("Serial") && !instrument.RemoveProperty("Serial"));
}

TEST(Properties, RefuseWhatTheyMust) {
    Instrument instrument;
    EventLog log(instrument);
    instrument.Add("Gain", 1.0);
    instrument.AddProperty("Serial", MakeData(7), Instrument::eREADABLE);
    log.Take();
    Warnings warnings;
    EXPECT_FALSE(instrument.SetValue("none", 1));
    EXPECT_FALSE(instrument.SetValue("Serial", 8));
    ASSERT_EQ(warnings.GetNames(),
              (std::vector<std::string>{"SetAttemptedForNonExistantProperty", "SetReadOnlyProperty"}));
    EXPECT_EQ(warnings.seen[0].GetText(), "Cannot Set the non-existant property <none>");
    EXPECT_EQ(warnings.seen[1].GetText(), "Cannot Set the read-only property <Serial>");
    EXPECT_EQ(warnings.seen[1].GetCategory(), "Qor.Tivor.PropertyContainer.SetProperty");
    const auto mismatch = RaisedBy<PropertyTypeMismatch>([&] { instrument.SetValue("Gain", 1); });
    EXPECT_EQ(mismatch.GetText(), "Attempt to set property <Gain> of type <double> to type <int32>");
    const auto null = RaisedBy<Core::NullPointerError>([&] { instrument.SetProperty("Gain", nullptr); });
    EXPECT_NE(null.GetText().find("p_spValue"), std::string::npos);
    EXPECT_EQ(null.GetCategory(), "Qor.Tivor.PropertyContainer.SetProperty");

    DataContainer attributes;
    std::list<std::shared_ptr<PropertyContainer::Validator>> validators;
    const std::pair<const char*, std::function<void()>> operations[] = {
        {"to call IsDefault()", [&] { instrument.IsDefault("x"); }},
        {"RestoreDefault()", [&] { instrument.RestoreDefault("x"); }},
        {"to call SetPropertyDefault()", [&] { instrument.SetPropertyDefault("x", MakeData(1)); }},
        {"to call GetAttributes()", [&] { instrument.GetAttributes("x", attributes); }},
        {"to call GetValidators()", [&] { instrument.GetValidators("x", validators); }},
        {"to call SetReadHandler()", [&] { instrument.SetReadHandler("x", nullptr); }},
        {"to call SetChangeHandler()", [&] { instrument.SetChangeHandler("x", nullptr); }}};
    for (const auto& [text, operation] : operations)
        EXPECT_EQ(RaisedBy<NoSuchProperty>(operation).GetText(),
                  "Attempted " + std::string(text) + " on non-existant property <x>");
    const auto assertion = RaisedBy<Core::AssertionError>([&] { instrument.SetPropertyDefault("Gain", MakeData(1)); });
    EXPECT_EQ(assertion.GetText(), "spCurrentDefault->HoldsSameTypeAs( *p_spDefaultValue )");
    EXPECT_EQ(TextOf(instrument, "Gain") + TextOf(instrument, "Serial"), "17");
    EXPECT_EQ(log.Take(), Events());
    NeedTheLock(instrument);
}

TEST(Properties, TakeTextsThatAreAttributesWhenSomebodyLooks) {
    static constexpr Instrument::Texts texts{"Gain", "Signal", "of the detector"};
    Instrument instrument;
    instrument.Add("g", 1);
    instrument.SetAttribute("g", sPROPERTY_CATEGORY, "former");
    instrument.SetTexts("g", texts);
    instrument.SetAttribute("g", sPROPERTY_DESCRIPTION, "later");
    instrument.SetTexts("none", texts);
    Instrument clone;
    clone.CloneContents(instrument);
    for (const Instrument* const each : {&instrument, &clone}) {
        std::string found;
        for (const std::string& key : {sPROPERTY_DESCRIPTION, sPROPERTY_CATEGORY, sPROPERTY_DISPLAY_NAME})
            found += each->GetAttributeByPropertyName("g", key)->ToString() + ";";
        EXPECT_EQ(found, "later;Signal;Gain;");
    }
}

TEST(Properties, ThatComeFromOutside) {
    Instrument instrument(true);
    EventLog log(instrument);
    EXPECT_TRUE(instrument.SetValue("new", 5));
    EXPECT_TRUE(instrument.IsDefault("new"));
    EXPECT_EQ(instrument.GetPermissions("new"), Instrument::eREADABLE_WRITABLE);
    EXPECT_TRUE(instrument.SetValue("new", 6));
    EXPECT_EQ(log.Take(), (Events{"new: none -> 5", "new: 5 -> 6"}));
    EPropertyChangeResult result = eREFUSE_CHANGE;
    instrument.onExternal = [&](const PropertyChangeEvent&) { return result; };
    for (const auto refusing : {eREFUSE_CHANGE, eREMOVE_PROPERTY}) {
        result = refusing;
        EXPECT_FALSE(instrument.SetValue("other", 1));
        EXPECT_FALSE(instrument.PropertyExists("other"));
    }
    result = static_cast<EPropertyChangeResult>(9);
    EXPECT_TRUE(instrument.SetValue("other", 1) && instrument.PropertyExists("other"));
    EXPECT_EQ(log.Take(), Events());
}

TEST(Properties, ThatNobodyDescribedKeepTheirFirstValueAsDefault) {
    DataContainer values;
    values.PutValue("new", 6);
    const std::function<void(Instrument&)> ways[] = {
        [](Instrument& instrument) { instrument.SetValue("new", 6); },
        [](Instrument& instrument) { instrument.UpdateProperty("new", MakeData(6), false); },
        [&](Instrument& instrument) { instrument.SetProperties(values); },
        [&](Instrument& instrument) { instrument.InputProperties(values); },
    };
    for (const auto& change : ways) {
        Instrument instrument(true);
        instrument.SetValue("new", 5);
        change(instrument);
        EXPECT_TRUE(!instrument.IsDefault("new") && instrument.RestoreDefault("new"));
        EXPECT_EQ(TextOf(instrument, "new"), "5");
    }
    Instrument instrument(true);
    instrument.SetValue("new", 5);
    const PropertyContainer::RestorePoint before(instrument);
    EXPECT_EQ(instrument.GetAttributeByPropertyName("new", sPROPERTY_DEFAULT)->ToString(), "5");
    EXPECT_FALSE(before.PropertiesChanged());
}

TEST(Properties, ChangeHandlersDecide) {
    const std::pair<EPropertyChangeResult, const char*> rows[] = {{eACCEPT_CHANGE, "2 true p: 1 -> 2"},
                                                                  {eREFUSE_CHANGE, "1 false "},
                                                                  {eREMOVE_PROPERTY, "none false "},
                                                                  {static_cast<EPropertyChangeResult>(3), "2 true "}};
    for (const bool single : {true, false}) {
        for (const auto& [result, expected] : rows) {
            Instrument instrument;
            instrument.Add("p", 1, nullptr, Handling([&, answer = result](const PropertyChangeEvent& event) {
                               EXPECT_TRUE(&event.GetChangedObject() == &instrument && !event.IsNewProperty());
                               return answer;
                           }));
            EventLog log(instrument);
            DataContainer values;
            values.PutValue("p", 2);
            const bool taken = single ? instrument.SetValue("p", 2) : instrument.SetProperties(values) == 1;
            std::string told;
            for (const std::string& event : log.Take())
                told += event;
            EXPECT_EQ(TextOf(instrument, "p") + (taken ? " true " : " false ") + told, expected);
        }
    }
}

TEST(Properties, ValidatorsRunInTheirOrder) {
    Instrument instrument;
    std::string seen;
    const auto first = Validating([&](PropertyContainer::OfferedValue& offered) {
        seen += "first " + offered.second->ToString() + ' ' + TextOf(instrument, "p") + "; ";
        offered.second = MakeData(10);
    });
    const auto second =
        Validating([&](PropertyContainer::OfferedValue& offered) { seen += "second " + offered.second->ToString(); });
    instrument.Add("p", 1, first);
    EXPECT_TRUE(instrument.AddValidator("p", second));
    EXPECT_FALSE(instrument.AddValidator("p", nullptr) || instrument.AddValidator("none", second));
    EXPECT_TRUE(instrument.SetValue("p", 2));
    EXPECT_EQ(seen, "first 2 1; second 10");
    EXPECT_EQ(TextOf(instrument, "p"), "10");
    instrument.RemoveValidator("p", first);
    EXPECT_TRUE(instrument.SetValue("p", 3));
    EXPECT_EQ(TextOf(instrument, "p"), "3");
    EXPECT_TRUE(instrument.AddValidator("p", Validating([](auto& offered) { offered.second = nullptr; })));
    RaisedBy<Core::NullPointerError>([&] { instrument.SetValue("p", 4); });
    EXPECT_EQ(TextOf(instrument, "p"), "3");
}

TEST(Properties, ReadHandlersMayReadTheirProperty) {
    Instrument instrument;
    instrument.Add("p", 1);
    int calls = 0;
    bool answer = true;
    instrument.SetReadHandler("p", Reading([&](const std::string& name) {
                                  ++calls;
                                  EXPECT_EQ(TextOf(instrument, name), "1");
                                  return answer;
                              }));
    EXPECT_EQ(TextOf(instrument, "p"), "1");
    answer = false;
    EXPECT_EQ(TextOf(instrument, "p"), "none");
    EXPECT_EQ(calls, 2);
    instrument.SetReadHandler("p", Reading([](const std::string&) -> bool { throw Core::Error("read"); }));
    RaisedBy<Core::Error>([&] { instrument.GetPropertyByName("p"); });
    instrument.SetReadHandler("p", nullptr);
    EXPECT_EQ(TextOf(instrument, "p"), "1");
    NeedTheLock(instrument);
}

TEST(Properties, AreSetTogetherOrNotAtAll) {
    Instrument instrument;
    instrument.Add("a", 1);
    instrument.Add("b", 2);
    instrument.AddProperty("fixed", MakeData(3), Instrument::eREADABLE);
    EventLog log(instrument);
    DataContainer values;
    values.PutValue("b", 20);
    values.PutValue("none", 1);
    values.PutValue("fixed", 30);
    values.PutValue("a", 1);
    const Warnings refusing(true);
    EXPECT_EQ(instrument.SetProperties(values), 1u);
    EXPECT_EQ(log.Take(), Events{"b: 2 -> 20"});

    values.PutValue("a", 10);
    values.PutValue("b", 200);
    std::vector<std::string> seen;
    instrument.AddValidator("b", Validating([&](auto&) {
                                seen.push_back(TextOf(instrument, "a")); // all values are in place
                                throw 7;
                            }));
    EXPECT_THROW(instrument.SetProperties(values), int);
    EXPECT_EQ(seen, std::vector<std::string>{"10"});
    EXPECT_EQ(TextOf(instrument, "a") + ' ' + TextOf(instrument, "b"), "1 20");
    EXPECT_EQ(log.Take(), Events());
    EXPECT_FALSE(instrument.PerformingMultiPropertyUpdate());
    NeedTheLock(instrument);

    values.Remove("b");
    instrument.InputProperties(values);
    std::vector<std::string> names;
    instrument.EnumProperties(names);
    EXPECT_EQ(names, (std::vector<std::string>{"none", "fixed", "a", "b"}));
    EXPECT_EQ(log.Take(), (Events{"none: none -> 1", "fixed: 3 -> 30", "a: 1 -> 10"}));
    names.clear();
    EXPECT_EQ(instrument.EnumProperties(names, values), 3u);
}

TEST(Properties, GoThroughBothForms) {
    Instrument instrument;
    Core::MemoryOutputStream nothing;
    EXPECT_EQ(instrument.OutputProperties(nothing), 0u);
    instrument.Add("a", 1);
    instrument.Add("text", "x < y");
    const auto sub = std::make_shared<Instrument>();
    sub->Add("inner", 2);
    instrument.Aggregate(sub, "sub", "Sub", "", "");
    EXPECT_TRUE(instrument.IsSubPropertyContainer("sub") && !instrument.IsSubPropertyContainer("a"));
    EXPECT_EQ(instrument.GetSubProperties("sub"), sub);
    EXPECT_EQ(instrument.GetSubProperties("a"), nullptr);
    DataContainer attributes;
    instrument.GetAttributes("sub", attributes);
    EXPECT_EQ(TextOf(attributes, sPROPERTY_CATEGORY) + ": " + TextOf(attributes, sPROPERTY_DESCRIPTION),
              "External: Properties for an external object aggregated by this object");

    EXPECT_NE(RaisedBy<Core::NullPointerError>([&] { sub->Aggregate(nullptr, "x", "", "", ""); }).GetText(), "");
    const auto middle = std::make_shared<Instrument>();
    middle->Aggregate(sub, "sub", "", "", "");
    const auto outer = std::make_shared<Instrument>();
    outer->Aggregate(middle, "middle", "", "", "");
    for (const auto& shown : {sub, middle, outer})
        EXPECT_EQ(RaisedBy<LogicError>([&] { sub->Aggregate(shown, "x", "", "", ""); }).GetText(),
                  "Expected an object that does not show this one for the property <x>, found one that does");
    EXPECT_EQ(sub->NumProperties(), 1u);

    Warnings warnings;
    Core::MemoryOutputStream bytes;
    const std::uint64_t size = instrument.OutputProperties(bytes);
    EXPECT_EQ(size, bytes.GetSize());
    EXPECT_EQ(warnings.GetNames(), std::vector<std::string>{"OmittingSubProperties"});
    Core::MemoryInputStream stream(bytes.GetBytes());
    const auto read = DataContainer::Create(stream);
    Instrument copy(true);
    copy.InputProperties(*read);
    EXPECT_EQ(TextOf(copy, "a") + TextOf(copy, "text"), "1x < y");
    Core::MemoryOutputStream again;
    copy.OutputProperties(again);
    EXPECT_TRUE(
        std::equal(bytes.GetBytes().begin(), bytes.GetBytes().end(), again.GetBytes().begin(), again.GetBytes().end()));

    DataContainer all;
    DataContainer stored;
    instrument.CloneProperties(all, false);
    instrument.CloneProperties(stored, true);
    EXPECT_EQ(Keys(all) + Keys(stored), "a text sub a text ");
    Instrument clone;
    clone.CloneContents(instrument);
    EXPECT_TRUE(clone.HoldsSameProperties(instrument));
    EXPECT_TRUE(clone.CloneProperty("a", "b") && !clone.CloneProperty("none", "c"));
    clone.SetValue("a", 9);
    EXPECT_EQ(TextOf(clone, "b") + TextOf(instrument, "a"), "11");
}

TEST(Properties, AcceptWhatTheirValidatorsKnow) {
    ScalarData::RegisterType(typeid(EMode), "Testing::EMode");
    auto modes = EnumValidator::For<EMode>();
    modes.AddValue(0, "Slow");
    modes.AddValue(1, "Fast");
    Instrument instrument;
    instrument.Add("Mode", EMode::slow, std::make_shared<EnumValidator>(modes));
    EXPECT_TRUE(instrument.SetValue("Mode", EMode::fast));
    EXPECT_TRUE(instrument.SetValue("Mode", "Slow"));
    EXPECT_EQ(instrument.GetValue<EMode>("Mode"), EMode::slow);
    EXPECT_EQ(instrument.GetPropertyText("Mode") + instrument.GetPropertyText("none"), "Slow");
    RaisedBy<PropertyTypeMismatch>([&] { instrument.SetValue("Mode", "slow"); });
    const auto illegal = RaisedBy<IllegalValueError>([&] { instrument.SetValue("Mode", EMode::odd); });
    EXPECT_EQ(illegal.GetText(), "Attempted to set the Mode property to an illegal value of 7.");
    EXPECT_EQ(illegal.GetCategory(), "Qor.Tivor.EnumValidator");
    DataContainer attributes;
    instrument.GetAttributes("Mode", attributes);
    EXPECT_EQ(Keys(*attributes.GetPtr<DataContainer>(sSELECTABLE_PROPERTY_VALUES)), "Slow Fast ");
    auto other = modes;
    EXPECT_TRUE(other.IsEqual(modes));
    other.AddValue(7, "Odd");
    EXPECT_FALSE(other.IsEqual(modes) || modes.IsEqual(EnumValidator()));
    instrument.RemoveValidator("Mode", std::make_shared<EnumValidator>(modes));
    EXPECT_TRUE(instrument.SetValue("Mode", EMode::odd));

    const auto lengths = [](const char* unit) {
        return std::make_shared<UnitValidator>(Core::UnitDictionary::Instance().Get(unit)->Clone());
    };
    instrument.Add("Length", UnitizedDouble(1, "Millimeter"), lengths("Meter"));
    EXPECT_TRUE(instrument.SetValue("Length", UnitizedDouble(2, "Micrometer")));
    const auto units = RaisedBy<InvalidUnitsError>([&] { instrument.SetValue("Length", UnitizedDouble(1, "Second")); });
    EXPECT_EQ(units.GetText(), "Attempted to set the Length property to a value with invalid units of Second");
    EXPECT_TRUE(lengths("Meter")->IsEqual(*lengths("Meter")) && !lengths("Meter")->IsEqual(*lengths("Second")));
    instrument.Add("n", 1, lengths("Meter"));
    EXPECT_EQ(RaisedBy<InvalidUnitsError>([&] { instrument.SetValue("n", 2); }).GetText(),
              "An attempt was made to set the n unitized/units property to a unknown type of int32");
    instrument.Add("u", UnitizedDouble(1, "Meter"), std::make_shared<UnitValidator>(nullptr));
    EXPECT_EQ(RaisedBy<Core::NullPointerError>([&] { instrument.SetValue("u", UnitizedDouble(2.0)); }).GetText(),
              "UnitValidator has a NULL UnitDescriptor for the u property!");
}

TEST(PropertyTexts, AreThoseThatWereFoundFirst) {
    EXPECT_EQ(GetPropertyString("Table1", "k", "fallback"), "fallback");
    Core::Locale::GetRoot().SetStringTable("Table1", {{"k", "text"}, {"l", "other"}});
    Core::Locale::GetRoot().SetStringTable(sCATEGORY_STRING_TABLE, {{"Detector", "Empfang"}});
    EXPECT_EQ(GetPropertyString("Table1", "k", "other fallback"), "fallback");
    EXPECT_EQ(GetPropertyString("Table1", "l", "fallback"), "other");
    EXPECT_EQ(GetPropertyCategory("Detector") + GetPropertyCategory("Stage"), "EmpfangStage");
}

} // namespace Qor::Tivor::Testing
