#include "Alerts.h"
#include "Sets.h"
#include "StoredBytes.h"
#include "Threads.h"

#include <QorCore/SystemLibrary.h>
#include <Tivor/Codec.h>
#include <Tivor/MatrixView.h>

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

namespace Qor::Tivor::Testing {

namespace {

using Core::Testing::ErrorOf;

/// The codec of FlatTextPlugIn.cpp, registered while this lives.
class FlatText {
public:
    FlatText() { Call("RegisterFlatText"); }
    FlatText(const FlatText&) = delete;
    FlatText& operator=(const FlatText&) = delete;
    ~FlatText() { Call("UnregisterFlatText"); }

    static std::shared_ptr<DataContainer> Container(const std::string& text) {
        auto container = DataContainer::Create();
        container->PutValue("flat", text);
        return container;
    }

private:
    static void Call(const char* function) {
        static std::string failure;
        static auto* const library = new auto(
            Core::SystemLibrary::Load(Core::PathName(TIVOR_TEST_PROGRAMS "/FlatTextPlugIn.dll"), failure)); // stays
        if (!*library)
            throw std::runtime_error(failure);
        reinterpret_cast<void (*)()>((*library)->GetProcAddress(function))();
    }
};

std::unordered_set<std::string> Formats() {
    std::unordered_set<std::string> formats;
    EnumCodecFormats(formats);
    return formats;
}

template <class T>
T Fail() {
    throw Core::LogicError("odd");
}
template <class T>
std::shared_ptr<T> Null() {
    return nullptr;
}

/// Does, and makes codecs that do, what a test says. The registry is used from within it, and by another thread
/// meanwhile.
class OddFactory final : public Codec::Factory {
public:
    struct Behaviour {
        std::function<void()> onGetFormats = [] {};
        std::function<std::shared_ptr<Codec>()> create = nullptr;
        std::function<std::shared_ptr<IDataSet>()> decode = [] { return std::make_shared<DataSet>(); };
        std::function<bool()> encode = [] { return true; };
    };

    explicit OddFactory(std::vector<std::string> formats) : OddFactory(std::move(formats), Behaviour()) {}
    OddFactory(std::vector<std::string> formats, Behaviour behaviour)
        : m_formats(std::move(formats)), m_behaviour(std::move(behaviour)) {}
    OddFactory(const OddFactory&) = delete;
    OddFactory& operator=(const OddFactory&) = delete;
    ~OddFactory() override { UseRegistry(); }

    void GetFormats(std::vector<std::string>& formats) const override {
        UseRegistry();
        formats.insert(formats.end(), m_formats.begin(), m_formats.end());
        m_behaviour.onGetFormats();
    }
    std::shared_ptr<Codec> CreateCodec(const std::string& format) override {
        UseRegistry();
        return m_behaviour.create ? m_behaviour.create() : std::make_shared<OddCodec>(format, m_behaviour);
    }

private:
    class OddCodec final : public Codec {
    public:
        OddCodec(std::string format, Behaviour behaviour)
            : m_format(std::move(format)), m_behaviour(std::move(behaviour)) {}
        std::string GetFormatName() const override { return m_format; }
        std::string GetDescription() const override { return "Odd"; }
        bool CanDecode(const DataContainer&) const override { return true; }
        std::shared_ptr<IDataSet> Decode(std::shared_ptr<DataContainer>) override { return m_behaviour.decode(); }
        bool Encode(IDataSet&, DataContainer&) override { return m_behaviour.encode(); }

    private:
        std::string m_format;
        Behaviour m_behaviour;
    };

    class SilentFactory final : public Codec::Factory {
        void GetFormats(std::vector<std::string>& formats) const override { formats.push_back("Silent"); }
        std::shared_ptr<Codec> CreateCodec(const std::string&) override { return nullptr; }
    };

    // Hangs where this factory is called, or destroyed, under the lock of the registry.
    static void UseRegistry() {
        const auto use = [] {
            const auto silent = std::make_shared<SilentFactory>();
            RegisterCodecs(silent);
            UnregisterCodecs(*silent);
            Formats();
        };
        use();
        std::thread(use).join();
    }

