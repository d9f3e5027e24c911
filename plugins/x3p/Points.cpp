#include "Points.h"

#include "../common/Text.h"
#include "Checksum.h"
#include "Fields.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace Qor::Tivor::Measurements {

namespace {

constexpr double noNumber = std::numeric_limits<double>::quiet_NaN();

/// The smallest floating point type that holds all numbers of a type, and NaN.
template <class T>
using Widened = std::conditional_t<std::is_floating_point_v<T>, T, std::conditional_t<sizeof(T) == 2, float, double>>;

bool IsSameChecksum(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return (a >= 'A' && a <= 'F' ? a + ('a' - 'A') : a) == b; });
}

/// Reads z as a T.
template <class T>
class PointReader {
public:
    PointReader(const Description& description, const Report& report)
        : m_description(description), m_report(report), m_numPoints(description.GetNumPoints()) {}

    void ReadText(const MainDocument& document) {
        if (document.numPoints != m_numPoints)
            m_report.Fail(std::string(mainName) + ", DataList", std::to_string(m_numPoints) + " points",
                          std::to_string(document.numPoints));
        MakeRoom(true);
        Lines lines(document.points);
        for (std::uint64_t point = 0; point < m_numPoints; ++point)
            ReadDatum(lines.Next(), point);
    }

    void ReadBinary(const ArchiveReader& archive, const std::string& folder) {
        const Element& link = *m_description.link;
        const auto& entry = FindLinked(archive, folder, link, "PointDataLink");
        std::uint64_t pointSize = 0;
        for (const StoredAxis& axis : m_description.axes)
            pointSize += axis.isAbsolute ? SizeOf(axis.type) : 0;
        if (entry.size != m_numPoints * pointSize)
            m_report.Fail(entry.name, Core::FormatText("%1% points of %2% bytes", {m_numPoints, pointSize}),
                          std::to_string(entry.size) + " bytes");
        MakeRoom(false);
        if (pointSize == sizeof(T))
            ReadHeights(archive, entry, link);
        else
            ReadRecords(archive, entry, link);
        if (link.Find("ValidPointsLink") != nullptr)
            ReadValid(archive, FindLinked(archive, folder, link, "ValidPointsLink"), link);
    }

    Points Finish() {
        Points points;
        points.x = std::move(m_coordinates[0]);
        points.y = std::move(m_coordinates[1]);
        CountInfinities();
        const StoredAxis& axis = m_description.axes[2];
        points.isWidened = m_numMissing > 0 && !std::is_floating_point_v<T> && axis.offset == 0;
        points.scale = axis.offset == 0 ? axis.increment : 1;
        for (std::size_t layer = 0; layer < m_layers.size(); ++layer)
            points.layers.push_back(FinishLayer(layer, points.isWidened));
        return points;
    }

private:
    using Matrix = RowMajorMatrix<T>;

    static constexpr bool hasNaN = std::is_floating_point_v<T>;

    void MakeRoom(bool isText) {
        const auto& size = m_description.size;
        for (std::uint64_t layer = 0; layer < size[2]; ++layer)
            m_layers.emplace_back(static_cast<std::size_t>(size[1]), static_cast<std::size_t>(size[0]));
        m_perLayer = static_cast<std::size_t>(size[0] * size[1]);
        const bool isList = m_description.feature == Description::ePOINTS;
        for (std::size_t i = 0; i < m_coordinates.size(); ++i)
            if (m_description.axes[i].isAbsolute || (isText && isList))
                m_coordinates[i].assign(static_cast<std::size_t>(m_numPoints), noNumber);
    }

    T& HeightOf(std::uint64_t point) { return m_layers[point / m_perLayer].data()[point % m_perLayer]; }

    void SetMissing(std::uint64_t point) {
        if constexpr (hasNaN) {
            HeightOf(point) = std::numeric_limits<T>::quiet_NaN();
        } else {
            HeightOf(point) = 0;
            if (m_missing.empty())
                m_missing.resize(static_cast<std::size_t>(m_numPoints));
            m_missing[point] = true;
            ++m_numMissing;
        }
    }

    static std::string PlaceOf(std::uint64_t point) {
        return std::string(mainName) + ", point " + std::to_string(point + 1) + " of DataList";
    }

