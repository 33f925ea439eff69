#ifndef ORVEL_RELAY_EXPORT_H
#define ORVEL_RELAY_EXPORT_H

/// @file
/// What the RPC client library exports.

/// @def ORVEL_RELAY_EXPORT
/// Marks what the RPC client library exports; everything else is hidden.
///
/// A program that links the static library, or that defines the client itself, defines
/// `ORVEL_RELAY_STATIC`.

#if defined(ORVEL_RELAY_STATIC)
#define ORVEL_RELAY_EXPORT
#elif defined(_WIN32)
#if defined(ORVEL_RELAY_BUILD)
#define ORVEL_RELAY_EXPORT __declspec(dllexport)
#else
#define ORVEL_RELAY_EXPORT __declspec(dllimport)
#endif
#else
#define ORVEL_RELAY_EXPORT __attribute__((visibility("default")))
#endif

#endif