    std::vector<std::string> m_formats;
    Behaviour m_behaviour;
};

/// The codec of the format of `DataSet`, which is served again, whatever happened, when this ends.
class KeepingDefault {
public:
    KeepingDefault() = default;
    KeepingDefault(const KeepingDefault&) = delete;
    KeepingDefault& operator=(const KeepingDefault&) = delete;
    ~KeepingDefault() {
        OddFactory::Behaviour behaviour;
        behaviour.create = [codec = m_codec] { return codec; };
        RegisterCodecs(std::make_shared<OddFactory>(std::vector{DataSet::sFORMAT}, behaviour));
    }

private:
    std::shared_ptr<Codec> m_codec = CreateCodec(DataSet::sFORMAT);
};

using Names = std::unordered_set<std::string>;

} // namespace

TEST(Codecs, AreRegisteredByFormat) {
    EXPECT_EQ(Formats(), Names{"QOR Data Set"});
    RegisterCodecs(nullptr);
    const auto one = std::make_shared<OddFactory>(std::vector<std::string>{"Odd", "Other", "Odd"});
    auto other = std::make_shared<OddFactory>(std::vector<std::string>{"Other"});
    const std::weak_ptr<OddFactory> otherLives = other;
    const struct {
        std::function<void()> change;
        Names formats;
    } rows[] = {
        {[&] { RegisterCodecs(one); }, {"QOR Data Set", "Odd", "Other"}},
        {[&] { RegisterCodecs(one); }, {"QOR Data Set", "Odd", "Other"}},
        {[&] { UnregisterCodecs(*other); }, {"QOR Data Set", "Odd", "Other"}},
        {[&] { RegisterCodecs(other); }, {"QOR Data Set", "Odd", "Other"}},
        {[&] { UnregisterCodecs(*other); }, {"QOR Data Set", "Odd"}}, // it is not given back
        {[&] { RegisterCodecs(other), other.reset(); }, {"QOR Data Set", "Odd", "Other"}},
        {[&] { EXPECT_FALSE(otherLives.expired()); }, {"QOR Data Set", "Odd", "Other"}},
        {[&] { RegisterCodecs(one); }, {"QOR Data Set", "Odd", "Other"}}, // the last to hold the other one lets it go
        {[&] { EXPECT_TRUE(otherLives.expired()); }, {"QOR Data Set", "Odd", "Other"}},
        {[&] { UnregisterCodecs(*one); }, {"QOR Data Set"}},
        {[&] { UnregisterCodecs(*one); }, {"QOR Data Set"}},
    };
    for (int step = 1; const auto& [change, formats] : rows) {
        SCOPED_TRACE(step++);
        change();
        EXPECT_EQ(Formats(), formats);
        for (const std::string format : {"Odd", "Other"}) {
            const auto codec = CreateCodec(format);
            EXPECT_EQ(codec ? codec->GetFormatName() : "none", formats.count(format) != 0 ? format : "none");
        }
    }
    const auto standard = CreateCodec(DataSet::sFORMAT);
    EXPECT_EQ(standard->GetFormatName() + ", " + standard->GetDescription(),
              "QOR Data Set, Common QOR Data Set Format");
    EXPECT_FALSE(standard->CanDecode(DataContainer()));
}

TEST(Codecs, MayFail) {
    const std::string odd = "LogicError [] odd";
    const std::string none = "NoCodecFound [Qor.Tivor.%] No codec was found for data format: Odd";
    const struct {
        const char* title;
        OddFactory::Behaviour behaviour;
        std::string atRegistering, atDecoding, atEncoding;
    } rows[] = {
        {"behaves", {}, "1", "1", "1"},
        {"cannot tell its formats", {.onGetFormats = Fail<void>}, odd, none, none},
        {"makes none", {.create = Null<Codec>}, "1", none, none},
        {"cannot make one", {.create = Fail<std::shared_ptr<Codec>>}, "1", odd, odd},
        {"decodes nothing", {.decode = Null<IDataSet>}, "1", "0", "1"},
        {"cannot decode", {.decode = Fail<std::shared_ptr<IDataSet>>}, "1", odd, "1"},
        {"encodes nothing", {.encode = [] { return false; }}, "1", "1", "0"},
        {"cannot encode", {.encode = Fail<bool>}, "1", "1", odd},
    };
    const auto outcomeOf = [](const std::function<bool()>& operation) {
        bool outcome = false;
        const std::string error = ErrorOf([&] { outcome = operation(); });
        return error.empty() ? std::to_string(outcome) : error;
    };
    const auto in = [](const char* operation, std::string text) {
        const auto place = text.find('%');
        return place == std::string::npos ? text : text.replace(place, 1, operation);
    };
    DataSet set;
    const auto common = set.GetContent()->Clone();
    DataContainer target;
    for (const auto& [title, behaviour, atRegistering, atDecoding, atEncoding] : rows) {
        SCOPED_TRACE(title);
        const auto factory = std::make_shared<OddFactory>(std::vector<std::string>{"Odd"}, behaviour);
        EXPECT_EQ(outcomeOf([&] { return RegisterCodecs(factory), true; }), atRegistering);
        EXPECT_EQ(Formats().count("Odd"), atRegistering == "1" ? 1u : 0u);
        EXPECT_EQ(outcomeOf([&] { return Decode(common, "Odd") != nullptr; }), in("Decode", atDecoding));
        EXPECT_EQ(outcomeOf([&] { return Encode(set, target, "Odd"); }), in("Encode", atEncoding));
        EXPECT_EQ(outcomeOf([&] { return Transcode(common, "Odd", target, "Flat Text"); }),
                  in("Transcode", "NoCodecFound [Qor.Tivor.%] No codec was found for data format: Flat Text"));
        EXPECT_TRUE(target.IsEmpty());
        EXPECT_EQ(outcomeOf([&] { return Transcode(common, "Odd", target, DataSet::sFORMAT); }),
                  in("Decode", atDecoding));
        EXPECT_EQ(target.IsEmpty(), atDecoding != "1");
        target.Clear();
        EXPECT_EQ(outcomeOf([&] { return Transcode(common, "", target, "Odd"); }), in("Transcode", atEncoding));
        ErrorOf([&] { UnregisterCodecs(*factory); });
        EXPECT_EQ(Formats(), Names{"QOR Data Set"});
    }
}

TEST(Codecs, OutliveTheirFactory) {
    auto lasting = std::make_shared<OddFactory>(std::vector<std::string>{"Lasting", "Too"});
    std::shared_ptr<OddFactory> leaving;
    std::weak_ptr<OddFactory> leavingLives;
    const std::weak_ptr<OddFactory> lastingLives = lasting;
    OddFactory::Behaviour behaviour;
    behaviour.create = [&] {
        UnregisterCodecs(*leaving);
        leaving.reset();
        EXPECT_FALSE(leavingLives.expired()); // by the call only
        return CreateCodec("Lasting");
    };
    leavingLives = leaving = std::make_shared<OddFactory>(std::vector<std::string>{"Odd"}, behaviour);
    RegisterCodecs(leaving);
    OddFactory& registered = *lasting;
    RegisterCodecs(std::move(lasting));
    const auto codec = CreateCodec("Odd");
    EXPECT_TRUE(leavingLives.expired() && !lastingLives.expired());
    UnregisterCodecs(registered); // which was its last owner
    EXPECT_TRUE(lastingLives.expired());
    EXPECT_EQ(codec->GetFormatName(), "Lasting");
    EXPECT_NE(codec->Decode(nullptr), nullptr);
}

TEST(Codecs, OfTheCommonFormatMayBeReplaced) {
    const KeepingDefault keeping;
    const auto factory = std::make_shared<OddFactory>(std::vector{DataSet::sFORMAT});
    RegisterCodecs(factory);
    EXPECT_EQ(CreateCodec(DataSet::sFORMAT)->GetDescription(), "Odd");
    UnregisterCodecs(*factory);
    EXPECT_EQ(Formats(), Names());
    EXPECT_EQ(CreateCodec(DataSet::sFORMAT), nullptr);
    DataSet set(Surface("Height"), "s");
    DataContainer target;
    EXPECT_EQ(ErrorOf([&] { Encode(set, target, DataSet::sFORMAT); }),
              "NoCodecFound [Qor.Tivor.Encode] No codec was found for data format: QOR Data Set");
    for (const char* const format : {"", "QOR Data Set"}) // this needs none
        EXPECT_EQ(TellChannels(*Decode(set.GetContent()->Clone(), format)), "Height: s; ");
}

TEST(Codecs, ComeFromPlugIns) {
    const std::string text = "Surface;a;Phase;2 Micrometer;;;1;3;0 -0 nan(7FF0000000000001)\n"
                             "Primary;b;Height;1 ;0.1 Millimeter;-1e-300 Second;2;2;1 5e-324 -inf 0.1\n"
                             "Surface;none;Height;1 ;;;0;7;\n"
                             "Profile;p;;1 Meter;0.5 Second;3;1 2 3\n"
                             "Profile;q;Height;1 ;;0;\n";
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(CreateCodec("Flat Text"), nullptr);
        const FlatText registered;
        const auto source = FlatText::Container(text);
        for (const char* const place : {"argument", "top", "metadata"}) {
            const auto named = source->Clone();
            if (place == std::string("top"))
                named->PutValue(sDATA_FORMAT, "Flat Text");
            else if (place == std::string("metadata"))
                named->GetSubData({sMETA_DATA}, true)->PutValue(sDATA_FORMAT, "Flat Text");
            const auto set = Decode(named, place == std::string("argument") ? "Flat Text" : "");
            EXPECT_EQ(TellChannels(*set), "Height: b none; Phase: a; ");
        }
        const auto set = Decode(source, "Flat Text");
        const auto surface = set->GetPrimaryData2D();
        ASSERT_TRUE(surface && surface == set->GetData2D("b"));
        EXPECT_EQ(MatrixView<double>(*surface)(1, 1), 0.1);
        UnitizedDouble dim1, dim2;
        EXPECT_TRUE(surface->GetFixedSpacing(dim1, dim2));
        EXPECT_EQ(dim1.ToString() + ' ' + dim2.ToString(), "0.1 mm -1e-300 s");
        EXPECT_EQ(set->GetData1DChannel("Unknown")->GetDataAt(0)->GetDataScale().ToString(), "1 m");

        DataContainer common, back;
        EXPECT_TRUE(Transcode(source, "Flat Text", common, DataSet::sFORMAT));
        const auto stored = DataContainer::Create();
        ReadInto(*stored, Stored(common));
        EXPECT_TRUE(Transcode(stored, "", back, "Flat Text"));
        EXPECT_EQ(back.GetValue<std::string>("flat"), text);
        EXPECT_EQ(back.GetValue<std::string>(sDATA_FORMAT), "Flat Text");
    }
    EXPECT_EQ(Formats(), Names{"QOR Data Set"});
}

