#include "orvel/analytics/session.h"

#include <optional>
#include <utility>

#include "channel/service_channel.h"
#include "dataclass/registration.h"
#include "dataclass/validation.h"
#include "events/device_identity.h"
#include "events/event_batch.h"
#include "events/event_record.h"
#include "events/guid.h"
#include "orvel/analytics/hresult_error.h"
#include "session/parsed_event.h"
#include "text/clock.h"
#include "text/local_time.h"

using Orvel::WideString;
using Orvel::Analytics::DataClass::BaseDataClass;
using Orvel::Analytics::Emitters::AnalyticsResult;
using Orvel::Analytics::Session::AppSession;
using Orvel::Analytics::Session::ParsedEvent;

namespace Channel = Orvel::Analytics::Channel;
namespace Events = Orvel::Analytics::Events;
namespace Text = Orvel::Analytics::Text;

namespace {

/// What a session gets when it is renewed. It is made before there is no way back, so that memory
/// cannot run out behind it.
class Renewal {
  public:
    explicit Renewal(bool keepsUserId) : sessionId_(Events::generateGuidString()) {
        if (!keepsUserId) {
            userId_ = Events::generateGuidString();
        }
    }

    void apply(AppSession& session, std::int64_t& endTime) noexcept {
        Text::readTimeZone();
        session.sessionCounter = 0;
        endTime = 0;
        session.startTime = Text::currentTime();
        session.sessionId = std::move(sessionId_);
        if (userId_) {
            session.userId = std::move(*userId_);
        }
    }

  private:
    WideString sessionId_;
    std::optional<WideString> userId_;
};

}  // namespace

AnalyticsSession::AnalyticsSession(WideString appName, WideString appVersion, WideString userId,
                                   WideString appSessionInitiated) {
    if (appName.empty()) {
        throw "App name cannot be null or empty";
    }
    if (appVersion.empty()) {
        throw "App version cannot be null or empty";
    }
    InitAppSession(std::move(appName), std::move(appVersion), std::move(userId),
                   std::move(appSessionInitiated));
}

AnalyticsSession::AnalyticsSession(const AnalyticsSession& other) = default;

AnalyticsSession::AnalyticsSession(AnalyticsSession&& other) noexcept
    : appSession(std::move(other.appSession)),
      endTime(other.endTime),
      userIdSupplied(other.userIdSupplied) {
    eventQueue.swap(other.eventQueue);
}

AnalyticsSession& AnalyticsSession::operator=(const AnalyticsSession& other) {
    // Copied first: a session that reports one application's events as another's is worse than
    // none.
    return *this = AnalyticsSession(other);
}

AnalyticsSession& AnalyticsSession::operator=(AnalyticsSession&& other) noexcept {
    if (this != &other) {
        appSession = std::move(other.appSession);
        endTime = other.endTime;
        eventQueue.clear();
        eventQueue.swap(other.eventQueue);
        userIdSupplied = other.userIdSupplied;
    }
    return *this;
}

AnalyticsSession::~AnalyticsSession() = default;

AnalyticsResult AnalyticsSession::RegisterDataClass(BaseDataClass* dataClass) {
    appSession.versionTag = dataClass->version;
    WideString document = getJSonStr(dataClass);
    Channel::ServiceChannel channel = Channel::getServiceClient();
    return Channel::registerCommand(channel, appSession.appName, std::move(document));
}

AnalyticsResult AnalyticsSession::CollectEvent(BaseDataClass* dataClass, WideString event) {
    if (event.empty()) {
        return AnalyticsResult::EmptyEvent;
    }
    ParsedEvent parsed(std::move(event));
    const AnalyticsResult result = validateEvent(dataClass, parsed);
    if (result == AnalyticsResult::Success) {
        eventQueue.push_back(getEventData(dataClass, parsed));
    }
    return result;
}

