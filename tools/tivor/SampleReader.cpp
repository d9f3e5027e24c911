#include "SampleReader.h"

#include "Display.h"

#include <Tivor/MatrixView.h>

namespace Qor::Tivor::Tool {

namespace {

template <class Reader, class Measured>
Reader Require(Reader reader, const Measured& measured) {
    if (!reader)
        Fail("Expected samples that are real numbers, found a " + measured.ToString());
    return reader;
}

template <class T>
SurfaceReader ReadAs(const Data2D& surface) {
    return [view = MatrixView<const T>(surface)](std::size_t row, std::size_t column) {
        return static_cast<double>(view(row, column));
    };
}

template <class T>
ProfileReader ReadAs(const Data1D& profile) {
    const auto array = std::dynamic_pointer_cast<const Array<T>>(profile.GetArrayDataObject());
    if (!array)
        return {};
    return [array, samples = array->GetElements()](std::size_t index) { return static_cast<double>(samples[index]); };
}

} // namespace

SurfaceReader ReadSamples(const Data2D& surface) {
    if (surface.GetNumDimension1Points() == 0 || surface.GetNumDimension2Points() == 0)
        Fail("Expected a surface with samples, found a " + surface.ToString());
    SurfaceReader reader;
#define TIVOR_ROW(T, STEM, code, position, name)                                                                       \
    if (surface.GetValueType() == e##STEM)                                                                             \
        reader = ReadAs<T>(surface);
    TIVOR_NUMERIC_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
    return Require(std::move(reader), surface);
}

ProfileReader ReadSamples(const Data1D& profile) {
    if (profile.GetNumPoints() == 0)
        Fail("Expected a profile with samples, found a " + profile.ToString());
    ProfileReader reader;
#define TIVOR_ROW(T, STEM, code, position, name)                                                                       \
    if (!reader)                                                                                                       \
        reader = ReadAs<T>(profile);
    TIVOR_ARRAY_ELEMENT_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
    return Require(std::move(reader), profile);
}

} // namespace Qor::Tivor::Tool
