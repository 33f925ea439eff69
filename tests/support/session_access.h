#ifndef ORVEL_SUPPORT_SESSION_ACCESS_H
#define ORVEL_SUPPORT_SESSION_ACCESS_H

#include <cstdint>
#include <list>
#include <utility>

#include "orvel/analytics/session.h"
#include "session/parsed_event.h"

namespace Orvel::Analytics::Session {

/// The tests' way to a session's private data and operations.
struct SessionAccess {
    using DataClass = Orvel::Analytics::DataClass::BaseDataClass;
    using Result = Emitters::AnalyticsResult;

    static AppSession& appSession(AnalyticsSession& session) { return session.appSession; }
    static std::int64_t& endTime(AnalyticsSession& session) { return session.endTime; }
    static std::list<WideString>& eventQueue(AnalyticsSession& session) {
        return session.eventQueue;
    }
    static bool userIdSupplied(const AnalyticsSession& session) { return session.userIdSupplied; }

    static void RefreshSession(AnalyticsSession& session) { session.RefreshSession(); }
    static void SetAppSessionInitiated(AnalyticsSession& session, WideString marker) {
        session.SetAppSessionInitiated(std::move(marker));
    }
    static WideString getJSonStr(DataClass& dataClass) {
        return AnalyticsSession::getJSonStr(&dataClass);
    }
    static Result validateEvent(DataClass& dataClass, WideString text) {
        ParsedEvent event(std::move(text));
        return AnalyticsSession::validateEvent(&dataClass, event);
    }
    static WideString getEventData(const AnalyticsSession& session, DataClass& dataClass,
                                   WideString text) {
        ParsedEvent event(std::move(text));
        event.values = event.document.parseObject(event.text);
        return session.getEventData(&dataClass, event);
    }
    static WideString generateEventsJsonStr(const AnalyticsSession& session) {
        return session.generateEventsJsonStr();
    }
};

}  // namespace Orvel::Analytics::Session

#endif