TEST(Codecs, TellWhatIsMalformed) {
    const FlatText registered;
    const std::string good = "Profile;p;Height;1 ;;0;\n";
    const struct {
        std::string text, message;
    } rows[] = {
        {"Map;a;Height\n", "Line 1: expected Surface, Primary or Profile, found \"Map\""},
        {"Surface;a;Height;1 ;1 Ell;1 Meter;1;1;1\n", "Line 1: expected the name of a unit, found \"Ell\""},
        {"Surface;a;Height;1 ;;;4294967295;4294967295;1\n",
         "Line 1: expected 18446744065119617025 samples, found \"1\""},
        {good + good + "Profile;q;Height;1 ;;2;1 x\n", "Line 3: expected a sample, found \"x\""},
    };
    DataContainer target;
    for (const auto& [text, message] : rows)
        EXPECT_EQ(ErrorOf([&, source = FlatText::Container(text)] {
                      Transcode(source, "Flat Text", target, DataSet::sFORMAT);
                  }),
                  "MalformedFlatText [Test.FlatText] " + message);
    // What is no such container, and what the format has no place for, are no errors.
    EXPECT_FALSE(Transcode(DataContainer::Create(), "Flat Text", target, DataSet::sFORMAT));
    DataSet set(Surface("Height"), "whole numbers");
    EXPECT_FALSE(Encode(set, target, "Flat Text"));
    EXPECT_TRUE(target.IsEmpty());
}

