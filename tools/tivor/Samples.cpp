#include "Samples.h"

#include "Display.h"

#include <Tivor/MatrixView.h>

namespace Qor::Tivor::Tool {

Samples::Samples(const Data2D& surface) {
    const auto samples = surface.GetMatrixDataObject();
    const auto show = [&]<class T>(std::type_identity<T>) {
        const MatrixView<const T> view(surface);
        m_owner = std::make_shared<MatrixView<const T>>(view);
        m_data = view.data();
        m_read = &Read<T>;
        m_rows = view.size1();
        m_columns = view.size2();
        m_rowStep = view.stride1();
        m_columnStep = view.stride2();
    };
    switch (samples ? surface.GetValueType() : eNO_TYPE) {
#define TIVOR_ROW(T, STEM, code, position, name)                                                                       \
    case e##STEM:                                                                                                      \
        show(std::type_identity<T>());                                                                                 \
        break;
        TIVOR_NUMERIC_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
    default:
        break;
    }
}

Samples::Samples(const Data1D& profile) : m_owner(profile.GetArrayDataObject()) {
    const auto show = [&]<class T>(std::type_identity<T>) {
        const auto samples = profile.GetSamples<T>();
        if (samples.empty())
            return;
        m_data = samples.data();
        m_read = &Read<T>;
        m_rows = 1;
        m_columns = samples.size();
    };
#define TIVOR_ROW(T, STEM, code, position, name) show(std::type_identity<T>());
    TIVOR_ARRAY_ELEMENT_TYPES(TIVOR_ROW)
#undef TIVOR_ROW
}

namespace {

template <class T>
Samples Require(const T& measured, bool isEmpty, const char* what) {
    if (isEmpty)
        Fail(std::string("Expected a ") + what + " with samples, found a " + measured.ToString());
    Samples samples(measured);
    if (samples.NumColumns() == 0)
        Fail("Expected samples that are real numbers, found a " + measured.ToString());
    return samples;
}

} // namespace

Samples RequireSamples(const Data2D& surface) {
    return Require(surface, surface.GetNumDimension1Points() == 0 || surface.GetNumDimension2Points() == 0, "surface");
}

Samples RequireSamples(const Data1D& profile) { return Require(profile, profile.GetNumPoints() == 0, "profile"); }

} // namespace Qor::Tivor::Tool
