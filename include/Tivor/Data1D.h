#pragma once

#include <Tivor/MeasuredArray.h>
#include <Tivor/Position1D.h>

#include <memory>
#include <span>
#include <string>

namespace Qor::Tivor {

/// A measured profile: an array of samples of one element type, and where they lie along one dimension.
///
/// Properties, in the order of a new one: "Array" (the samples, an `Array<T>`), "DataKind", "DataScale", "Extent" (the
/// way from the first sample to the last), "NumPoints", "ValueTypeID", "ValueTypeName", "Version"; "PositionFunction"
/// (a `Position1D`), "PositionArray" and "PositionUnits" exist where they are used.
///
/// In a stream: its properties, in the form of a `DataContainer`.
class TIVOR_API Data1D : public MeasuredArray {
public:
    static std::shared_ptr<Data1D> Create();
    /// A deep copy.
    static std::shared_ptr<Data1D> Create(const Data1D& other);
    /// A profile of these samples, which are shared. Fails an assertion for null and for anything but an array.
    static std::shared_ptr<Data1D> CreateFrom(std::shared_ptr<DataObject> arrayData);

    /// Without samples.
    Data1D();
    /// The properties are cloned, or shared.
    Data1D(const Data1D& other, bool cloneValues = true);
    /// As a deep copy; listeners stay.
    Data1D& operator=(const Data1D& other);
    ~Data1D() override;
    std::shared_ptr<Data1D> Clone() const;

    /// The samples, or an empty pointer.
    std::shared_ptr<DataObject> GetArrayDataObject() { return FindValue("Array"); }
    Core::QorConstPtr<DataObject> GetArrayDataObject() const { return FindValue("Array"); }
    /// Replaces the samples by others, also of another element type, and all that follows from them, as one update.
    /// Fails an assertion as `CreateFrom`.
    void SetArrayDataObject(std::shared_ptr<DataObject> arrayData);
    /// The samples as a T each; empty when they are of another type. To be used as long as nobody replaces them.
    template <class T>
    std::span<const T> GetSamples() const {
        const auto array = std::dynamic_pointer_cast<const Array<T>>(GetArrayDataObject());
        return array ? array->GetElements() : std::span<const T>();
    }
    std::uint64_t GetNumPoints() const;
    ETypeID GetValueTypeID() const;
    std::string GetValueTypeName() const;

    /// The stored position function; else the fixed spacing that the extent tells, which is stored; else one over the
    /// array of positions; else an empty pointer. The const form stores nothing.
    std::shared_ptr<Position1D> GetPositionFunction();
    Core::QorConstPtr<Position1D> GetPositionFunction() const;
    /// Lets any position function tell the positions. One that is not of this library's classes is not stored in files.
    /// Raises `NullPointerError`.
    void SetPositionFunction(std::shared_ptr<Position1D> positions);
    /// False when the positions are not told by a fixed spacing.
    bool GetFixedSpacing(UnitizedDouble& spacing) const;
    void SetFixedSpacing(const UnitizedDouble& spacing);
    /// The positions as numbers in `GetPositionUnits`; where they are not stored so, they are worked out and, in the
    /// form that is not const, stored. Empty when there are none.
    boost::shared_array<double> GetPositionArray() { return MakePositions(0).values; }
    Core::QorConstArray<double> GetPositionArray() const { return ArrayOf(GetPositions(0)); }
    Core::QorConstPtr<Core::UnitDescriptor> GetPositionUnits() const { return GetPositions(0).units; }

    /// As "Data1D of 11 double".
    std::string ToString() const;

private:
    explicit Data1D(std::shared_ptr<DataObject> arrayData);

    const Layout& GetLayout() const override;
    bool AreSamples(const DataObject& object) const override;
    std::optional<Counts> CountSamples(const DataObject& samples) const override;
    void StoreSampleFacts(const DataObject& samples, const std::optional<Counts>& counts) override;
    std::shared_ptr<DataObject> MakeFixedSpacing(const Spacings& spacings) const override;
    std::optional<Spacings> GetFixedSpacings(const DataObject& positionFunction) const override;
    bool ArePositions(const DataObject& object) const override;
    bool PositionsFit(const DataObject& positionFunction, const Counts& counts) const override;
    PositionList ListPositions(std::size_t axis) const override;

    std::shared_ptr<Position1D> FindPositionFunction() const;
};

TIVOR_DECLARE_VALUE(Data1D, eNAMED_CLASS, "Data1D")

} // namespace Qor::Tivor
