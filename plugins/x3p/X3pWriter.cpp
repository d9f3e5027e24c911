#include "../common/Text.h"
#include "Archive.h"
#include "Checksum.h"
#include "Fields.h"
#include "MainWriter.h"
#include "StoredNumbers.h"
#include "X3p.h"

#include <Tivor/DataKinds.h>

#include <algorithm>

namespace Qor::Tivor::Measurements {

namespace {

bool IsCoordinate(const Measured& measured) { return measured.GetKind() == xKind || measured.GetKind() == yKind; }

bool IsSame(const Axis& left, const Axis& right) {
    return left.IsKnown() == right.IsKnown() && left.points == right.points && left.first == right.first &&
           left.spacing == right.spacing && left.positions == right.positions;
}

/// What of a data set becomes an X3P file.
class Chooser {
public:
    Chooser(Content& content, const Report& report) : m_content(content), m_report(report) {}

    /// The layers: the first measured heights, and all that lie at the same places.
    std::vector<const Measured*> ChooseLayers() {
        std::vector<const Measured*> layers;
        for (const Measured& measured : m_content.GetMeasured())
            if (!IsCoordinate(measured) && IsHeight(measured) && (layers.empty() || FitsTo(*layers[0], measured))) {
                layers.push_back(&measured);
                m_content.Take(measured);
            }
        if (layers.empty())
            Refuse();
        return layers;
    }

    /// The coordinates of all points in metres, when data of that kind tell them for each layer.
    std::vector<double> ChooseCoordinates(const std::vector<const Measured*>& layers, const char* kind) {
        std::vector<const Measured*> found;
        for (const Measured& measured : m_content.GetMeasured())
            if (measured.GetKind() == kind && IsHeight(measured) && measured.IsProfile() == layers[0]->IsProfile() &&
                HasShapeOf(*layers[0], measured))
                found.push_back(&measured);
        std::vector<double> coordinates;
        if (found.size() != layers.size())
            return coordinates;
        for (const Measured* const measured : found) {
            m_content.Take(*measured);
            const double scale = *InMetres(measured->GetScale());
            measured->VisitSamples([&]<class T>(std::span<const T> samples) {
                for (const T sample : samples)
                    coordinates.push_back(scale == 1 ? static_cast<double>(sample)
                                                     : static_cast<double>(sample) * scale);
            });
        }
        return coordinates;
    }

private:
    static bool IsHeight(const Measured& measured) {
        const auto scale = InMetres(measured.GetScale());
        return measured.HasSamples() && measured.GetNumPoints() > 0 && scale && std::isfinite(*scale) &&
               measured.VisitSamples([](auto) {});
    }

    static bool HasShapeOf(const Measured& first, const Measured& other) {
        return first.GetX().points == other.GetX().points && first.GetY().points == other.GetY().points;
    }

    static bool FitsTo(const Measured& first, const Measured& other) {
        return first.IsProfile() == other.IsProfile() && IsSame(first.GetX(), other.GetX()) &&
               IsSame(first.GetY(), other.GetY()) && first.GetType() == other.GetType() &&
               first.GetKind() == other.GetKind() && *InMetres(first.GetScale()) == *InMetres(other.GetScale());
    }

    [[noreturn]] void Refuse() {
        std::string found;
        for (const Measured& measured : m_content.GetMeasured())
            found += (found.empty() ? "" : ", ") + measured.GetKey() + " of " + measured.GetTypeName() + " in " +
                     Quote(measured.GetScale().ToString());
        m_report.Refuse("content", "a surface or profile of real samples whose scale is a length",
                        found.empty() ? "none" : found);
    }

    Content& m_content;
    const Report& m_report;
};

class Writer {
public:
    Writer(const DataContainer& container, const Report& report) : m_content(container, report), m_report(report) {}

    void WriteTo(Core::BinaryOutputStream& stream) {
        Chooser chooser(m_content, m_report);
        m_layers = chooser.ChooseLayers();
        DescribePlaces(chooser);
        DescribeHeights();
        TakeFields();
        const auto files = TakeFiles();
        for (const Measured* const layer : m_layers)
            layer->WarnOfLostProperties(m_report, sHEIGHT_DATA);
        m_content.WarnOfLosses();

        const PointTable points{m_x, m_y, m_numbers};
        ArchiveWriter archive(m_report);
        const std::string numbers = m_document.isText ? std::string() : points.ToBinary();
        const std::string valid = m_document.isText ? std::string() : points.ToValid();
        if (!m_document.isText)
            m_document.pointsChecksum = ChecksumOf(numbers.data(), numbers.size());
        if (!valid.empty())
            m_document.validChecksum = ChecksumOf(valid.data(), valid.size());
        const std::string xml = WriteMain(m_document, points);
        const std::string checksum = ChecksumOf(xml.data(), xml.size()) + " *" + mainName + '\n';
        const auto add = [&](const char* name, const std::string& text) {
            archive.Add(name, std::as_bytes(std::span(text)));
        };
        add(mainName, xml);
        add(checksumName, checksum);
        if (!m_document.isText)
            add(pointsName, numbers);
        if (!valid.empty())
            add(validName, valid);
        for (const auto& [name, bytes] : files)
            archive.Add(name, std::as_bytes(std::as_const(*bytes).GetElements()));
        archive.WriteTo(stream);
    }

private:
    const Measured& First() const { return *m_layers[0]; }

