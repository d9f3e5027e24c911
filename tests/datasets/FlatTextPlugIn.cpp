// A codec as a program may bring one along. Its format is a container with a text "flat", in which each item is a line:
//
//     Surface;key;data kind;scale;spacing 1;spacing 2;rows;columns;samples by rows
//     Profile;key;data kind;scale;spacing;points;samples
//
// "Primary" is what the primary surface has for "Surface". A scale or a spacing is a number and the name of a unit;
// items without positions have no spacing. Samples are doubles with a blank between them.

#include <QorCore/Message.h>
#include <QorCore/NumberText.h>
#include <Tivor/Codec.h>
#include <Tivor/MatrixView.h>

#include <algorithm>

using namespace Qor;
using namespace Qor::Tivor;

namespace {

const char* const formatName = "Flat Text";
const char* const textKey = "flat";

std::vector<std::string> Split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    for (std::size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1) {
        end = text.find(separator, begin);
        parts.push_back(text.substr(begin, end - begin));
    }
    return parts;
}

// --- Reading

class Line {
public:
    Line(std::size_t number, const std::string& text) : m_number(number), m_fields(Split(text, ';')) {}

    [[noreturn]] void Fail(const std::string& expected, const std::string& found) const {
        Core::Error::RaiseError(
            Core::Error("MalformedFlatText",
                        Core::FormatText("Line %1%: expected %2%, found \"%3%\"", {m_number, expected, found})),
            QOR_CODE_CONTEXT("FlatText"), "Test.FlatText");
    }
    const std::string& At(std::size_t field) const { return m_fields[field]; }
    void RequireFields(std::size_t count) const {
        if (m_fields.size() != count)
            Fail(std::to_string(count) + " fields", std::to_string(m_fields.size()));
    }
    std::uint32_t GetCount(std::size_t field) const { return GetNumber<std::uint32_t>(At(field), "a count"); }
    UnitizedDouble GetUnitized(std::size_t field) const {
        const std::size_t blank = std::min(At(field).find(' '), At(field).size());
        const std::string unitName = At(field).substr(std::min(blank + 1, At(field).size()));
        const auto units = Core::UnitDictionary::Instance().Find(unitName);
        if (!units)
            Fail("the name of a unit", unitName);
        return {GetNumber<double>(At(field).substr(0, blank), "a number"), units};
    }
    std::vector<double> GetSamples(std::size_t field, std::uint64_t count) const {
        std::vector<double> samples;
        if (!At(field).empty())
            for (const std::string& sample : Split(At(field), ' '))
                samples.push_back(GetNumber<double>(sample, "a sample"));
        if (samples.size() != count)
            Fail(std::to_string(count) + " samples", std::to_string(samples.size()));
        return samples;
    }

private:
    template <class T>
    T GetNumber(const std::string& text, const char* expected) const {
        const auto number = Core::ParseNumber<T>(text);
        return number ? *number : (Fail(expected, text), T());
    }

    std::size_t m_number;
    std::vector<std::string> m_fields;
};

template <class Item>
std::shared_ptr<Item> Describe(std::shared_ptr<Item> item, const Line& line) {
    item->SetDataKind(line.At(2));
    item->SetDataScale(line.GetUnitized(3));
    return item;
}

std::shared_ptr<Data2D> ReadSurface(const Line& line) {
    line.RequireFields(9);
    const std::uint64_t rows = line.GetCount(6), columns = line.GetCount(7);
    const std::vector<double> samples = line.GetSamples(8, rows * columns);
    RowMajorMatrix<double> matrix(rows, columns);
    std::copy(samples.begin(), samples.end(), matrix.data());
    const auto surface = Describe(Data2D::Create(MakeData(std::move(matrix))), line);
    if (!line.At(4).empty())
        surface->SetFixedSpacing(line.GetUnitized(4), line.GetUnitized(5));
    return surface;
}

std::shared_ptr<Data1D> ReadProfile(const Line& line) {
    line.RequireFields(7);
    const std::vector<double> samples = line.GetSamples(6, line.GetCount(5));
    const auto profile = Describe(Data1D::CreateFrom(MakeArray(std::span(samples))), line);
    if (!line.At(4).empty())
        profile->SetFixedSpacing(line.GetUnitized(4));
    return profile;
}

void ReadItem(const Line& line, IDataSet& dataSet) {
    const std::string& kind = line.At(0);
    if (kind == "Profile")
        dataSet.StoreData(ReadProfile(line), line.At(1));
    else if (kind == "Surface" || kind == "Primary")
        dataSet.StoreData(ReadSurface(line), line.At(1));
    else
        line.Fail("Surface, Primary or Profile", kind);
    if (kind == "Primary")
        dataSet.SetPrimaryData2DKey(line.At(1));
}

// --- Writing

/// For what the format has no place for.
struct NotPossible {};

void Require(bool isPossible) {
    if (!isPossible)
        throw NotPossible();
}

