#include "Alerts.h"
#include "Threads.h"

#include <QorCore/MemoryStreams.h>
#include <QorCore/UnitizedValue.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <regex>
#ifdef TIVOR_TEST_UDUNITS
#include <udunits2.h>
#endif

namespace {

using namespace Qor::Core;
using Qor::Core::Testing::RaisedBy;
using namespace std::string_literals;

using Value = UnitizedValue<double>;

constexpr double infinity = std::numeric_limits<double>::infinity();
const double notANumber = std::nan("");
UnitDictionary& Dictionary() { return UnitDictionary::Instance(); }
std::string Texts(const std::vector<Value>& values) {
    std::string texts;
    for (const Value& value : values)
        texts += (texts.empty() ? "" : ", ") + value.ToString();
    return texts;
}

#ifdef TIVOR_TEST_UDUNITS
using Parsed = std::unique_ptr<ut_unit, decltype(&ut_free)>;

std::string Spelling(std::string name) {
    for (const auto& [words, spelling] :
         {std::pair("^Square(.*)", "$1^2"), {"^Cubic(.*)", "$1^3"}, {"^Inverse", "1/"}, {"(.)Per", "$1/"}})
        name = std::regex_replace(name, std::regex(words), spelling);
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
    return name;
}
#endif

TEST(Units, TableIsThatOfTheOracle) {
#ifndef TIVOR_TEST_UDUNITS
    GTEST_SKIP() << "built without UDUNITS-2";
#else
    ut_set_error_message_handler(ut_ignore);
    const std::unique_ptr<ut_system, decltype(&ut_free_system)> system(ut_read_xml(nullptr), ut_free_system);
    const auto parse = [&](const std::string& text) {
        return Parsed(ut_parse(system.get(), text.c_str(), UT_ASCII), ut_free);
    };
    const char* const bases[] = {"m", "kg", "s", "A", "K", "mol", "cd", "rad"};
    EXPECT_EQ(UnitDictionary::GetStandardUnits().size(), 58u);
    for (const auto& unit : UnitDictionary::GetStandardUnits()) {
        EXPECT_EQ(Dictionary().Get(unit->GetName()), unit);
        const bool isOurs = unit->GetSymbol() == "Ang" || unit->GetSymbol() == "deg";
        std::string si = "1";
        for (std::size_t i = 0; i < std::size(bases); ++i)
            si += std::string(" ") + bases[i] + "^" + std::to_string(unit->GetExponents()[i]);
        for (const std::string& text :
             {Spelling(unit->GetName()), isOurs ? Spelling(unit->GetName()) : unit->GetSymbol()}) {
            const Parsed from = parse(text);
            const Parsed to = parse(si);
            ASSERT_TRUE(from && to && ut_are_convertible(from.get(), to.get())) << text << " as " << si;
            const std::unique_ptr<cv_converter, decltype(&cv_free)> converter(ut_get_converter(from.get(), to.get()),
                                                                              cv_free);
            for (const double number : {0.0, 1.0, -1.25e-7, 77.7, 3.1e5}) {
                const double expected = cv_convert_double(converter.get(), number);
                EXPECT_NEAR(Value(number, unit).GetSIValue(), expected, 1e-12 * std::abs(expected))
                    << number << " " << text;
            }
        }
    }
#endif
}

TEST(Units, ConversionsMeetTheNumbersThatAreMeant) {
    const struct {
        Value from;
        Value to;
        double tolerance = 0; // relative, the other way too
    } rows[] = {{{1, "Millimeter"}, {1000, "Micrometer"}},
                {{1, "CubicMeter"}, {1e18, "CubicMicrometer"}},
                {{1, "Degree"}, {3600, "ArcSecond"}},
                {{50, "Percent"}, 0.5},
                {{infinity, "Meter"}, {infinity, "Foot"}},
                {{1, "Inch"}, {25.4, "Millimeter"}},
                {{100, "Celsius"}, {212, "Fahrenheit"}, 1e-14},
                {{300, "Kelvin"}, {26.85, "Celsius"}, 1e-14},
                {{3, UnitDescriptor::Create("Down", "", -0.5, 0, {1})}, {-1500, "Millimeter"}}};
    for (const auto& [from, to, tolerance] : rows)
        for (const auto& [a, b] : {std::pair(from, to), {to, from}}) {
            const Value converted = a.ConvertTo(b.GetUnits());
            const double difference = std::abs(converted.GetValue() - b.GetValue());
            EXPECT_TRUE(converted == b || difference <= tolerance * std::abs(b.GetValue())) << Texts({a, b});
        }
    // Every factor of a thousand, for numbers that a wrong last bit would change.
    for (int i = 1; i < 1000; ++i)
        for (const auto& [big, small] :
             {std::pair("Meter", "Millimeter"), {"Millimeter", "Micrometer"}, {"Micrometer", "Nanometer"}}) {
            EXPECT_EQ(Value(i, big).ConvertTo(small).GetValue(), 1000.0 * i);
            EXPECT_EQ(Value(i, small).ConvertTo(big).GetValue(), i / 1000.0);
        }
    const Value odd(-0.0, UnitDescriptor::Create("Odd", "", notANumber, infinity));
    EXPECT_TRUE(std::signbit(odd.ConvertTo(odd.GetUnits()->Clone()).GetValue()));
    EXPECT_TRUE(std::signbit(Value(-0.0, "Meter").ConvertTo("Inch").GetValue()));
}

TEST(Units, ArithmeticKeepsUnits) {
    const Value mm(2, "Millimeter"), um(500, "Micrometer"), half(50, "Percent"), newton(3, "Newton"), s(2, "Second");
    const Value volt(6, "Volt"), perMm(3, "InverseMillimeter"), warm(20, "Celsius");
    EXPECT_EQ(Texts({mm + um, um - mm, warm - warm, -mm}), "2.5 mm, -1500 um, 0 degC, -2 mm");
    EXPECT_EQ(Texts({3 * mm, mm / 4, 2 * warm, 2 * half, half / 2}), "6 mm, 0.5 mm, 40 degC, 100 %, 25 %");
    EXPECT_EQ(Texts({half * mm, mm * half, mm / half, half / mm}), "1 mm, 1 mm, 4 mm, 0.25 1/mm");
    EXPECT_EQ(Texts({half * half, half / half, 1 / half, um / (mm / 2), um * perMm}), "0.25, 1, 2, 0.5, 1.5");
    EXPECT_EQ(Texts({mm * mm, mm / s, newton * (mm / 2)}), "4 mm^2, 1 mm/s, 3 N*mm");
    EXPECT_EQ(Texts({newton * s, volt / s, volt / (newton * s)}), "6 N*s, 3 V/s, 1 V/(N*s)");
    EXPECT_EQ(Texts({1 / mm, 6 / newton, 12 / (newton * s)}), "0.5 1/mm, 2 1/N, 2 1/(N*s)");
    EXPECT_EQ(Texts({1e-7, Value(0.1, UnitDescriptor::Create("Furlong", "", 201.168))}), "1e-07, 0.1 Furlong");
    EXPECT_EQ((volt / (newton * s)).GetUnits()->GetName(), "Volt/(Newton*Second)");
    EXPECT_EQ((mm / Value(1, "Millisecond")).GetUnits(), Dictionary().Get("MeterPerSecond"));
    EXPECT_EQ((3 * mm).GetUnits(), mm.GetUnits());
    EXPECT_EQ((mm * newton).GetUnits()->GetScale(), 1e-3);
    EXPECT_EQ((mm * newton).GetUnits()->GetExponents(), (UnitDescriptor::Exponents{2, 1, -2}));
}

TEST(Units, WhatHasNoMeaningIsRefused) {
    const Value m(1, "Meter"), warm(20, "Celsius"), kelvin(5, "Kelvin");
    const auto odd = [](double scale, double offset = 0) {
        return Value(1, UnitDescriptor::Create("Odd", "o", scale, offset, {1}));
    };
    const std::pair<std::function<Value()>, const char*> rows[] = {
        {[&] { return m.ConvertTo("Second"); }, "\"Meter\" to \"Second\""},
        {[&] { return Value(1, "Radian").ConvertTo("Percent"); }, "\"Radian\" to \"Percent\""},
        {[&] { return m + 1; }, "\"\" to \"Meter\""},
        {[&] { return warm + kelvin; }, "\"Kelvin\" to \"Celsius\""},
        {[&] { return warm * m; }, "\"Celsius\" to \"Meter\""},
        {[&] { return odd(0).ConvertTo("Meter"); }, "\"Odd\" to \"Meter\""},
        {[&] { return m.ConvertTo(odd(notANumber).GetUnits()); }, "\"Meter\" to \"Odd\""},
        {[&] { return odd(1, infinity).ConvertTo("Meter"); }, "\"Odd\" to \"Meter\""},
        {[&] { return odd(1e-200) * odd(1e-200); }, "\"Odd\" to \"Odd\""}};
    for (const auto& [operation, units] : rows)
        EXPECT_EQ(RaisedBy<IllegalUnitConversion>(operation).ToString(),
                  "IllegalUnitConversion [Qor.Core.UnitizedValue] Illegal unit conversion from "s + units);
    const Value far(1, UnitDescriptor::Create("Far", "f", 1, 0, {127}));
    EXPECT_THROW(far * m, OutOfRangeError);
    EXPECT_THROW(1 / far / m / m, OutOfRangeError);
    EXPECT_EQ(RaisedBy<UnitNotFound>([&] { return m.ConvertTo("100%1%"); }).ToString(),
              "UnitNotFound [Qor.Core.UnitDictionary] 100%1% unit not found in the unit dictionary");
    EXPECT_EQ(Dictionary().Find("meter"), nullptr);
    EXPECT_THROW(Dictionary().Add({"Meter", "m", 1.1, 0, {1}}), LogicError);
    EXPECT_THROW(Dictionary().Add({"", "", 2}), LogicError);
    Dictionary().Add(*m.GetUnits());
}

TEST(Units, OrderIsStrictAndWeak) {
    const auto unit = [](const char* name, double scale) { return UnitDescriptor::Create(name, "", scale, 0, {1}); };
    const auto in = [](const char* name) { return [name](double number) { return Value(number, name); }; };
    const auto m = in("Meter"), mm = in("Millimeter"), km = in("Kilometer"), percent = in("Percent");
    const Value a(1, unit("A", notANumber)), b(1, unit("B", infinity));
    const auto list = [](auto... values) { return std::vector<Value>{values...}; };
    const std::vector<Value> ascending =
        list(Value(5, "InverseMeter"), -infinity, -1.0, 0.0, percent(0), 1.0, percent(100), infinity, notANumber,
             percent(notANumber), Value(9, "Kilogram"), m(-1), m(0), mm(0), m(1), mm(1000), km(1), b, a,
             Value(2, a.GetUnits()), m(notANumber));
    for (std::size_t i = 0; i < ascending.size(); ++i)
        for (std::size_t j = 0; j < ascending.size(); ++j)
            EXPECT_EQ(ascending[i] < ascending[j], i < j) << Texts({ascending[i], ascending[j]});
    const std::vector<Value> pairs = {0.0, -0.0, notANumber, -notANumber};
    for (std::size_t i = 0; i < pairs.size(); i += 2)
        EXPECT_FALSE(pairs[i] < pairs[i + 1] || pairs[i + 1] < pairs[i]) << Texts({pairs[i]});
    EXPECT_FALSE(Value(notANumber) == Value(notANumber));
    EXPECT_EQ(Value(1, "Meter"), Value(1, Dictionary().Get("Meter")->Clone()));
    EXPECT_NE(Value(1, "Meter"), Value(1000, "Millimeter"));
    EXPECT_NE(UnitDescriptor("a", "", 0.0), UnitDescriptor("a", "", -0.0));
    EXPECT_EQ(UnitDescriptor("a", "", notANumber), UnitDescriptor("a", "", notANumber));
}

TEST(Units, AreReadInWholeAndThoseThatAreHeldAlreadyAreSharedOn) {
    const Value value(-2.0, UnitDescriptor::Create("Own", "o", 0.5));
    MemoryOutputStream memory;
    DataOutputStream(memory).Write(value);
    for (Value read : {Value(7, value.GetUnits()), Value(7, "Meter")}) {
        const bool isHeld = read.GetUnits() == value.GetUnits();
        for (std::size_t size = 0; size < memory.GetSize(); ++size) {
            MemoryInputStream cut(memory.GetBytes().first(size));
            EXPECT_TRUE(!DataInputStream(cut).Read(read) && read.GetValue() == 7) << size;
        }
        MemoryInputStream stream(memory.GetBytes());
        EXPECT_TRUE(DataInputStream(stream).Read(read) && read == value);
        EXPECT_EQ(read.GetUnits() == value.GetUnits(), isHeld);
    }
}

TEST(UnitsThreads, SomeFindWhatOthersAdd) {
    Testing::OnThreads(4, [&](int thread) {
        for (int i = 0; i < 600; ++i) {
            const std::string name = "Unit" + std::to_string(i);
            if (thread % 2 == 0)
                Dictionary().Add({name, "", 1e9 + i, 0, {0, 0, 0, 0, 0, 1}});
            const auto found =
                i % 2 == 0 ? Dictionary().Find(name) : Dictionary().FindLike({0, 0, 0, 0, 0, 1}, 1e9 + i);
            EXPECT_TRUE(found ? found->GetName() == name : thread % 2 == 1) << name;
            EXPECT_EQ(Value(1, "Kilometer").ConvertTo("Meter").GetValue(), 1000);
        }
    });
}

} // namespace
