// UTIL_API marks what the library exports; everything else stays internal to Util.dll / libUtil.so.
#pragma once

#if defined(_WIN32)
#if defined(UTIL_BUILDING_LIBRARY)
#define UTIL_API __declspec(dllexport)
#else
#define UTIL_API __declspec(dllimport)
#endif
#else
#define UTIL_API __attribute__((visibility("default")))
#endif
