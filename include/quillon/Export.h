#pragma once

/// QUILLON_API marks what the library exports. QUILLON_BUILD is defined while
/// the library itself is compiled, QUILLON_STATIC by who links its objects.
#if defined(QUILLON_STATIC)
#define QUILLON_API
#elif defined(_WIN32)
#if defined(QUILLON_BUILD)
#define QUILLON_API __declspec(dllexport)
#else
#define QUILLON_API __declspec(dllimport)
#endif
#else
#define QUILLON_API __attribute__((visibility("default")))
#endif

/// QUILLON_MODULE_EXPORT marks what a module library exports: its entry, by QUILLON_MODULE (ModuleEntry.h).
#if defined(_WIN32)
#define QUILLON_MODULE_EXPORT __declspec(dllexport)
#else
#define QUILLON_MODULE_EXPORT __attribute__((visibility("default")))
#endif

/// Lets the compiler check a printf-style call. Positions count from 1, `this` included.
#if defined(__clang__)
#define QUILLON_PRINTF(formatIndex, firstArgument) __attribute__((format(printf, formatIndex, firstArgument)))
#elif defined(__GNUC__)
#define QUILLON_PRINTF(formatIndex, firstArgument) \
    __attribute__((format(gnu_printf, formatIndex, firstArgument)))
#else
#define QUILLON_PRINTF(formatIndex, firstArgument)
#endif
