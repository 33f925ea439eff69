#ifndef ORVEL_TESTING_PROTOCOL_H
#define ORVEL_TESTING_PROTOCOL_H

#include <cstddef>
#include <optional>

#include "orvel/analytics/testing/answer.h"
#include "orvel/analytics/text.h"

/// The form of commands and replies: an application's name, a token, a document, with nothing
/// between them.
namespace Orvel::Analytics::Testing {

namespace Token {

inline constexpr WideStringView kConnect = ORVEL_TEXT("::CONNECT_APP::");
inline constexpr WideStringView kRegister = ORVEL_TEXT("::REGISTER_DATACLASS::");
inline constexpr WideStringView kCollect = ORVEL_TEXT("::COLLECT_DATACLASS::");
inline constexpr WideStringView kGetConsent = ORVEL_TEXT("::GET_CONSENT::");
inline constexpr WideStringView kSetConsent = ORVEL_TEXT("::SET_CONSENT::");
inline constexpr WideStringView kGetDocuments = ORVEL_TEXT("::GET_PRIVACY_DOCUMENTS::");
inline constexpr WideStringView kAcknowledged = ORVEL_TEXT("::ACK::");
inline constexpr WideStringView kSuccess = ORVEL_TEXT("::SUCCESS::");
inline constexpr WideStringView kConsentRecord = ORVEL_TEXT("::CONSENT_RECORD::");
inline constexpr WideStringView kDocuments = ORVEL_TEXT("::PRIVACY_DOCUMENTS::");
/// Stands in the reply to a command that is none.
inline constexpr WideStringView kNone = ORVEL_TEXT("::UNKNOWN::");

}  // namespace Token

/// A command taken apart. It borrows from the command's text.
struct Request {
    Step step = Step::Greet;
    WideStringView application;
    WideStringView document;
};

/// Takes a command apart.
/// @param greeted the application that has greeted, which is matched whole, as its name may hold
///     colons and tokens; empty when none has, and then only a greeting is a command.
/// @return nothing when the text is no command.
[[nodiscard]] std::optional<Request> readCommand(WideStringView command, WideStringView greeted);

/// The reply that reports an error to a command, or, without one, to a text that is none.
[[nodiscard]] WideString errorReply(const std::optional<Request>& request, WideStringView name);

}  // namespace Orvel::Analytics::Testing

#endif
