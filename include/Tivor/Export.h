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
