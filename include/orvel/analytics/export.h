#ifndef ORVEL_ANALYTICS_EXPORT_H
#define ORVEL_ANALYTICS_EXPORT_H

/// @file
/// What the library exports.

/// @def ORVEL_ANALYTICS_EXPORT
/// Marks what `liborvel-analytics` exports; everything else is hidden. For the library's own
/// headers.
///
/// An application that links the static library defines `ORVEL_ANALYTICS_STATIC`; the CMake target
/// `Orvel::Analytics` does so by itself.

#if defined(ORVEL_ANALYTICS_STATIC)
#define ORVEL_ANALYTICS_EXPORT
#elif defined(_WIN32)
#if defined(ORVEL_ANALYTICS_BUILD)
#define ORVEL_ANALYTICS_EXPORT __declspec(dllexport)
#else
#define ORVEL_ANALYTICS_EXPORT __declspec(dllimport)
#endif
#else
#define ORVEL_ANALYTICS_EXPORT __attribute__((visibility("default")))
#endif

#endif