std::string TextOf(const UnitizedDouble& value) {
    const auto units = Core::UnitDictionary::Instance().Find(value.GetUnits()->GetName());
    Require(units && *units == *value.GetUnits());
    return Core::GetNumberText(value.GetValue()) + ' ' + units->GetName();
}

template <class Item>
std::string Head(const char* kind, const std::string& key, const Item& item, bool isSpaced) {
    Require((key + item.GetDataKind()).find_first_of(";\n") == std::string::npos);
    Require(isSpaced || !item.GetPositionFunction());
    return std::string(kind) + ';' + key + ';' + item.GetDataKind() + ';' + TextOf(item.GetDataScale()) + ';';
}

std::string Tail(std::span<const double> samples) {
    std::string text;
    for (const double sample : samples)
        text += (text.empty() ? ";" : " ") + Core::GetNumberText(sample);
    return (text.empty() ? ";" : text) + '\n';
}

std::string TextOf(const Data2D& surface, const std::string& key, bool isPrimary) {
    Require(surface.GetValueType() == ValueTraits<double>::GetTypeID());
    UnitizedDouble dim1, dim2;
    const bool isSpaced = surface.GetFixedSpacing(dim1, dim2);
    std::string text = Head(isPrimary ? "Primary" : "Surface", key, surface, isSpaced);
    text += isSpaced ? TextOf(dim1) + ';' + TextOf(dim2) + ';' : ";;";
    const MatrixView<const double> view(surface);
    std::vector<double> samples;
    for (std::size_t i = 0; i < view.size1(); ++i)
        for (std::size_t j = 0; j < view.size2(); ++j)
            samples.push_back(view(i, j));
    return text + std::to_string(view.size1()) + ';' + std::to_string(view.size2()) + Tail(samples);
}

std::string TextOf(const Data1D& profile, const std::string& key) {
    Require(profile.GetValueTypeID() == ValueTraits<double>::GetTypeID());
    UnitizedDouble spacing;
    const bool isSpaced = profile.GetFixedSpacing(spacing);
    const std::string text = Head("Profile", key, profile, isSpaced) + (isSpaced ? TextOf(spacing) : "");
    return text + ';' + std::to_string(profile.GetNumPoints()) + Tail(profile.GetSamples<double>());
}

std::string TextOf(IDataSet& dataSet) {
    std::string text, primary;
    const bool hasPrimary = dataSet.GetPrimaryData2DKey(primary);
    for (const auto& entry : *dataSet.GetAllData2DItems())
        if (const auto surface = dataSet.GetData2D(entry.key))
            text += TextOf(*surface, entry.key, hasPrimary && entry.key == primary);
    for (const auto& entry : *dataSet.GetAllData1DItems())
        if (const auto profile = dataSet.GetData1D(entry.key))
            text += TextOf(*profile, entry.key);
    return text;
}

class FlatTextCodec final : public Codec {
public:
    std::string GetFormatName() const override { return formatName; }
    std::string GetDescription() const override { return "Items as lines of text"; }
    bool CanDecode(const DataContainer& container) const override {
        return container.GetPtr<std::string>(textKey) != nullptr;
    }
    std::shared_ptr<IDataSet> Decode(std::shared_ptr<DataContainer> container) override {
        if (!CanDecode(*container))
            return nullptr;
        const std::vector<std::string> lines = Split(*container->GetPtr<std::string>(textKey), '\n');
        const auto dataSet = std::make_shared<DataSet>();
        for (std::size_t i = 0; i + 1 < lines.size(); ++i)
            ReadItem(Line(i + 1, lines[i]), *dataSet);
        if (!lines.back().empty())
            Line(lines.size(), "").Fail("an end of the line", lines.back());
        return dataSet;
    }
    bool Encode(IDataSet& dataSet, DataContainer& target) override {
        try {
            target.PutValue(textKey, TextOf(dataSet));
        } catch (const NotPossible&) {
            return false;
        }
        target.PutValue(sDATA_FORMAT, formatName);
        return true;
    }
};

class FlatTextFactory final : public Codec::Factory {
public:
    void GetFormats(std::vector<std::string>& formats) const override { formats.push_back(formatName); }
    std::shared_ptr<Codec> CreateCodec(const std::string&) override { return std::make_shared<FlatTextCodec>(); }
};

const std::shared_ptr<FlatTextFactory>& Factory() {
    static auto* const factory = new std::shared_ptr<FlatTextFactory>(std::make_shared<FlatTextFactory>());
    return *factory;
}

} // namespace

extern "C" TIVOR_PLUG_IN_EXPORT void RegisterFlatText();
extern "C" TIVOR_PLUG_IN_EXPORT void UnregisterFlatText();

void RegisterFlatText() { RegisterCodecs(Factory()); }
void UnregisterFlatText() { UnregisterCodecs(*Factory()); }
