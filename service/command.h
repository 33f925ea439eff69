#ifndef ORVEL_SERVICE_COMMAND_H
#define ORVEL_SERVICE_COMMAND_H

#include <optional>

#include "service/text.h"

/// @file
/// The form of a command: an application's name, a token between double colons, a payload, with
/// nothing between them.

namespace Orvel::Service {

namespace Tokens {

inline constexpr WideStringView kConnect = u"::CONNECT_APP::";
inline constexpr WideStringView kRegister = u"::REGISTER_DATACLASS::";
inline constexpr WideStringView kCollect = u"::COLLECT_DATACLASS::";
inline constexpr WideStringView kGetConsent = u"::GET_CONSENT::";
inline constexpr WideStringView kSetConsent = u"::SET_CONSENT::";
inline constexpr WideStringView kGetPrivacyDocuments = u"::GET_PRIVACY_DOCUMENTS::";
inline constexpr WideStringView kAcknowledged = u"::ACK::";
inline constexpr WideStringView kSuccess = u"::SUCCESS::";
inline constexpr WideStringView kConsentRecord = u"::CONSENT_RECORD::";
inline constexpr WideStringView kPrivacyDocuments = u"::PRIVACY_DOCUMENTS::";
/// Stands in the reply to a text that holds no token at all.
inline constexpr WideStringView kNone = u"::UNKNOWN::";

}  // namespace Tokens

/// The three parts of a command; they borrow from its text.
struct Command {
    WideStringView application;
    WideStringView token;
    WideStringView payload;
};

/// Takes a command apart. An application's name may hold anything, colons and tokens too, so the
/// name of the connection, when it is known, is matched whole before anything is searched for.
/// @param connected the name that the connection's handshake gave; empty before it.
/// @return nothing when the text holds no token.
std::optional<Command> splitCommand(WideStringView text, WideStringView connected);

}  // namespace Orvel::Service

#endif
