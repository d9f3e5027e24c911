#pragma once

#include <Tivor/MeasuredArray.h>
#include <Tivor/Position2D.h>

#include <memory>
#include <string>

namespace Qor::Tivor {

/// A measured surface: a matrix of samples of one element type, and where they lie along two dimensions. Dimension 1 is
/// the first index of the matrix, whatever its storage order.
///
/// Properties, in the order of a new one: "Matrix" (the samples; read-only), "Dimension1Points", "Dimension2Points",
/// "MatrixType", "Aspect", "DataScale", "DataKind", "Version", "Origin"; "Dimension1Extent" and "Dimension2Extent" (the
/// ways from the first sample to the last), "PositionFunction" (a `Position2D`), "Dim1PositionArray",
/// "Dim1PositionUnits", "Dim2PositionArray" and "Dim2PositionUnits" exist where they are used.
///
/// In a stream: its properties, in the form of a `DataContainer`.
class TIVOR_API Data2D : public MeasuredArray {
public:
    /// The corner in which the first sample lies. As texts: "Upper Left", "Lower Left", "Upper Right", "Lower Right".
    enum EOrigin : std::int32_t { eUPPER_LEFT, eLOWER_LEFT, eUPPER_RIGHT, eLOWER_RIGHT };

    static std::shared_ptr<Data2D> Create();
    /// A deep copy.
    static std::shared_ptr<Data2D> Create(const Data2D& other);
    /// As the constructor.
    static std::shared_ptr<Data2D> Create(std::shared_ptr<DataObject> matrixData);

    /// As the constructor, with the kind and the scale of the data of another surface.
    static std::shared_ptr<Data2D> CreateLike(const Data2D& other, std::shared_ptr<DataObject> matrixData);

    /// Without samples.
    Data2D();
    /// A surface of these samples, which are shared. Fails an assertion for null and for anything but a matrix; raises
    /// `OutOfRangeError` for 2^32 points and more along a dimension.
    explicit Data2D(std::shared_ptr<DataObject> matrixData);
    /// The properties are cloned, or shared.
    Data2D(const Data2D& other, bool cloneValues = true);
    /// As a deep copy; listeners stay.
    Data2D& operator=(const Data2D& other);
    ~Data2D() override;
    std::shared_ptr<Data2D> Clone() const;

    /// The samples, or an empty pointer.
    std::shared_ptr<DataObject> GetMatrixDataObject() { return FindValue("Matrix"); }
    Core::QorConstPtr<DataObject> GetMatrixDataObject() const { return FindValue("Matrix"); }
    /// Replaces the samples by others, also of another element type or storage order, and all that follows from them,
    /// as one update. Fails an assertion and raises as the constructor, and then changes nothing.
    void SetMatrixDataObject(std::shared_ptr<DataObject> matrixData);
    /// "Matrix", or "FortranMatrix" where the first index runs fastest; empty without samples.
    std::string GetMatrixTypeName() const;
    EMatrixTypeID GetMatrixType() const;
    /// The element type.
    ETypeID GetValueType() const;
    std::string GetValueTypeName() const;
    std::uint32_t GetNumDimension1Points() const;
    std::uint32_t GetNumDimension2Points() const;

    /// The spacing along dimension 2 over that along dimension 1; 1 until a fixed spacing is set.
    float GetAspect() const;
    EOrigin GetOrigin() const;
    void SetOrigin(EOrigin origin);

    /// The stored position function; else the fixed spacings that both extents tell, which are stored; else one over
    /// the arrays of positions; else an empty pointer. The const form stores nothing.
    std::shared_ptr<Position2D> GetPositionFunction();
    Core::QorConstPtr<Position2D> GetPositionFunction() const;
    /// Lets any position function tell the positions. One that is not of this library's classes is not stored in files.
    /// Raises `NullPointerError`.
    void SetPositionFunction(std::shared_ptr<Position2D> positions);
    /// False unless the position function tells fixed spacings along both dimensions; then nothing is changed.
    bool GetFixedSpacing(UnitizedDouble& dim1, UnitizedDouble& dim2) const;
    void SetFixedSpacing(const UnitizedDouble& dim1, const UnitizedDouble& dim2);
    /// The spacing along dimension 2 is `dim1` times the aspect.
    void SetFixedSpacing(const UnitizedDouble& dim1, float aspect);
    /// The positions along a dimension as numbers in the units beside them; where they are not stored so, they are
    /// worked out and, in the forms that are not const, stored. Empty when there are none.
    boost::shared_array<double> GetDim1PositionArray() { return MakePositions(0).values; }
    boost::shared_array<double> GetDim2PositionArray() { return MakePositions(1).values; }
    Core::QorConstArray<double> GetDim1PositionArray() const { return ArrayOf(GetPositions(0)); }
    Core::QorConstArray<double> GetDim2PositionArray() const { return ArrayOf(GetPositions(1)); }
    Core::QorConstPtr<Core::UnitDescriptor> GetDim1PositionUnits() const { return GetPositions(0).units; }
    Core::QorConstPtr<Core::UnitDescriptor> GetDim2PositionUnits() const { return GetPositions(1).units; }

    /// As "Data2D of 860 x 634 float".
    std::string ToString() const;

private:
    template <class>
    friend class Data2DOperation;
    friend TIVOR_API std::shared_ptr<Data2D> CreateSubregion(const Data2D& data, std::uint64_t begin1,
                                                             std::uint64_t end1, std::uint64_t begin2,
                                                             std::uint64_t end2);

    const Layout& GetLayout() const override;
    bool AreSamples(const DataObject& object) const override;
    std::optional<Counts> CountSamples(const DataObject& samples) const override;
    void StoreSampleFacts(const DataObject& samples, const std::optional<Counts>& counts) override;
    std::shared_ptr<DataObject> MakeFixedSpacing(const Spacings& spacings) const override;
    std::optional<Spacings> GetFixedSpacings(const DataObject& positionFunction) const override;
    bool ArePositions(const DataObject& object) const override;
    bool PositionsFit(const DataObject& positionFunction, const Counts& counts) const override;
    PositionList ListPositions(std::size_t axis) const override;
    void OnSpacingsStored() override;

    void InitProperties(std::shared_ptr<DataObject> matrixData);
    void UpdateProperties(std::shared_ptr<DataObject> matrixData);
    void StoreFixedSpacing(const FixedSpacing2D& spacing);
    void SetCustomPositionFunction(std::shared_ptr<Position2D> positions, const Data2D& source);
    std::shared_ptr<Position2D> FindPositionFunction() const;
};

TIVOR_DECLARE_VALUE(Data2D, eNAMED_CLASS, "Data2D")

} // namespace Qor::Tivor
