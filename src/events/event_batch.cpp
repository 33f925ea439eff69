#include "events/event_batch.h"

#include "json/json.h"
#include "text/timestamp.h"

namespace Orvel::Analytics::Events {
namespace {

Json::Object appSessionObject(Json::Document& document, const Session::AppSession& session) {
    Json::Object identity = document.newObject();
    const auto set = [&](WideStringView name, WideStringView text) {
        identity.setNamedValue(name, document.stringValue(text));
    };
    set(ORVEL_TEXT("V"), session.versionTag);
    set(ORVEL_TEXT("DT"), Text::formatLocalTimestamp(session.startTime));
    set(ORVEL_TEXT("1"), session.appName);
    set(ORVEL_TEXT("2"), session.appVersion);
    set(ORVEL_TEXT("3"), session.sessionId);
    identity.setNamedValue(ORVEL_TEXT("4"), document.numberValue(session.sessionCounter));
    set(ORVEL_TEXT("5"), session.userId);
    set(ORVEL_TEXT("6"), session.deviceId);
    set(ORVEL_TEXT("7"), session.environment);
    return identity;
}

}  // namespace

WideString eventBatch(const Session::AppSession& session, const std::list<WideString>& records) {
    Json::Document document;
    Json::Object batch = document.newObject();
    Json::Object reported = document.newObject();
    Json::Array events = document.newArray();
    Json::Array data = document.newArray();
    const Json::Object identity = appSessionObject(document, session);
    data.appendSerialised(records);
    reported.setNamedValue(ORVEL_TEXT("appsession"), identity);
    reported.setNamedValue(ORVEL_TEXT("data"), data);
    events.append(reported);
    batch.setNamedValue(ORVEL_TEXT("events"), events);
    return batch.stringify();
}

}  // namespace Orvel::Analytics::Events
