#include "orvel/analytics/app_session.h"

#include "text/take.h"

namespace Orvel::Analytics::Session {

using Text::take;

AppSession::AppSession() : sessionCounter(0), startTime(0) {}

AppSession::AppSession(const AppSession& other) = default;

AppSession::AppSession(AppSession&& other) noexcept
    : appName(take(other.appName)),
      appVersion(take(other.appVersion)),
      versionTag(take(other.versionTag)),
      sessionId(take(other.sessionId)),
      sessionCounter(other.sessionCounter),
      userId(take(other.userId)),
      deviceId(take(other.deviceId)),
      environment(take(other.environment)),
      startTime(other.startTime),
      appSessionInitiated(take(other.appSessionInitiated)) {}

AppSession& AppSession::operator=(const AppSession& other) = default;

AppSession& AppSession::operator=(AppSession&& other) noexcept {
    if (this != &other) {
        appName = take(other.appName);
        appVersion = take(other.appVersion);
        versionTag = take(other.versionTag);
        sessionId = take(other.sessionId);
        sessionCounter = other.sessionCounter;
        userId = take(other.userId);
        deviceId = take(other.deviceId);
        environment = take(other.environment);
        startTime = other.startTime;
        appSessionInitiated = take(other.appSessionInitiated);
    }
    return *this;
}

AppSession::~AppSession() = default;

}  // namespace Orvel::Analytics::Session
