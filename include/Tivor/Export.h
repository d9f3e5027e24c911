#pragma once

#if defined(_WIN32)
#if defined(TIVOR_BUILDING)
#define TIVOR_API __declspec(dllexport)
#else
#define TIVOR_API __declspec(dllimport)
#endif
#else
#define TIVOR_API __attribute__((visibility("default")))
#endif

/// Keeps a class that stands in an exported one to the library.
#if defined(_WIN32)
#define TIVOR_LOCAL
#else
#define TIVOR_LOCAL __attribute__((visibility("hidden")))
#endif

/// Exports a function of a plug-in library.
#if defined(_WIN32)
#define TIVOR_PLUG_IN_EXPORT __declspec(dllexport)
#else
#define TIVOR_PLUG_IN_EXPORT __attribute__((visibility("default")))
#endif
