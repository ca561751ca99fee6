// Symbol visibility of the public API. Everything else in the library is hidden.
#pragma once

#if defined(ZALACCELERATE_STATIC)
#define ZAL_API
#elif defined(_WIN32)
#if defined(ZALACCELERATE_BUILDING)
#define ZAL_API __declspec(dllexport)
#else
#define ZAL_API __declspec(dllimport)
#endif
#else
#define ZAL_API __attribute__((visibility("default")))
#endif
