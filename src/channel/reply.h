#ifndef ORVEL_CHANNEL_REPLY_H
#define ORVEL_CHANNEL_REPLY_H

#include "orvel/analytics/result.h"
#include "orvel/analytics/text.h"

namespace Orvel::Analytics::Channel {

/// What a reply of the service says: success unless "ErrorCode" occurs in it, otherwise the error
/// that the last element of its "Results" names.
/// @throws hresult_error when the reply of an error is not a JSON object with an array "Results".
Emitters::AnalyticsResult parseServiceReply(WideStringView reply);

}  // namespace Orvel::Analytics::Channel

#endif