    void ReadDatum(std::string_view text, std::uint64_t point) {
        std::array<std::string_view, 3> parts;
        std::size_t numParts = 0;
        for (std::string_view rest = text; numParts <= parts.size();) {
            const std::size_t end = rest.find(';');
            if (numParts < parts.size())
                parts[numParts] = Core::TrimBlanks(rest.substr(0, end));
            ++numParts;
            if (end == std::string_view::npos)
                break;
            rest.remove_prefix(end + 1);
        }
        if (numParts == 1 && parts[0].empty())
            return SetMissing(point);
        std::size_t numAbsolute = 0;
        for (const StoredAxis& axis : m_description.axes)
            numAbsolute += axis.isAbsolute;
        if (numParts != numAbsolute && numParts != parts.size())
            m_report.Fail(PlaceOf(point), std::to_string(numAbsolute) + " numbers with ; between them", Quote(text));
        std::size_t part = 0;
        for (std::size_t i = 0; i < m_coordinates.size(); ++i)
            if (numParts == parts.size() || m_description.axes[i].isAbsolute)
                ReadCoordinate(i, parts[part++], point);
        ReadHeight(parts[part], point);
    }

    void ReadCoordinate(std::size_t axis, std::string_view text, std::uint64_t point) {
        const auto number = FindNumber<double>(text);
        if (!number)
            m_report.Fail(PlaceOf(point), "a number", Quote(text));
        SetCoordinate(axis, *number, point);
    }

    void SetCoordinate(std::size_t axis, double number, std::uint64_t point) {
        if (!m_coordinates[axis].empty())
            m_coordinates[axis][point] = m_description.axes[axis].offset + m_description.axes[axis].increment * number;
    }

    void ReadHeight(std::string_view text, std::uint64_t point) {
        const auto number = FindNumber<T>(text);
        if (!number)
            m_report.Fail(PlaceOf(point),
                          std::string("a number of DataType ") + static_cast<char>(m_description.axes[2].type),
                          Quote(text));
        HeightOf(point) = *number;
    }

    const ArchiveReader::Entry& FindLinked(const ArchiveReader& archive, const std::string& folder, const Element& link,
                                           const char* name) const {
        const Element* const element = link.Find(name);
        if (element == nullptr || element->text.empty())
            m_report.Fail(link.GetPlace(), std::string("an element ") + name, "none");
        std::string path = element->text;
        if (path.find('\\') != std::string::npos) {
            m_report.Deviates(element->GetPlace(), "a path with /", Quote(path));
            std::replace(path.begin(), path.end(), '\\', '/');
        }
        if (const auto* const entry = archive.Find(folder + path))
            return *entry;
        m_report.Fail(element->GetPlace(), "an entry of the container", Quote(path) + ", which is none");
    }

    void Check(const void* bytes, std::size_t size, const Element& link, const char* name,
               const std::string& entry) const {
        const Element* const element = link.Find(name);
        const std::string sum = ChecksumOf(bytes, size);
        if (element == nullptr || !IsSameChecksum(element->text, sum))
            m_report.Deviates((element == nullptr ? link : *element).GetPlace(),
                              "the checksum of " + entry + ", " + sum,
                              element == nullptr ? "none" : Quote(element->text));
    }

    void ReadHeights(const ArchiveReader& archive, const ArchiveReader::Entry& entry, const Element& link) {
        if (m_layers.size() == 1) {
            archive.Read(entry, m_layers[0].data());
            return Check(m_layers[0].data(), static_cast<std::size_t>(entry.size), link, "MD5ChecksumPointData",
                         entry.name);
        }
        const std::string bytes = archive.ReadText(entry);
        Check(bytes.data(), bytes.size(), link, "MD5ChecksumPointData", entry.name);
        const std::size_t layerBytes = m_perLayer * sizeof(T);
        for (std::size_t layer = 0; layer < m_layers.size(); ++layer)
            std::memcpy(m_layers[layer].data(), bytes.data() + layer * layerBytes, layerBytes);
    }

    template <class Number>
    static Number Load(const char*& bytes) {
        Number number;
        std::memcpy(&number, bytes, sizeof number);
        bytes += sizeof number;
        return number;
    }

    static double LoadAs(EStored type, const char*& bytes) {
        switch (type) {
        case EStored::int16:
            return Load<std::int16_t>(bytes);
        case EStored::int32:
            return Load<std::int32_t>(bytes);
        case EStored::float32:
            return static_cast<double>(Load<float>(bytes));
        default:
            return Load<double>(bytes);
        }
    }

