#ifndef ORVEL_ANALYTICS_APP_SESSION_H
#define ORVEL_ANALYTICS_APP_SESSION_H

#include <cstdint>

#include "orvel/analytics/export.h"
#include "orvel/analytics/text.h"

/// @file
/// The identity of a running application.

namespace Orvel::Analytics::Session {

/// The identity under which an application reports. A plain value: it owns its texts, copies and
/// moves member by member. Different records may be used on different threads.
class ORVEL_ANALYTICS_EXPORT AppSession {
  public:
    /// Every text empty, every number 0.
    AppSession();
    /// Copies every member. @throws std::bad_alloc
    AppSession(const AppSession& other);
    /// Takes the texts of `other` over, which are empty then, and copies the numbers.
    AppSession(AppSession&& other) noexcept;
    /// Copies every member. @throws std::bad_alloc Each text is then as it was or
    /// as it was to be.
    AppSession& operator=(const AppSession& other);
    /// As moving into a new record; onto itself it changes nothing.
    AppSession& operator=(AppSession&& other) noexcept;
    /// Releases the texts.
    ~AppSession();

    /// The application's name.
    WideString appName;
    /// The application's version.
    WideString appVersion;
    /// The version of the data class registered last; empty until the first registration.
    WideString versionTag;
    /// The current session's identifier, a GUID without braces.
    WideString sessionId;
    /// Always 0: nothing counts it up.
    std::int32_t sessionCounter;
    /// The user's identifier: the application's own in braces, or a generated GUID without.
    WideString userId;
    /// The device: operating system name, a space and a version of four parts.
    WideString deviceId;
    /// The deployment environment: always "Production".
    WideString environment;
    /// The session's start, in seconds since 1970-01-01 00:00 UTC.
    std::int64_t startTime;
    /// How the application session was initiated, as the application said; never sent.
    WideString appSessionInitiated;
};

}  // namespace Orvel::Analytics::Session

#endif
