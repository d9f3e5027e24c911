#include "Alerts.h"
#include "StoredBytes.h"

#include <QorCore/MemoryStreams.h>
#include <Tivor/ScalarData.h>

#include <gtest/gtest.h>

#include <cmath>

namespace Qor::Tivor::Testing {

namespace {

using Core::Testing::RaisedBy;

void Fill(ScalarData& scalar, std::uint64_t size, const std::string& bytes) {
    Core::MemoryInputStream stream(bytes.data(), bytes.size());
    EXPECT_EQ(scalar.GetSerializer()->DataFromBinary(size, stream), size);
}

ScalarData Scalar(ETypeID kind, const std::string& bytes) {
    ScalarData scalar("Kind", kind);
    Fill(scalar, bytes.size(), bytes);
    return scalar;
}

template <class T>
ScalarData Number(ETypeID kind, T value) {
    ScalarData scalar("Kind", kind);
    scalar.SetValue(value);
    return scalar;
}

constexpr ETypeID kinds[] = {eSIGNED_INTEGRAL_TYPE, eUNSIGNED_INTEGRAL_TYPE, eFLOATING_POINT_TYPE};

} // namespace

TEST(ScalarData, HoldsItsKindsAndWidths) {
    const std::tuple<ETypeID, const char*, const char*, const std::type_info&> rows[] = {
        {kinds[0], "41", "A", typeid(char)},
        {kinds[0], "00 00 00 80", "-2147483648", typeid(int)},
        {kinds[0], "FE FF FF FF FF FF FF FF", "-2", typeid(std::int64_t)},
        {kinds[1], "41", "A", typeid(unsigned char)},
        {kinds[1], "00 00 00 00 01 00 00 00", "4294967296", typeid(std::uint64_t)},
        {kinds[2], "00 00 C0 3F", "1.5", typeid(float)},
        {kinds[2], "00 00 00 00 00 00 F0 7F", "inf", typeid(double)}};
    for (const auto& [kind, notation, text, native] : rows) {
        SCOPED_TRACE(notation);
        ScalarData scalar = Scalar(kind, Bytes(notation));
        EXPECT_EQ(scalar.ToString(), text);
        for (const auto& row : rows)
            EXPECT_EQ(scalar.HoldsType(std::get<3>(row)), std::get<3>(row) == native);
        scalar.EnableDataLocking();
        const std::string bytes = Stored(scalar);
        const std::shared_ptr<DataObject> clone = scalar.Clone();
        scalar.SetValue(1);
        for (const auto& twin : {clone, Read(bytes)}) {
            EXPECT_TRUE(bool(!twin->HoldsSameValueAs(scalar)) && twin->HoldsSameTypeAs(scalar));
            EXPECT_EQ(Stored(*twin), bytes);
        }
        EXPECT_TRUE(clone->IsLockable());
    }
}

TEST(ScalarData, RefusesOtherWidthsAndKinds) {
    for (const ETypeID kind : kinds)
        for (const std::uint64_t size : {0u, kind == eFLOATING_POINT_TYPE ? 2u : 3u, 16u}) {
            ScalarData scalar = Number(kind, 7);
            const auto error = RaisedBy<InvalidScalarSize>([&] { Fill(scalar, size, std::string(20, 'x')); });
            EXPECT_EQ(error.GetCategory(), "Qor.Tivor.ScalarSerializer");
            EXPECT_TRUE(bool(scalar.HoldsSameValueAs(Number(kind, 7))));
        }
    for (const ETypeID id : {eNO_TYPE, eINT32, eDOUBLE, eCOMPLEX})
        EXPECT_EQ(RaisedBy<InvalidScalarTypeID>([&] { ScalarData("Kind", id); }).GetText(),
                  "Invalid scalar type ID of " + std::to_string(id));
}

TEST(ScalarData, GivesAndTakesNumbersOfItsKindOnly) {
    const auto assertion = [](auto get) { return RaisedBy<Core::AssertionError>(get).GetText(); };
    const ScalarData whole = Number(kinds[0], 1);
    const ScalarData real = Number(kinds[2], 1.0);
    EXPECT_EQ(assertion([&] { real.GetValue<int>(); }), "eSIGNED_INTEGRAL_TYPE == m_eTypeID");
    EXPECT_EQ(assertion([&] { whole.GetValue<unsigned>(); }), "eUNSIGNED_INTEGRAL_TYPE == m_eTypeID");
    EXPECT_EQ(assertion([&] { whole.GetValue<double>(); }), "eFLOATING_POINT_TYPE == m_eTypeID");
    const auto refuses = [](ScalarData scalar, auto value) {
        const std::string before = Stored(scalar);
        RaisedBy<Core::OutOfRangeError>([&] { scalar.SetValue(value); });
        EXPECT_EQ(Stored(scalar), before);
    };
    refuses(Scalar(kinds[0], "A"), 128);
    refuses(Scalar(kinds[1], "A"), -1);
    refuses(Number(kinds[0], 1), 1.5);
    refuses(Number(kinds[0], 1), std::nan(""));
    refuses(Number(kinds[0], std::int64_t{1}), 9223372036854775808.0);
    refuses(Number(kinds[1], std::uint64_t{1}), 18446744073709551616.0);
    refuses(Number(kinds[1], 1u), -0.5f);
    refuses(Number(kinds[2], 1.0f), 1e39);
    ScalarData wide = Number(kinds[1], std::uint64_t{1} << 32);
    RaisedBy<Core::OutOfRangeError>([&] { wide.GetValue<unsigned>(); });
    RaisedBy<Core::OutOfRangeError>([&] { Number(kinds[2], 1e300).GetValue<float>(); });
    EXPECT_EQ(Number(kinds[0], -128.0f).GetValue<int>(), -128);
    EXPECT_EQ(Number(kinds[2], 16777217).GetValue<double>(), 16777217.0);
    EXPECT_EQ(Number(kinds[2], 0.1f).GetValue<double>(), static_cast<double>(0.1f));
}

TEST(ScalarData, HasNoWidthBeforeItsFirstValue) {
    ScalarData scalar("Kind", eUNSIGNED_INTEGRAL_TYPE);
    EXPECT_TRUE(scalar.SerializationIsEnabled());
    EXPECT_EQ(scalar.ToString(), "");
    const std::string text = "Invalid size of 0 reported for scalar value of type Kind";
    EXPECT_EQ(RaisedBy<InvalidScalarSize>([&] { scalar.GetValue<unsigned>(); }).GetText(), text);
    EXPECT_EQ(RaisedBy<InvalidScalarSize>([&] { Stored(scalar); }).GetText(), text);
    RaisedBy<Core::OutOfRangeError>([&] { scalar.SetValue(-1); });
    EXPECT_EQ(scalar.GetSize_bytes(), 0u);
    EXPECT_TRUE(bool(scalar.HoldsSameValueAs(*scalar.Clone())));
    EXPECT_TRUE(bool(!scalar.HoldsSameValueAs(Number(eUNSIGNED_INTEGRAL_TYPE, 0))));
}

TEST(ScalarData, ComparesNumbersWhateverTheirWidth) {
    EXPECT_TRUE(bool(Scalar(kinds[0], "\xFE").HoldsSameValueAs(Number(kinds[0], std::int64_t{-2}))));
    EXPECT_TRUE(bool(!Scalar(kinds[0], "\xFE").HoldsSameValueAs(Number(kinds[0], 254))));
    EXPECT_TRUE(bool(Number(kinds[2], 0.5f).HoldsSameValueAs(Number(kinds[2], 0.5))));
    EXPECT_TRUE(bool(Number(kinds[2], std::nan("")).HoldsSameValueAs(Number(kinds[2], std::nanf("")))));
    EXPECT_TRUE(bool(!Number(kinds[0], 1).HoldsSameValueAs(Number(kinds[1], 1))));
    ScalarData named("Other", kinds[0]);
    named.SetValue(1);
    EXPECT_TRUE(bool(!named.HoldsSameValueAs(Number(kinds[0], 1))));
    EXPECT_TRUE(named.EnableSerialization(false));
    EXPECT_EQ(RaisedBy<NullSerializer>([&] { Stored(named); }).GetText(),
              "No serializer for data with class name = Other");
}

namespace {
enum class EMode : short { eCOARSE = -2, eFINE = 3 };
enum class EMask : std::uint64_t { eALL = ~std::uint64_t{0} };
enum class EUnnamed { eONE = 1 };
} // namespace

TEST(ScalarTypes, AreKnownByTheirClassNames) {
    ScalarData::RegisterType(typeid(EMode), "Test.Mode");
    ScalarData::RegisterType(typeid(EMode), "Test.Mode");
    ScalarData::RegisterType(typeid(EMask), "Test.Mask");
    for (const char* const name : {"Test.Mask", "Test.Other", ""})
        RaisedBy<Core::LogicError>([&] { ScalarData::RegisterType(typeid(EMode), name); });
    RaisedBy<Core::LogicError>([] { ScalarData::RegisterType(typeid(EUnnamed), "Test.Mode"); });
    RaisedBy<Core::LogicError>([] { MakeScalar(EUnnamed::eONE); });

    EXPECT_EQ(Stored(*MakeScalar(EMode::eCOARSE), ""), Bytes("00000000 0E 09 000000 'Test.Mode' 01 02 FEFF"));
    const auto mode = std::dynamic_pointer_cast<ScalarData>(Read(Stored(*MakeScalar(EMode::eFINE))));
    EXPECT_TRUE(mode->HoldsType(typeid(EMode)) && mode->HoldsType(typeid(short)) && !mode->HoldsType(typeid(EMask)));
    EXPECT_EQ(GetEnum<EMode>(*mode), EMode::eFINE);
    EXPECT_EQ(GetEnum<EMask>(*mode), std::nullopt);
    EXPECT_EQ(GetEnum<EMask>(*MakeScalar(EMask::eALL)), EMask::eALL);
    EXPECT_FALSE(ScalarData("", kinds[0]).HoldsType(typeid(EUnnamed)));

    // Whatever kind and width the number was stored with.
    const std::tuple<ETypeID, const char*, std::optional<int>> rows[] = {{kinds[0], "FE", -2},
                                                                         {kinds[0], "0080 FFFF", -32768},
                                                                         {kinds[0], "FF7F FFFF", {}},
                                                                         {kinds[0], "0080 0000", {}},
                                                                         {kinds[1], "FF7F 0000", 32767},
                                                                         {kinds[1], "0080", {}},
                                                                         {kinds[1], "FFFFFFFF FFFFFFFF", {}}};
    for (const auto& [kind, notation, number] : rows) {
        ScalarData scalar("Test.Mode", kind);
        const std::string bytes = Bytes(notation);
        Fill(scalar, bytes.size(), bytes);
        if (number)
            EXPECT_EQ(static_cast<int>(GetEnum<EMode>(scalar).value()), *number);
        else
            RaisedBy<Core::OutOfRangeError>([&] { GetEnum<EMode>(scalar); });
    }
    ScalarData floating("Test.Mode", kinds[2]);
    floating.SetValue(1.0);
    RaisedBy<Core::AssertionError>([&] { GetEnum<EMode>(floating); });
}

} // namespace Qor::Tivor::Testing