    void ReadRecords(const ArchiveReader& archive, const ArchiveReader::Entry& entry, const Element& link) {
        const std::string bytes = archive.ReadText(entry);
        Check(bytes.data(), bytes.size(), link, "MD5ChecksumPointData", entry.name);
        const char* next = bytes.data();
        for (std::uint64_t point = 0; point < m_numPoints; ++point) {
            for (std::size_t i = 0; i < m_coordinates.size(); ++i)
                if (m_description.axes[i].isAbsolute)
                    SetCoordinate(i, LoadAs(m_description.axes[i].type, next), point);
            HeightOf(point) = Load<T>(next);
        }
    }

    void ReadValid(const ArchiveReader& archive, const ArchiveReader::Entry& entry, const Element& link) {
        const std::uint64_t needed = (m_numPoints + 7) / 8;
        if (entry.size < needed)
            m_report.Fail(entry.name, std::to_string(needed) + " bytes, a bit for each point",
                          std::to_string(entry.size));
        const std::string bytes = archive.ReadText(entry);
        Check(bytes.data(), bytes.size(), link, "MD5ChecksumValidPoints", entry.name);
        for (std::uint64_t point = 0; point < m_numPoints; ++point)
            if ((bytes[point / 8] >> (point % 8) & 1) == 0)
                SetMissing(point);
    }

    void CountInfinities() {
        if constexpr (hasNaN) {
            std::uint64_t numInfinite = 0;
            for (Matrix& layer : m_layers)
                for (T& height : std::span<T>(layer.data(), layer.size())) {
                    const bool isInfinite = std::abs(height) == std::numeric_limits<T>::infinity();
                    height = isInfinite ? std::numeric_limits<T>::quiet_NaN() : height;
                    numInfinite += isInfinite;
                }
            if (numInfinite > 0)
                m_report.Deviates("points", "NaN or a bit of validity for missing points",
                                  std::to_string(numInfinite) + " infinities, which become NaN");
        }
    }

    bool IsMissing(std::size_t layer, std::size_t point) const {
        return !m_missing.empty() && m_missing[layer * m_perLayer + point];
    }

    /// The layer in another element type, `convert` applied to each number.
    template <class To, class Convert>
    std::shared_ptr<DataObject> Converted(std::size_t layer, Convert convert) const {
        const Matrix& from = m_layers[layer];
        RowMajorMatrix<To> to(from.size1(), from.size2());
        for (std::size_t i = 0; i < m_perLayer; ++i)
            to.data()[i] = IsMissing(layer, i) ? std::numeric_limits<To>::quiet_NaN() : convert(from.data()[i]);
        return MakeData(std::move(to));
    }

    std::shared_ptr<DataObject> FinishLayer(std::size_t layer, bool isWidened) {
        const StoredAxis& axis = m_description.axes[2];
        if (axis.offset != 0)
            return Converted<double>(
                layer, [&](T height) { return axis.increment * static_cast<double>(height) + axis.offset; });
        if (isWidened)
            return Converted<Widened<T>>(layer, [](T height) { return static_cast<Widened<T>>(height); });
        return MakeData(std::move(m_layers[layer]));
    }

    const Description& m_description;
    const Report& m_report;
    std::uint64_t m_numPoints;
    std::size_t m_perLayer = 0;
    std::array<std::vector<double>, 2> m_coordinates;
    std::vector<Matrix> m_layers;
    std::vector<bool> m_missing; // where the type has no NaN
    std::uint64_t m_numMissing = 0;
};

} // namespace

Points ReadPoints(const MainDocument& document, const Description& description, const ArchiveReader& archive,
                  const std::string& folder, const Report& report) {
    const auto read = [&]<class T>(T) {
        PointReader<T> reader(description, report);
        if (description.link != nullptr)
            reader.ReadBinary(archive, folder);
        else
            reader.ReadText(document);
        return reader.Finish();
    };
    switch (description.axes[2].type) {
    case EStored::int16:
        return read(short());
    case EStored::int32:
        return read(int());
    case EStored::float32:
        return read(float());
    default:
        return read(double());
    }
}

} // namespace Qor::Tivor::Measurements