AnalyticsResult AnalyticsSession::SendEvents() {
    Channel::ServiceChannel channel = Channel::getServiceClient();
    WideString document = generateEventsJsonStr();
    if (document.empty()) {
        return AnalyticsResult::MalformedJson;
    }
    Renewal renewal(userIdSupplied);
    eventQueue.clear();
    AnalyticsResult result;
    try {
        result = Channel::collectCommand(channel, appSession.appName, std::move(document));
    } catch (...) {
        renewal.apply(appSession, endTime);
        throw;
    }
    renewal.apply(appSession, endTime);
    return result;
}

AnalyticsResult AnalyticsSession::GetConsent(ConsentObject* consent) {
    WideString payload;
    Channel::ServiceChannel channel = Channel::getServiceClient();
    const AnalyticsResult result = Channel::getConsentCommand(channel, appSession.appName, payload);
    if (result == AnalyticsResult::Success) {
        *consent = ConsentObject::FromJson(std::move(payload));
    }
    return result;
}

AnalyticsResult AnalyticsSession::SetConsent(ProcessingPermissions permissions) {
    Channel::ServiceChannel channel = Channel::getServiceClient();
    return Channel::setConsentCommand(channel, appSession.appName, permissions.ToJson());
}

AnalyticsResult AnalyticsSession::GetDocumentURLs(PrivacyDocuments* documents) {
    WideString payload;
    Channel::ServiceChannel channel = Channel::getServiceClient();
    const AnalyticsResult result =
        Channel::getPrivacyDocumentsCommand(channel, appSession.appName, payload);
    // Read whatever the result: a request that failed leaves nothing that could be read, and its
    // error tells so.
    documents->FromJson(std::move(payload));
    return result;
}

AnalyticsResult AnalyticsSession::SetStartTime(std::int64_t time) {
    if (Text::currentTime() < time) {
        return AnalyticsResult::StartTimeInFuture;
    }
    appSession.startTime = time;
    return AnalyticsResult::Success;
}

AnalyticsResult AnalyticsSession::SetEndTime(std::int64_t time) {
    const auto difference =
        static_cast<std::uint32_t>(time) - static_cast<std::uint32_t>(appSession.startTime);
    if (static_cast<std::int32_t>(difference) < 0) {
        return AnalyticsResult::EndTimeBeforeStartTime;
    }
    endTime = time;
    return AnalyticsResult::Success;
}

void AnalyticsSession::InitAppSession(WideString appName, WideString appVersion, WideString userId,
                                      WideString appSessionInitiated) {
    userIdSupplied = !userId.empty();
    if (userIdSupplied && !Events::isBracedGuid(userId)) {
        throw "UserID must be a GUID";
    }
    Text::readTimeZone();
    appSession = AppSession();
    appSession.appName = std::move(appName);
    appSession.appVersion = std::move(appVersion);
    appSession.sessionId = Events::generateGuidString();
    appSession.environment = ORVEL_TEXT("Production");
    appSession.userId = userIdSupplied ? std::move(userId) : Events::generateGuidString();
    appSession.deviceId = Events::collectDeviceIdentity();
    appSession.startTime = Text::currentTime();
    SetAppSessionInitiated(std::move(appSessionInitiated));
}

void AnalyticsSession::RefreshSession() { Renewal(userIdSupplied).apply(appSession, endTime); }

void AnalyticsSession::SetAppSessionInitiated(WideString appSessionInitiated) {
    appSession.appSessionInitiated = std::move(appSessionInitiated);
}

WideString AnalyticsSession::getJSonStr(BaseDataClass* dataClass) {
    return Orvel::Analytics::DataClass::registrationDocument(*dataClass);
}

AnalyticsResult AnalyticsSession::validateEvent(BaseDataClass* dataClass, ParsedEvent& event) {
    try {
        event.values = event.document.parseObject(event.text);
    } catch (const Orvel::Analytics::hresult_error&) {
        return AnalyticsResult::MalformedJson;
    }
    return Orvel::Analytics::DataClass::validateValues(*event.values, *dataClass);
}

WideString AnalyticsSession::getEventData(BaseDataClass* dataClass, ParsedEvent& event) const {
    return Events::eventRecord(event.document, event.values.value(), *dataClass,
                               appSession.versionTag);
}

WideString AnalyticsSession::generateEventsJsonStr() const {
    return Events::eventBatch(appSession, eventQueue);
}
