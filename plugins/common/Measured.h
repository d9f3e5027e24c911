#pragma once

#include "Report.h"

#include <Tivor/Codec.h>
#include <Tivor/MatrixView.h>

#include <functional>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace Qor::Tivor::Measurements {

using Unit = Core::QorConstPtr<Core::UnitDescriptor>;

/// Where samples lie along one axis.
struct Axis {
    std::uint64_t points = 0;
    Unit unit;                     ///< empty where nothing tells the positions
    double first = 0;              ///< position of the first sample
    double spacing = 0;            ///< position i is exactly first + i * spacing, unless
    std::vector<double> positions; ///< these tell them

    bool IsKnown() const { return unit != nullptr; }
    bool IsEven() const { return positions.empty(); }
    double At(std::uint64_t index) const {
        return IsEven() ? first + static_cast<double>(index) * spacing : positions[static_cast<std::size_t>(index)];
    }
    /// The same in metres. Empty when the unit is none of length.
    std::optional<Axis> InMetres() const;
};

/// A surface or a profile as the formats see it: samples of which x runs fastest, dimension 2 of a surface; a profile
/// has one row. Shares the samples.
class Measured {
public:
    Measured(std::string key, std::shared_ptr<Data2D> surface);
    Measured(std::string key, std::shared_ptr<Data1D> profile);

    bool IsProfile() const { return m_profile != nullptr; }
    bool HasSamples() const { return m_type != eNO_TYPE; }
    const Axis& GetX() const { return m_x; }
    const Axis& GetY() const { return m_y; }
    std::uint64_t GetNumPoints() const { return m_x.points * m_y.points; }
    const std::string& GetKey() const { return m_key; }
    const std::string& GetKind() const { return m_kind; }
    const UnitizedDouble& GetScale() const { return m_scale; }
    /// The element type.
    ETypeID GetType() const { return m_type; }
    std::string GetTypeName() const { return GetValueTypeName(m_type); }

    /// Calls `visit` with the samples as a `std::span<const T>`, row by row, for the element type T, one of the ten
    /// numeric ones. Returns false for samples of other types.
    template <class Visit>
    bool VisitSamples(Visit visit) const {
        switch (m_type) {
#define TIVOR_ROW(T, STEM, code, position, name)                                                                       \
    case e##STEM:                                                                                                      \
        VisitRows<T>(visit);                                                                                           \
        return true;
            TIVOR_NUMERIC_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
        default:
            return false;
        }
    }

    /// Warns of the properties that a format which knows samples, positions and scale does not keep. `impliedKind`: the
    /// kind of data that the format's readers take for granted.
    void WarnOfLostProperties(const Report& report, const std::string& impliedKind) const;

private:
    template <class T, class Visit>
    void VisitRows(Visit& visit) const {
        const auto samples = m_profile ? m_profile->GetArrayDataObject() : m_surface->GetMatrixDataObject();
        std::vector<std::shared_ptr<Core::Lock>> locks;
        samples->AcquireLocks(locks);
        if (m_profile)
            return visit(m_profile->GetSamples<T>());
        const MatrixView<const T> view(std::as_const(*m_surface));
        if (view.IsRowMajor() || view.size1() <= 1 || view.size2() <= 1)
            return visit(std::span<const T>(view.GetElements()));
        std::vector<T> rows;
        rows.reserve(view.size());
        for (std::size_t i = 0; i < view.size1(); ++i)
            for (std::size_t j = 0; j < view.size2(); ++j)
                rows.push_back(view(i, j));
        visit(std::span<const T>(rows));
    }

    std::string m_key;
    std::shared_ptr<Data2D> m_surface;
    std::shared_ptr<Data1D> m_profile;
    Axis m_x;
    Axis m_y;
    std::string m_kind;
    UnitizedDouble m_scale;
    ETypeID m_type = eNO_TYPE;
};

/// What a container holds for a format that keeps measurements: its data set, however it is laid out. Formats take what
/// they store; `WarnOfLosses` tells of the rest.
class Content {
public:
    Content(const DataContainer& container, const Report& report);

    /// Surfaces, the primary one first, then profiles.
    const std::vector<Measured>& GetMeasured() const { return m_measured; }
    /// A text of the metadata, or nothing; it counts as stored.
    std::optional<std::string> TakeText(const std::vector<std::string>& path);
    /// The texts of a container of the metadata by their keys; they count as stored.
    std::vector<std::pair<std::string, std::string>> TakeTexts(const std::vector<std::string>& path);
    /// The object there, or an empty pointer.
    std::shared_ptr<DataObject> Find(const std::vector<std::string>& path) const;
    /// The same, and it counts as stored with all that is in it.
    std::shared_ptr<DataObject> Take(const std::vector<std::string>& path);
    /// Counts a measured array as stored.
    void Take(const Measured& measured);
    /// Warns of each entry that was not taken.
    void WarnOfLosses() const;

private:
    void WarnOfLosses(const DataContainer& container, std::vector<std::string>& path) const;

    const Report& m_report;
    std::shared_ptr<IDataSet> m_set;
    std::shared_ptr<DataContainer> m_rest; ///< what stands beside the data set's own containers
    std::vector<Measured> m_measured;
    std::set<std::string> m_takenKeys;
    std::set<std::vector<std::string>> m_taken;
};

/// The data set that a format makes of a file.
class Reading {
public:
    /// The first surface is the primary one.
    void Add(const std::string& key, std::shared_ptr<Data2D> surface) { m_set.StoreData(std::move(surface), key); }
    void Add(const std::string& key, std::shared_ptr<Data1D> profile) { m_set.StoreData(std::move(profile), key); }
    DataContainer& GetMetaData() { return *m_set.GetMetaData(); }
    void StoreIn(DataContainer& content) { m_set.StoreDataSet(content); }

private:
    DataSet m_set;
};

/// Positions first + i * spacing for all axes; where each begins at zero, as fixed spacings.
void SetPositions(Data2D& surface, const Axis& x, const Axis& y);
void SetPositions(Data1D& profile, const Axis& x);

/// The increment by which exactly these positions, bit by bit, follow from the first one, or what gives it when it is
/// divided by `divisor`; empty when there is none.
std::optional<double> FindIncrement(std::span<const double> positions, double divisor = 1);
/// The scale in metres; empty for what is no length.
std::optional<double> InMetres(const UnitizedDouble& value);

/// Warns of lengths beyond `LengthBounds`. Nothing is ever rescaled.
void WarnOfImplausibleLengths(const Report& report, const Measured& measured);

} // namespace Qor::Tivor::Measurements
