#pragma once

#include <Tivor/Export.h>

#include <string>

namespace Qor::Tivor {

/// The kinds of measured data, as the property "DataKind" of profiles and surfaces names them. Programs may use others.
#define TIVOR_DATA_KINDS(X)                                                                                            \
    X(sUNKNOWN_DATA, "Unknown")                                                                                        \
    X(sHEIGHT_DATA, "Height")                                                                                          \
    X(sINTENSITY_DATA, "Intensity")                                                                                    \
    X(sRGB_INTENSITY_DATA, "Color Intensity")                                                                          \
    X(sMODULATION_DATA, "Modulation")                                                                                  \
    X(sPHASE_DATA, "Phase")                                                                                            \
    X(sAMPLITUDE_DATA, "Amplitude")                                                                                    \
    X(sFRAME_DATA, "Frame")                                                                                            \
    X(sRADIAL_HEIGHT_DATA, "Radial Height")                                                                            \
    X(sSURFACE_HEIGHT, "Surface Height")                                                                               \
    X(sSURFACE_PROFILE, "Surface Profile")                                                                             \
    X(sTIME_PROFILE, "Time Profile")                                                                                   \
    X(sCAMERA_FRAMES, "Camera Frames")                                                                                 \
    X(sINTENSITY_IMAGE, "Intensity Image")                                                                             \
    X(s3D_STRESS, "3D Stress")                                                                                         \
    X(sCOMBINED_SURFACE_HEIGHT, "Combined Surface Height")                                                             \
    X(sCOMBINED_SURFACE_PROFILE, "Combined Surface Profile")

#define TIVOR_ROW(name, text) extern TIVOR_API const std::string name;
TIVOR_DATA_KINDS(TIVOR_ROW)
#undef TIVOR_ROW

} // namespace Qor::Tivor
