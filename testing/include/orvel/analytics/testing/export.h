#ifndef ORVEL_ANALYTICS_TESTING_EXPORT_H
#define ORVEL_ANALYTICS_TESTING_EXPORT_H

/// @file
/// What the testing library exports.
///
/// A test that links the static library defines `ORVEL_ANALYTICS_TESTING_STATIC`; the CMake target
/// `Orvel::AnalyticsTesting` does so by itself.

/// @def ORVEL_ANALYTICS_TESTING_EXPORT
/// Marks what `liborvel-analytics-testing` exports; everything else is hidden. For the library's
/// own headers.
#if defined(ORVEL_ANALYTICS_TESTING_STATIC)
#define ORVEL_ANALYTICS_TESTING_EXPORT
#elif defined(_WIN32)
#if defined(ORVEL_ANALYTICS_TESTING_BUILD)
#define ORVEL_ANALYTICS_TESTING_EXPORT __declspec(dllexport)
#else
#define ORVEL_ANALYTICS_TESTING_EXPORT __declspec(dllimport)
#endif
#else
#define ORVEL_ANALYTICS_TESTING_EXPORT __attribute__((visibility("default")))
#endif

#endif
