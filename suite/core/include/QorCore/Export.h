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
