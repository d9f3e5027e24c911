#pragma once

#if defined(_WIN32)
#if defined(QOR_CORE_BUILDING)
#define QOR_CORE_API __declspec(dllexport)
#else
#define QOR_CORE_API __declspec(dllimport)
#endif
#else
#define QOR_CORE_API __attribute__((visibility("default")))
#endif

/// Keeps a class that stands in an exported one to the library.
#if defined(_WIN32)
#define QOR_CORE_LOCAL
#else
#define QOR_CORE_LOCAL __attribute__((visibility("hidden")))
#endif