TEST(Codecs, AreRequired) {
    DataSet set;
    DataContainer target;
    const std::string text = "No codec was found for data format: ";
    EXPECT_EQ(ErrorOf([&] { Encode(set, target, ""); }), "NoCodecFound [Qor.Tivor.Encode] " + text);
    EXPECT_EQ(ErrorOf([&] { Transcode(nullptr, "", target, "X"); }),
              "NoCodecFound [Qor.Tivor.Transcode] " + text + "X");
    EXPECT_EQ(ErrorOf([] { Decode(nullptr, "X"); }),
              "NullPointerError [Qor.Tivor.Decode] Expected a container to decode, found none");
}

TEST(CodecThreads, ShareTheRegistry) {
    const FlatText registered;
    const auto source = FlatText::Container("Profile;p;Height;1 ;;2;1 2\n");
    Core::Testing::OnThreads(4, [&](int number) {
        const std::string own = "Odd " + std::to_string(number);
        for (int round = 0; round < 25; ++round) {
            const auto factory = std::make_shared<OddFactory>(std::vector<std::string>{own, "Shared"});
            RegisterCodecs(factory);
            EXPECT_EQ(Formats().count(own) + Formats().count("Flat Text"), 2u);
            EXPECT_EQ(CreateCodec(own)->GetFormatName(), own);
            const auto shared = CreateCodec("Shared"); // another one may have taken it over, and left
            EXPECT_EQ(shared ? shared->GetFormatName() : "Shared", "Shared");
            EXPECT_EQ(Decode(source, "Flat Text")->GetNumData1DItems(), 1u);
            UnregisterCodecs(*factory);
            EXPECT_EQ(CreateCodec(own), nullptr);
        }
    });
    EXPECT_EQ(Formats(), (Names{"QOR Data Set", "Flat Text"}));
}

