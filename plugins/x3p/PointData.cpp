#include "PointData.h"

#include "../common/Text.h"
#include "Fields.h"

#include <Tivor/DataKinds.h>

namespace Qor::Tivor::Measurements {

namespace {

class PointData {
public:
    PointData(const Description& description, const Points& points, Reading& reading, const Report& report)
        : m_description(description), m_points(points), m_reading(reading), m_report(report) {}

    void Store() {
        if (m_description.feature == Description::ePOINTS)
            return StoreCloud();
        const bool isProfile = m_description.feature == Description::ePROFILE;
        for (std::size_t layer = 0; layer < m_points.layers.size(); ++layer) {
            Axis x = AxisOf(m_description.axes[0], m_description.size[0]);
            Axis y = AxisOf(m_description.axes[1], m_description.size[1]);
            const bool isGrid = FindGrid(m_points.x, m_description.size, layer, 0, x.positions) &&
                                (isProfile || FindGrid(m_points.y, m_description.size, layer, 1, y.positions));
            const auto surface = Data2D::Create(m_points.layers[layer]);
            surface->SetDataKind(sHEIGHT_DATA);
            surface->SetDataScale(UnitizedDouble(m_points.scale, x.unit));
            if (isGrid && !isProfile)
                SetPositions(*surface, x, y);
            if (isProfile)
                Add("Profile", layer, m_points.layers.size(), ProfileOf(*surface, x));
            else
                Add("Surface", layer, m_points.layers.size(), surface);
            if (!isGrid)
                StoreCoordinates(layer);
        }
    }

private:
    static Axis AxisOf(const StoredAxis& stored, std::uint64_t numPoints) {
        return {numPoints,
                Core::UnitDictionary::Instance().Get("Meter"),
                stored.offset,
                stored.isAbsolute ? 0 : stored.increment,
                {}};
    }

    /// The one coordinate that all points of a column of a layer, or of a row, have; false when they have several.
    static bool FindGrid(const std::vector<double>& coordinates, const std::array<std::uint64_t, 3>& size,
                         std::size_t layer, std::size_t axis, std::vector<double>& positions) {
        if (coordinates.empty())
            return true;
        positions.assign(static_cast<std::size_t>(size[axis]), std::numeric_limits<double>::quiet_NaN());
        const auto perLayer = static_cast<std::size_t>(size[0] * size[1]);
        for (std::size_t point = 0; point < perLayer; ++point) {
            const double coordinate = coordinates[layer * perLayer + point];
            double& position = positions[axis == 0 ? point % size[0] : point / size[0]];
            if (std::isnan(position))
                position = coordinate;
            else if (!std::isnan(coordinate) && coordinate != position)
                return false;
        }
        return true; // NaN where all points are missing, and text tells no coordinate
    }

    static std::shared_ptr<Data1D> ProfileOf(Data2D& surface, const Axis& x) {
        const auto profile = Data1D::CreateFrom(RowOf(*surface.GetMatrixDataObject()));
        profile->SetDataKind(surface.GetDataKind());
        profile->SetDataScale(surface.GetDataScale());
        SetPositions(*profile, x);
        return profile;
    }

    /// The elements of a matrix, shared with it.
    static std::shared_ptr<DataObject> RowOf(DataObject& object) {
        std::shared_ptr<DataObject> row;
        const auto tryRow = [&]<class T>(T) {
            if (auto* const wrapper = dynamic_cast<GenericWrapper<RowMajorMatrix<T>>*>(&object)) {
                const auto matrix = wrapper->GetData();
                row =
                    std::make_shared<Array<T>>(boost::shared_array<T>(matrix->data(), [matrix](T*) {}), matrix->size());
            }
        };
        tryRow(short()), tryRow(int()), tryRow(float()), tryRow(double());
        return row;
    }

    static std::string KeyOf(const char* name, std::size_t layer, std::size_t numLayers) {
        return numLayers == 1 ? name : name + (' ' + std::to_string(layer + 1));
    }

    template <class T>
    void Add(const char* name, std::size_t layer, std::size_t numLayers, std::shared_ptr<T> data) {
        const std::string key = KeyOf(name, layer, numLayers);
        WarnOfImplausibleLengths(m_report, Measured(key, data));
        m_reading.Add(key, std::move(data));
    }

    static std::vector<double> ListAll(const std::vector<double>& coordinates, const StoredAxis& axis,
                                       std::uint64_t numPoints) {
        if (!coordinates.empty())
            return coordinates;
        std::vector<double> all(static_cast<std::size_t>(numPoints));
        for (std::size_t i = 0; i < all.size(); ++i)
            all[i] = axis.offset + axis.increment * static_cast<double>(i);
        return all;
    }

    /// Three profiles over the number of the point.
    void StoreCloud() {
        const Axis nothing{m_description.size[0], nullptr, 0, 0, {}};
        const auto add = [&](const char* key, const char* kind, std::shared_ptr<DataObject> samples, double scale) {
            const auto profile = Data1D::CreateFrom(std::move(samples));
            profile->SetDataKind(kind);
            profile->SetDataScale(UnitizedDouble(scale, "Meter"));
            m_reading.Add(key, profile);
        };
        const auto x = ListAll(m_points.x, m_description.axes[0], m_description.size[0]);
        const auto y = ListAll(m_points.y, m_description.axes[1], m_description.size[0]);
        add("X", xKind, MakeArray(std::span(x)), 1);
        add("Y", yKind, MakeArray(std::span(y)), 1);
        add("Z", sHEIGHT_DATA.c_str(), RowOf(*m_points.layers[0]), m_points.scale);
    }

    /// The places of points that lie on no grid, beside their surface.
    void StoreCoordinates(std::size_t layer) {
        const auto& size = m_description.size;
        for (std::size_t axis = 0; axis < 2; ++axis) {
            const std::vector<double>& all = axis == 0 ? m_points.x : m_points.y;
            const StoredAxis& stored = m_description.axes[axis];
            RowMajorMatrix<double> matrix(static_cast<std::size_t>(size[1]), static_cast<std::size_t>(size[0]));
            for (std::size_t i = 0; i < matrix.size(); ++i)
                matrix.data()[i] =
                    all.empty()
                        ? stored.offset + stored.increment * static_cast<double>(axis == 0 ? i % size[0] : i / size[0])
                        : all[layer * matrix.size() + i];
            const auto surface = Data2D::Create(MakeData(std::move(matrix)));
            surface->SetDataKind(axis == 0 ? xKind : yKind);
            surface->SetDataScale(UnitizedDouble(1, "Meter"));
            m_reading.Add(KeyOf(axis == 0 ? "X" : "Y", layer, size[2]), surface);
        }
    }

    const Description& m_description;
    const Points& m_points;
    Reading& m_reading;
    const Report& m_report;
};

} // namespace

void StorePoints(const Description& description, const Points& points, Reading& reading, const Report& report) {
    PointData(description, points, reading, report).Store();
}

} // namespace Qor::Tivor::Measurements
