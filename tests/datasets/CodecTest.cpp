#include "Alerts.h"
#include "Sets.h"
#include "StoredBytes.h"

#include <Tivor/Codec.h>

#include <gtest/gtest.h>

#include <functional>

namespace Qor::Tivor::Testing {

namespace {

using Core::Testing::ErrorOf;

/// Of one surface under the key "flat".
class FlatCodec final : public Codec {
public:
    std::string GetFormatName() const override { return "Flat"; }
    std::string GetDescription() const override { return "One surface"; }
    bool CanDecode(const DataContainer& container) const override { return container.Exists("flat"); }
    std::shared_ptr<IDataSet> Decode(std::shared_ptr<DataContainer> container) override {
        const auto surface = container->GetPtr<Data2D>("flat");
        return surface ? DataSet::Create(surface, "flat") : nullptr;
    }
    bool Encode(IDataSet& dataSet, DataContainer& target) override {
        const auto surface = dataSet.GetPrimaryData2D();
        if (surface)
            target.Put("flat", ValueTraits<Data2D>::MakeData(surface));
        return surface != nullptr;
    }
};

class FlatFactory final : public Codec::Factory {
public:
    explicit FlatFactory(
        std::vector<std::string> formats, std::function<void()> action = [] {})
        : m_formats(std::move(formats)), m_action(std::move(action)) {}

    void GetFormats(std::vector<std::string>& formats) const override {
        m_action();
        formats.insert(formats.end(), m_formats.begin(), m_formats.end());
    }
    std::shared_ptr<Codec> CreateCodec(const std::string& format) override {
        m_action();
        return format == "Nothing" ? nullptr : std::make_shared<FlatCodec>();
    }

private:
    std::vector<std::string> m_formats;
    std::function<void()> m_action;
};

/// Is registered while it lives.
class Registered {
public:
    explicit Registered(
        std::vector<std::string> formats, std::function<void()> action = [] {})
        : m_factory(std::make_shared<FlatFactory>(std::move(formats), std::move(action))) {
        RegisterCodecs(m_factory);
    }
    Registered(const Registered&) = delete;
    Registered& operator=(const Registered&) = delete;
    ~Registered() { UnregisterCodecs(*m_factory); }

private:
    std::shared_ptr<FlatFactory> m_factory;
};

std::unordered_set<std::string> Formats() {
    std::unordered_set<std::string> formats;
    EnumCodecFormats(formats);
    return formats;
}

using Names = std::unordered_set<std::string>;

} // namespace

TEST(Codecs, AreRegisteredByFormat) {
    EXPECT_EQ(Formats(), Names{"QOR Data Set"});
    RegisterCodecs(nullptr);
    {
        const Registered one({"Flat", "Nothing"});
        EXPECT_EQ(Formats(), (Names{"QOR Data Set", "Flat", "Nothing"}));
        {
            const Registered other({"Nothing"}); // takes it over, and does not give it back
            EXPECT_EQ(CreateCodec("Nothing"), nullptr);
        }
        EXPECT_EQ(Formats(), (Names{"QOR Data Set", "Flat"}));
        EXPECT_EQ(CreateCodec("Flat")->GetDescription(), "One surface");
    }
    EXPECT_EQ(Formats(), Names{"QOR Data Set"});
    EXPECT_EQ(CreateCodec("Flat"), nullptr);
    const auto standard = CreateCodec(DataSet::sFORMAT);
    EXPECT_EQ(standard->GetFormatName() + ", " + standard->GetDescription(),
              "QOR Data Set, Common QOR Data Set Format");
    EXPECT_FALSE(standard->CanDecode(DataContainer()));
}

TEST(Codecs, MayCallBackAndThrow) {
    bool fails = false;
    const Registered throwing({"Flat"}, [&] {
        EXPECT_EQ(Formats().count("QOR Data Set"), 1u);
        if (fails)
            throw Core::LogicError("no");
    });
    fails = true;
    EXPECT_NE(ErrorOf([] { CreateCodec("Flat"); }), "");
    EXPECT_EQ(Formats(), (Names{"QOR Data Set", "Flat"}));
    fails = false;
    EXPECT_NE(CreateCodec("Flat"), nullptr);
}

TEST(Codecs, AreChosenByFormat) {
    const Registered flat({"Flat"});
    const auto container = DataContainer::Create();
    container->Put("flat", ValueTraits<Data2D>::MakeData(Surface("Height")));
    for (const char* const place : {"argument", "top", "metadata"}) {
        const auto source = container->Clone();
        if (place == std::string("top"))
            source->PutValue(sDATA_FORMAT, "Flat");
        else if (place == std::string("metadata"))
            source->GetSubData({sMETA_DATA}, true)->PutValue(sDATA_FORMAT, "Flat");
        EXPECT_EQ(TellChannels(*Decode(source, place == std::string("argument") ? "Flat" : "")), "Height: flat; ");
        DataContainer target;
        EXPECT_TRUE(Transcode(source, "Flat", target, DataSet::sFORMAT));
        EXPECT_TRUE(DataSet::IsDataSetFormat(target));
        DataContainer back;
        EXPECT_TRUE(Transcode(target.Clone(), "", back, "Flat"));
        EXPECT_EQ(Keys(back), "flat ");
    }
    DataContainer target;
    EXPECT_FALSE(Transcode(DataContainer::Create(), "Flat", target, "Flat"));
    DataSet set;
    EXPECT_FALSE(Encode(set, target, "Flat"));
    const std::string text = "No codec was found for data format: ";
    EXPECT_EQ(ErrorOf([&] { Decode(container, "X"); }), "NoCodecFound [Qor.Tivor.Decode] " + text + "X");
    EXPECT_EQ(ErrorOf([&] { Encode(set, target, ""); }), "NoCodecFound [Qor.Tivor.Encode] " + text);
    EXPECT_EQ(ErrorOf([&] { Transcode(nullptr, "", target, "X"); }),
              "NoCodecFound [Qor.Tivor.Transcode] " + text + "X");
    EXPECT_EQ(ErrorOf([&] { Decode(nullptr, "Flat"); }).substr(0, 16), "NullPointerError");
    EXPECT_TRUE(target.IsEmpty());
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
    EXPECT_EQ(set->GetMetaData()->GetValue<std::string>(sDATA_FORMAT), DataSet::sFORMAT);
    DefaultDecode(source);
    EXPECT_EQ(Stored(source), before);
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
