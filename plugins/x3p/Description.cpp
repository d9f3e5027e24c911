#include "Description.h"

#include "../common/Text.h"

namespace Qor::Tivor::Measurements {

namespace {

constexpr std::array axisNames{"CX", "CY", "CZ"};
constexpr std::array sizeNames{"SizeX", "SizeY", "SizeZ"};
constexpr std::uint64_t mostPoints = std::uint64_t{1} << 40;
constexpr std::uint64_t mostLayers = 10'000; // each becomes a data object

class Describer {
public:
    Describer(const Element& root, const Report& report) : m_root(root), m_report(report) {}

    const Element& Require(std::string_view path, const Element& below) const {
        const Element* const element = below.FindBelow(path);
        if (element == nullptr)
            m_report.Fail(below.GetPlace(), "an element " + std::string(path), "none");
        return *element;
    }

    Description::EFeature FindFeature(bool isList) const {
        const Element* const element = m_root.FindBelow("Record1/FeatureType");
        const std::string feature = element == nullptr ? "" : element->text;
        if (isList) {
            if (feature != "PCL")
                Deviates(element, "FeatureType PCL for a list of points", feature);
            return Description::ePOINTS;
        }
        if (feature != "SUR" && feature != "PRF")
            Deviates(element, "FeatureType SUR or PRF for a matrix of points", feature);
        return feature == "PRF" ? Description::ePROFILE : Description::eSURFACE;
    }

    StoredAxis ReadAxis(std::size_t number, std::uint64_t points) const {
        const Element& element = Require(std::string("Record1/Axes/") + axisNames[number], m_root);
        const std::string& kind = Require("AxisType", element).text;
        StoredAxis axis;
        axis.isAbsolute = kind == "A";
        const bool isHeight = number == 2;
        if ((kind != "A" && kind != "I") || (isHeight && kind == "I"))
            m_report.Fail(element.GetPlace(), isHeight ? "AxisType A" : "AxisType A or I", Quote(kind));
        if (axis.isAbsolute)
            axis.type = ReadType(element);
        const auto increment = FindNumberIn(element, "Increment");
        const auto offset = FindNumberIn(element, "Offset");
        if (!axis.isAbsolute && points > 1 && (!increment || *increment == 0))
            m_report.Fail(element.GetPlace(), "an Increment that is not 0", increment ? "0" : "none");
        if (axis.isAbsolute && offset && !increment)
            m_report.Deviates(element.GetPlace(), "an Increment beside the Offset", "none, which counts as 1");
        axis.increment = increment.value_or(1);
        axis.offset = offset.value_or(0);
        return axis;
    }

    std::uint64_t ReadSize(const Element& parent, const char* name) const { return ReadCount(Require(name, parent)); }

    std::uint64_t ReadCount(const Element& element) const {
        const auto count = FindNumber<std::uint64_t>(element.text);
        if (!count || *count == 0 || *count >= std::uint64_t{1} << 32)
            m_report.Fail(element.GetPlace(), "a number of points below 2^32", Quote(element.text));
        return *count;
    }

    void RequireCountable(const std::array<std::uint64_t, 3>& size, const Element& record) const {
        if (size[0] > mostPoints / size[1] || size[0] * size[1] > mostPoints / size[2])
            m_report.Fail(record.GetPlace(), "at most 2^40 points", "more");
        if (size[2] > mostLayers)
            m_report.Fail(record.GetPlace(), "at most " + std::to_string(mostLayers) + " layers",
                          std::to_string(size[2]));
    }

private:
    void Deviates(const Element* element, const char* expected, const std::string& found) const {
        m_report.Deviates((element == nullptr ? m_root : *element).GetPlace(), expected,
                          element == nullptr ? "none" : Quote(found));
    }

    EStored ReadType(const Element& axis) const {
        const std::string& text = Require("DataType", axis).text;
        for (const EStored type : {EStored::int16, EStored::int32, EStored::float32, EStored::float64})
            if (text == std::string(1, static_cast<char>(type)))
                return type;
        m_report.Fail(axis.GetPlace(), "DataType I, L, F or D", Quote(text));
    }

    std::optional<double> FindNumberIn(const Element& axis, const char* name) const {
        const Element* const element = axis.Find(name);
        if (element == nullptr)
            return std::nullopt;
        const auto number = FindNumber<double>(element->text);
        if (number && std::isfinite(*number))
            return number;
        if (!element->text.empty())
            m_report.Fail(element->GetPlace(), "a number", Quote(element->text));
        m_report.Deviates(element->GetPlace(), "a number", "none, as if the element were not there");
        return std::nullopt;
    }

    const Element& m_root;
    const Report& m_report;
};

} // namespace

std::size_t SizeOf(EStored type) {
    switch (type) {
    case EStored::int16:
        return sizeof(short);
    case EStored::int32:
        return sizeof(int);
    case EStored::float32:
        return sizeof(float);
    default:
        return sizeof(double);
    }
}

Description::Description(const Element& root, const Report& report) {
    const Describer describer(root, report);
    const Element& record = describer.Require("Record3", root);
    const Element* const list = record.Find("ListDimension");
    feature = describer.FindFeature(list != nullptr);
    if (list != nullptr) {
        size = {describer.ReadCount(*list), 1, 1};
    } else {
        const Element& matrix = describer.Require("MatrixDimension", record);
        for (std::size_t i = 0; i < size.size(); ++i)
            size[i] = describer.ReadSize(matrix, sizeNames[i]);
    }
    describer.RequireCountable(size, record);
    if (feature == ePROFILE && size[1] > 1) {
        report.Deviates(record.GetPlace(), "a SizeY of 1 for a profile", std::to_string(size[1]) + ", as of a surface");
        feature = eSURFACE;
    }
    for (std::size_t i = 0; i < axes.size(); ++i)
        axes[i] = describer.ReadAxis(i, i == 2 ? 1 : size[i]);
    link = record.Find("DataLink");
    if (link == nullptr)
        describer.Require("DataList", record);
}

} // namespace Qor::Tivor::Measurements
