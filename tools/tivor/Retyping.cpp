#include "Retyping.h"

#include "Elements.h"
#include "Samples.h"

#include <QorCore/Message.h>

#include <cmath>
#include <limits>

namespace Qor::Tivor::Tool {

namespace {

/// The sample as a T; nothing where there is none.
template <class T>
std::optional<T> Convert(long double sample) {
    if constexpr (std::is_floating_point_v<T>) {
        const T rounded = static_cast<T>(sample);
        return std::isinf(rounded) && !std::isinf(sample) ? std::nullopt : std::optional(rounded);
    } else {
        // The most of 64 bits are exact here, and of NaN both are false.
        const bool isInRange = sample >= static_cast<long double>(std::numeric_limits<T>::min()) &&
                               sample <= static_cast<long double>(std::numeric_limits<T>::max());
        return isInRange && std::trunc(sample) == sample ? std::optional(static_cast<T>(sample)) : std::nullopt;
    }
}

template <class T, class Put>
void ConvertAll(const Samples& samples, const Path& path, Put put) {
    for (std::size_t row = 0; row < samples.NumRows(); ++row)
        for (std::size_t column = 0; column < samples.NumColumns(); ++column) {
            const auto converted = Convert<T>(samples.At(row, column));
            if (!converted)
                Fail(Core::FormatText("%1%, row %2%, column %3%: expected a sample that %4% has%5%, found %6%",
                                      {ShowPath(path), row, column, GetValueTypeName(ValueTraits<T>::GetTypeID()),
                                       std::is_integral_v<T> ? " exactly" : "",
                                       NumberText(static_cast<double>(samples.At(row, column)))}));
            put(row, column, *converted);
        }
}

template <class Matrix>
std::shared_ptr<DataObject> MakeMatrix(const Samples& samples, const Path& path) {
    using T = typename Matrix::value_type;
    Matrix matrix(samples.NumRows(), samples.NumColumns());
    ConvertAll<T>(samples, path, [&](std::size_t row, std::size_t column, T sample) { matrix(row, column) = sample; });
    return MakeData(std::move(matrix));
}

template <class T>
std::shared_ptr<DataObject> MakeArray(const Samples& samples, const Path& path) {
    const std::size_t count = samples.NumColumns();
    const auto elements = AllocateArray<T>(count);
    ConvertAll<T>(samples, path, [&](std::size_t, std::size_t column, T sample) { elements.get()[column] = sample; });
    return std::make_shared<Array<T>>(elements, count);
}

/// Calls back with an object of the element type.
template <class Visit>
void VisitType(ETypeID type, Visit visit) {
    switch (type) {
#define TIVOR_ROW(T, STEM, code, position, name)                                                                       \
    case e##STEM:                                                                                                      \
        return visit(std::type_identity<T>());
        TIVOR_NUMERIC_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
    default:
        return;
    }
}

template <class T>
bool IsToBeConverted(const T& array, ETypeID found, ETypeID wanted, const std::shared_ptr<const DataObject>& samples,
                     const Path& path) {
    if (!samples || found == wanted)
        return false;
    bool isReal = false;
    VisitType(found, [&](auto) { isReal = true; });
    if (!isReal)
        Fail(Core::FormatText("%1%: expected samples that are real numbers, found a %2%",
                              {ShowPath(path), array.ToString()}));
    return true;
}

} // namespace

ETypeID FindElementType(const std::string& name) {
    std::string list;
#define TIVOR_ROW(T, STEM, code, position, text)                                                                       \
    if (name == text)                                                                                                  \
        return e##STEM;                                                                                                \
    list += list.empty() ? text : ", " text;
    TIVOR_NUMERIC_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
    Fail(Core::FormatText("Expected one of the element types %1% behind --type, found %2%", {list, Show(name)}));
}

std::shared_ptr<Data2D> Retype(const Data2D& surface, ETypeID type, const Path& path) {
    auto result = std::make_shared<Data2D>(surface, false);
    if (!IsToBeConverted(surface, surface.GetValueType(), type, surface.GetMatrixDataObject(), path))
        return result;
    const Samples samples(surface);
    const bool isRowMajor = surface.GetMatrixTypeName() == "Matrix";
    VisitType(type, [&]<class T>(std::type_identity<T>) {
        result->SetMatrixDataObject(isRowMajor ? MakeMatrix<RowMajorMatrix<T>>(samples, path)
                                               : MakeMatrix<ColumnMajorMatrix<T>>(samples, path));
    });
    return result;
}

std::shared_ptr<Data1D> Retype(const Data1D& profile, ETypeID type, const Path& path) {
    auto result = std::make_shared<Data1D>(profile, false);
    if (!IsToBeConverted(profile, profile.GetValueTypeID(), type, profile.GetArrayDataObject(), path))
        return result;
    const Samples samples(profile);
    VisitType(type, [&]<class T>(std::type_identity<T>) { result->SetArrayDataObject(MakeArray<T>(samples, path)); });
    return result;
}

} // namespace Qor::Tivor::Tool
