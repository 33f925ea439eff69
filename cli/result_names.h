#ifndef ORVEL_CLI_RESULT_NAMES_H
#define ORVEL_CLI_RESULT_NAMES_H

#include <string>
#include <string_view>

#include "orvel/analytics/result.h"

/// @file
/// Result codes in words.

namespace Orvel::Tool {

/// The enumerator's name; "Unknown" for a number without one.
[[nodiscard]] std::string_view resultName(Analytics::Emitters::AnalyticsResult result);

/// What the result means, as half a sentence.
[[nodiscard]] std::string_view resultWords(Analytics::Emitters::AnalyticsResult result);

/// Name, number and meaning, such as "EmptyEvent (2): the event is empty".
[[nodiscard]] std::string describeResult(Analytics::Emitters::AnalyticsResult result);

}  // namespace Orvel::Tool

#endif
