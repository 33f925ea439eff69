#ifndef ORVEL_EVENTS_EVENT_BATCH_H
#define ORVEL_EVENTS_EVENT_BATCH_H

#include <list>

#include "orvel/analytics/app_session.h"
#include "orvel/analytics/text.h"

namespace Orvel::Analytics::Events {

/// The document that reports queued event records under the session's identity.
WideString eventBatch(const Session::AppSession& session, const std::list<WideString>& records);

}  // namespace Orvel::Analytics::Events

#endif