    void DescribePlaces(Chooser& chooser) {
        const Measured& first = First();
        m_document.size = {first.GetX().points, first.GetY().points, m_layers.size()};
        m_x = chooser.ChooseCoordinates(m_layers, xKind);
        m_y = chooser.ChooseCoordinates(m_layers, yKind);
        if (!m_x.empty() && !m_y.empty()) {
            m_document.feature = first.IsProfile() ? Description::ePOINTS : Description::eSURFACE;
            m_document.axes[0].isAbsolute = m_document.axes[1].isAbsolute = true;
            if (first.IsProfile() && m_layers.size() > 1)
                m_report.Refuse(first.GetKey(), "one list of points", std::to_string(m_layers.size()));
            return;
        }
        m_document.feature = first.IsProfile() ? Description::ePROFILE : Description::eSURFACE;
        m_document.axes[0] = DescribeAxis(first.GetX(), 0, m_x);
        // A profile has no y; the standard asks for an axis, on which one point lies at the offset.
        m_document.axes[1] =
            first.IsProfile() ? StoredAxis{false, EStored::float64, 1, 0} : DescribeAxis(first.GetY(), 1, m_y);
    }

    /// Fills the coordinates of all points where the positions are uneven.
    StoredAxis DescribeAxis(const Axis& axis, std::size_t number, std::vector<double>& coordinates) {
        if (!axis.IsKnown())
            m_report.Refuse(First().GetKey(), "positions, which the format asks for", "none");
        const auto metres = axis.InMetres();
        if (!metres)
            m_report.Refuse(First().GetKey(), "positions in a unit of length", Quote(axis.unit->ToString()));
        coordinates.clear();
        const bool hasIncrement = std::isfinite(metres->first) && std::isfinite(metres->spacing) &&
                                  (metres->spacing != 0 || metres->points < 2);
        if (metres->IsEven() && hasIncrement)
            return {false, EStored::float64, metres->spacing, metres->first};
        const auto& size = m_document.size;
        for (std::uint64_t point = 0; point < size[0] * size[1] * size[2]; ++point)
            coordinates.push_back(metres->At(number == 0 ? point % size[0] : point / size[0] % size[1]));
        return {true, EStored::float64, 1, 0};
    }

    void DescribeHeights() {
        const auto dataType = m_content.TakeText({x3pKey, dataTypeKey});
        m_numbers = StoreNumbers(m_layers, dataType.value_or(""), m_report);
        m_document.axes[2] = {true, m_numbers.type, *InMetres(First().GetScale()), 0};
        const bool hasCoordinates = m_document.axes[0].isAbsolute || m_document.axes[1].isAbsolute;
        // In text, a point that is missing has no coordinates.
        m_document.isText =
            m_content.TakeText({x3pKey, storageKey}) == textStorage && !(hasCoordinates && m_numbers.HasMissing());
    }

    void TakeFields() {
        for (const Field& field : fields) {
            ElementPath path = SplitPath(field.path);
            path.insert(path.begin(), x3pKey);
            if (const auto text = m_content.TakeText(path))
                m_document.texts[field.path] = *text;
        }
        m_document.texts.try_emplace(fields[0].path, revision);
        for (const Field& field : fields)
            Require(field);
        RequireWholeRotation();
    }

    /// Where the standard asks for a text that is not there, or is no such text, another one stands for it.
    void Require(const Field& field) {
        const auto place = m_document.texts.find(field.path);
        if (place != m_document.texts.end()) {
            if (IsValid(field.text, place->second))
                return;
            m_report.Loses(JoinPath({x3pKey, field.path}),
                           Core::FormatText("the format asks for %1%; %2% is not written",
                                            {Describe(field.text), Quote(place->second)}));
            m_document.texts.erase(place);
        } else if (!m_document.HasBelow("Record2/")) {
            return; // the record may be missing as a whole
        }
        if (field.isRequired && field.text != EText::rotation)
            m_document.texts[field.path] = StandInFor(field.text);
    }

    void RequireWholeRotation() {
        const auto isRotation = [](const Field& field) { return field.text == EText::rotation; };
        const auto all = std::count_if(fields.begin(), fields.end(), isRotation);
        const auto there = std::count_if(fields.begin(), fields.end(), [&](const Field& field) {
            return isRotation(field) && m_document.texts.contains(field.path);
        });
        if (there == 0 || there == all)
            return;
        m_report.Loses(JoinPath({x3pKey, "Record1/Axes/Rotation"}), "the format asks for nine numbers");
        for (const Field& field : fields)
            if (isRotation(field))
                m_document.texts.erase(field.path);
    }

    std::vector<std::pair<std::string, std::shared_ptr<Array<unsigned char>>>> TakeFiles() {
        std::vector<std::pair<std::string, std::shared_ptr<Array<unsigned char>>>> files;
        const auto container =
            std::dynamic_pointer_cast<GenericWrapper<DataContainer>>(m_content.Find({x3pKey, filesKey}));
        if (!container)
            return files;
        for (const auto& [name, object] : *container->GetData()) {
            const auto bytes = std::dynamic_pointer_cast<Array<unsigned char>>(object);
            const bool isOurs = name == mainName || name == checksumName || name == pointsName || name == validName;
            if (bytes && !isOurs && !name.starts_with("../")) {
                m_content.Take({x3pKey, filesKey, name});
                files.emplace_back(name, bytes);
            }
        }
        return files;
    }

    Content m_content;
    const Report& m_report;
    std::vector<const Measured*> m_layers;
    std::vector<double> m_x, m_y;
    StoredNumbers m_numbers;
    WrittenDocument m_document;
};

} // namespace

void X3p::Write(const DataContainer& container, const Report& report, Core::BinaryOutputStream& stream) {
    Writer(container, report).WriteTo(stream);
}

} // namespace Qor::Tivor::Measurements
