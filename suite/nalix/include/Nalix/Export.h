#pragma once

#if defined(_WIN32)
#if defined(NALIX_BUILDING)
#define NALIX_API __declspec(dllexport)
#else
#define NALIX_API __declspec(dllimport)
#endif
#else
#define NALIX_API __attribute__((visibility("default")))
#endif
