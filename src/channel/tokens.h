#ifndef ORVEL_CHANNEL_TOKENS_H
#define ORVEL_CHANNEL_TOKENS_H

#include "orvel/analytics/text.h"

/// The framing of commands and replies. Being constants, they need no work when the library is
/// loaded or unloaded.
namespace Orvel::Analytics::Channel::Token {

inline constexpr WideStringView kConnectApp = ORVEL_TEXT("::CONNECT_APP::");
inline constexpr WideStringView kRegisterDataclass = ORVEL_TEXT("::REGISTER_DATACLASS::");
inline constexpr WideStringView kCollectDataclass = ORVEL_TEXT("::COLLECT_DATACLASS::");
inline constexpr WideStringView kGetConsent = ORVEL_TEXT("::GET_CONSENT::");
inline constexpr WideStringView kSetConsent = ORVEL_TEXT("::SET_CONSENT::");
inline constexpr WideStringView kGetPrivacyDocuments = ORVEL_TEXT("::GET_PRIVACY_DOCUMENTS::");
inline constexpr WideStringView kConsentRecord = ORVEL_TEXT("::CONSENT_RECORD::");
inline constexpr WideStringView kAck = ORVEL_TEXT("::ACK::");
inline constexpr WideStringView kPrivacyDocuments = ORVEL_TEXT("::PRIVACY_DOCUMENTS::");

/// The service marks success and errors with these; no operation tests them.
inline constexpr WideStringView kSuccess = ORVEL_TEXT("::SUCCESS::");
inline constexpr WideStringView kErrorCode = ORVEL_TEXT("ErrorCode :");

}  // namespace Orvel::Analytics::Channel::Token

#endif
