#include <Tivor/Export.h>

// A library that is no plug-in.
extern "C" TIVOR_PLUG_IN_EXPORT int SomethingElse() { return 1; }
