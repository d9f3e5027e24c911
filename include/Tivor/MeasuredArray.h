#pragma once

#include <Tivor/ArrayDataObjects.h>
#include <Tivor/PropertyContainer.h>

#include <optional>
#include <string>
#include <vector>

namespace Qor::Tivor {

/// The code of a matrix class in streams; 0 for anything else. Class names are "Matrix" and "FortranMatrix".
enum EMatrixTypeID : std::uint32_t { eNO_MATRIX_TYPE = 0 };

/// The name of an element type, as "int16" or "double", and "Unknown Type" for all that are no such number.
TIVOR_API std::string GetValueTypeName(ETypeID type);

/// What a measured profile (`Data1D`) and a measured surface (`Data2D`) have in common: samples, what they are and
/// where they lie, all of it as properties. What follows from the samples (counts, element type) cannot be set, and
/// always fits them.
///
/// Positions come from one source at a time: a fixed spacing, which is stored as a position function and shows in the
/// extents (the way from the first sample to the last, which are points - 1 steps), or any other position function.
/// When the samples are replaced by more or fewer, a fixed spacing stays and the extents follow; positions in arrays
/// that no longer fit are dropped. Setting an extent changes the spacing.
///
/// The samples are shared with the data object that holds them: who changes that in place changes them here, and
/// nothing follows.
///
/// Thread rule: that of `PropertyContainer`. Operations that are const store nothing.
class TIVOR_API MeasuredArray : public PropertyContainer {
public:
    /// Positions along one axis, as numbers in one unit.
    struct PositionList {
        boost::shared_array<double> values;
        std::size_t count = 0;
        Core::QorConstPtr<Core::UnitDescriptor> units;
    };

    ~MeasuredArray() override;

    /// Takes over stored properties, those that nobody here knows too. Properties that the values do not bring are
    /// removed, without an event; what follows from the samples is made to fit them. Raises `OutOfRangeError` for more
    /// samples than the counts can hold, and what `PropertyContainer::InputProperties` raises; nothing changes then.
    void InputProperties(const DataContainer& values) override;

    /// What is measured, as "Height"; "Unknown" at first.
    std::string GetDataKind() const;
    void SetDataKind(const std::string& kind);
    /// What a sample is multiplied by, with its unit; a plain 1 at first.
    UnitizedDouble GetDataScale() const;
    void SetDataScale(const UnitizedDouble& scale);
    /// The same scale in another unit: samples and what they mean stay. Raises `IllegalUnitConversion` for a unit of
    /// another dimension and `UnitNotFound`, and then changes nothing.
    void ConvertDataScale(const std::string& unitName);

    /// Removes the position function, extents and arrays of positions.
    void RemovePositionInfo();

    /// Whether both have the same properties with the same values, NaN equal to NaN.
    bool operator==(const MeasuredArray& other) const { return HoldsSameProperties(other); }

    /// The properties by name, past permissions and listeners: for those who store them.
    std::shared_ptr<DataContainer> GetContent() const;
    using PropertyContainer::WarnOfOmissions;

protected:
    struct Property;
    struct Axis;
    /// What the properties of a class are called.
    struct Layout;
    /// One for each axis.
    using Spacings = std::vector<UnitizedDouble>;
    using Counts = std::vector<std::uint64_t>;

    MeasuredArray();
    MeasuredArray(const MeasuredArray&) = delete;
    MeasuredArray& operator=(const MeasuredArray&) = delete;

    /// Stores a value past validators and permissions, makes the property with what the layout says of it where there
    /// is none, and tells of it when it is another one.
    void Store(const char* key, std::shared_ptr<DataObject> value);
    void StoreVersion();
    void StoreText(const char* key, const std::string& text);
    /// The same for an integer, unless the property has that number in whatever kind.
    void StoreNumber(const char* key, std::uint64_t number, std::shared_ptr<DataObject> value);
    /// The properties of another one of the same class, cloned or shared; its listeners are not touched.
    void CopyFrom(const MeasuredArray& other, bool cloneValues);
    /// Replaces the samples, in one update with all that follows from them. Raises `OutOfRangeError` for more than the
    /// counts can hold, and then changes nothing.
    void ReplaceSamples(std::shared_ptr<DataObject> samples);
    /// Enumerations are stored as signed numbers of 32 bits.
    template <class E>
    static std::shared_ptr<DataObject> MakeStoredEnum(E value) {
        return Details::MakeEnumScalar(typeid(E), true, sizeof(std::int32_t), static_cast<std::int64_t>(value));
    }
    bool HasArrays() const;
    /// Fixed spacings, told by that position function.
    void StoreSpacings(const Spacings& spacings, std::shared_ptr<DataObject> positionFunction);
    void StorePositions(std::shared_ptr<DataObject> positionFunction);

    std::shared_ptr<DataObject> FindValue(const std::string& key) const { return GetContent()->Get(key); }
    std::optional<std::uint64_t> FindNumber(const std::string& key) const;
    std::string FindText(const std::string& key) const;
    /// From the extents and counts, or nothing when these do not tell any.
    std::optional<Spacings> FindSpacings() const;
    /// The positions along an axis that are stored as an array, or else those of the position function.
    PositionList FindPositions(std::size_t axis) const;
    /// The same, and stores them.
    PositionList MakePositions(std::size_t axis);
    /// The same as `FindPositions`, at one moment.
    PositionList GetPositions(std::size_t axis) const;
    static Core::QorConstArray<double> ArrayOf(const PositionList& list) { return {list.values, list.count}; }
    /// The stored position function; the one that extents tell is stored first.
    std::shared_ptr<DataObject> TakePositionFunction();

    EPropertyChangeResult OnExternalPropertyAdded(const PropertyChangeEvent& event) override;

private:
    virtual const Layout& GetLayout() const = 0;
    virtual bool AreSamples(const DataObject& object) const = 0;
    /// The counts along the axes; nothing when they cannot be known. Raises `OutOfRangeError`.
    virtual std::optional<Counts> CountSamples(const DataObject& samples) const = 0;
    virtual void StoreSampleFacts(const DataObject& samples, const std::optional<Counts>& counts) = 0;
    virtual std::shared_ptr<DataObject> MakeFixedSpacing(const Spacings& spacings) const = 0;
    /// The spacings of a position function that is a fixed spacing by its class.
    virtual std::optional<Spacings> GetFixedSpacings(const DataObject& positionFunction) const = 0;
    virtual bool ArePositions(const DataObject& object) const = 0;
    /// Whether positions along an axis that are told by an array are as many as that.
    virtual bool PositionsFit(const DataObject& positionFunction, const Counts& counts) const = 0;
    virtual PositionList ListPositions(std::size_t axis) const = 0;
    virtual void OnSpacingsStored() {}

    const Property* FindProperty(const std::string& key) const;
    const Axis* FindExtent(const std::string& key) const;
    void Adopt(const std::string& key);
    void FitToSamples(const DataObject& samples);
    void FollowExtents();
    void RemoveArrays(const Axis& axis);
    void RemoveArrays();
    void RemoveExtents();
    EPropertyChangeResult OnSamplesSet(const PropertyChangeEvent& event);
    EPropertyChangeResult OnExtentSet(const PropertyChangeEvent& event);

    bool m_isReading = false; // guarded by the container's lock
};

} // namespace Qor::Tivor