TEST(Codecs, SortWhatNamesNoFormat) {
    DataContainer source;
    source.Put("Profile", MakeData(*Profile("Height")));
    source.PutValue("Matrix", RowMajorMatrix<int>(2, 3));
    source.PutValue("Number", 7);
    source.PutValue("Operator", "Emmy");
    source.Put("Primary2D", MakeData(*Surface("Height")));
    source.GetSubData({sMETA_DATA}, true)->PutValue("Operator", "Lise");
    const std::string before = Stored(source);
    const auto set = Decode(source.Clone(), "");
    EXPECT_EQ(TellChannels(*set), "Height: Primary2D; Unknown: Matrix; ");
    EXPECT_EQ(set->GetNumData1DItems(), 1u);
    EXPECT_EQ(set->GetPrimaryData2D(), set->GetData2D("Primary2D"));
    EXPECT_EQ(set->GetMetaData()->GetValue<std::string>("Operator"), "Lise");
    EXPECT_EQ(set->GetMetaData()->GetValue<int>("Number"), 7);
    EXPECT_FALSE(set->GetMetaData()->Exists(sMETA_DATA));
    EXPECT_EQ(set->GetMetaData()->GetValue<std::string>(sDATA_FORMAT), DataSet::sFORMAT);
    DefaultDecode(source);
    EXPECT_EQ(Stored(source), before);
}

TEST(Codecs, OfTheCommonFormatAreFoundInWhatTheyWrote) {
    DataContainer target;
    DataSet set(Surface("Height"), "s");
    target.PutValue(sDATA_FORMAT, "Flat Text"); // of what the target held before
    target.GetSubData({"Additional Data"}, true)->PutValue("Of", "another set");
    target.PutValue("Own", 7);
    EXPECT_TRUE(Encode(set, target, DataSet::sFORMAT));
    EXPECT_EQ(TellChannels(*Decode(target.Clone(), "")), "Height: s; ");
    EXPECT_EQ(Keys(target), "DataFormat Own MetaData 2D_Data 1D_Data ");
}

TEST(Codecs, GatherAdditionalDataWithoutNesting) {
    DataContainer source;
    DataSet(Surface("Height"), "s").StoreDataSet(source);
    source.PutValue("Extra", 1);
    for (int round = 0; round < 3; ++round) {
        DataContainer target;
        EXPECT_TRUE(Transcode(source.Clone(), "", target, DataSet::sFORMAT));
        EXPECT_EQ(Keys(target), "MetaData 2D_Data 1D_Data Additional Data ");
        EXPECT_EQ(Keys(*target.GetPtr<DataContainer>("Additional Data")), "Extra ");
        source.Assign(target);
    }
}

} // namespace Qor::Tivor::Testing
