#include "service/conversation.h"

#include <algorithm>
#include <utility>

#include "service/batch.h"
#include "service/calendar.h"
#include "service/consent_record.h"
#include "service/permissions.h"
#include "service/registration.h"
#include "service/reply.h"

namespace Orvel::Service {

namespace {

std::string payloadText(WideStringView payload) {
    auto text = toUtf8(payload);
    if (!text) {
        throw Refusal(ErrorNames::kMalformedJson);
    }
    return std::move(*text);
}

void expectNoPayload(const Command& command) {
    if (!command.payload.empty()) {
        throw Refusal(ErrorNames::kMalformedOrUnknownMessage);
    }
}

/// How many events a batch may have: the reply, which may be no longer than a command, has an error
/// for each bad one.
std::size_t largestBatch(const Limits& limits) {
    constexpr std::int64_t kBytesOfAnError = 128;
    return static_cast<std::size_t>(
        std::min(limits.batchEvents, limits.commandBytes / kBytesOfAnError));
}

}  // namespace

Relay::Server::Answer Conversation::execute(const WideString& target, std::uint32_t,
                                            WideString command) {
    if (target != kTarget) {
        return {kUnknownTarget, {}};
    }
    return {0, answer(command)};
}

WideString Conversation::answer(WideStringView text) {
    const auto command = splitCommand(text, name_);
    if (!command) {
        return errorReply(name_, Tokens::kNone, {ErrorNames::kMalformedOrUnknownMessage});
    }
    if (command->token == Tokens::kConnect) {
        return connect(*command);
    }
    const auto refuse = [&command](ErrorName error) {
        return errorReply(command->application, command->token, {error});
    };
    if (name_.empty()) {
        return refuse(ErrorNames::kApplicationIsNotConnected);
    }
    if (command->application != name_) {
        return refuse(ErrorNames::kApplicationPipeNotMatch);
    }
    try {
        return serve(*command);
    } catch (const Refusal& refusal) {
        return refuse(refusal.name());
    } catch (const SqlError& error) {
        logStorageError(error.what());
        return refuse(ErrorNames::kGenericError);
    } catch (const std::exception& error) {
        // Whatever else goes wrong concerns this command alone.
        log_.write("command_failed", {{"application", application_}, {"reason", error.what()}});
        return refuse(ErrorNames::kGenericError);
    }
}

WideString Conversation::connect(const Command& command) {
    const auto refuse = [&command](ErrorName error) {
        return errorReply(command.application, Tokens::kAcknowledged, {error});
    };
    auto application = toUtf8(command.application);
    if (!application || application->empty() || !command.payload.empty()) {
        return refuse(ErrorNames::kMalformedOrUnknownMessage);
    }
    if (!name_.empty() && command.application != name_) {
        return refuse(ErrorNames::kApplicationPipeNotMatch);
    }
    if (!settings_.access.mayConnect(*application, peer_.userId)) {
        return refuse(ErrorNames::kApplicationIsNotAuthorizedToConnect);
    }
    name_ = command.application;
    application_ = std::move(*application);
    return plainReply(name_, Tokens::kAcknowledged);
}

WideString Conversation::serve(const Command& command) {
    // What is stored is acknowledged with what was made before.
    WideString reply = plainReply(name_, Tokens::kSuccess);
    if (command.token == Tokens::kRegister) {
        registerClass(command.payload);
    } else if (command.token == Tokens::kCollect) {
        return collect(command);
    } else if (command.token == Tokens::kGetConsent) {
        expectNoPayload(command);
        return jsonReply(name_, Tokens::kConsentRecord,
                         consentRecordText(settings_, store_.consent()));
    } else if (command.token == Tokens::kSetConsent) {
        setConsent(command.payload);
    } else if (command.token == Tokens::kGetPrivacyDocuments) {
        expectNoPayload(command);
        return jsonReply(name_, Tokens::kPrivacyDocuments,
                         privacyDocumentsText(settings_.privacyAddresses));
    } else {
        throw Refusal(ErrorNames::kMalformedOrUnknownMessage);
    }
    return reply;
}

void Conversation::registerClass(WideStringView payload) {
    const DataClass dataClass = readRegistration(payloadText(payload));
    if (!settings_.access.mayUse(application_, dataClass.id)) {
        throw Refusal(ErrorNames::kDataclassIsNotAuthorizedForThisApplication);
    }
    if (std::cmp_greater(dataClass.fields.size(), settings_.limits.classFields)) {
        throw Refusal(ErrorNames::kQuotaExceeded);
    }
    try {
        if (store_.registerClass(application_, dataClass) == Registered::kConflict) {
            throw Refusal(ErrorNames::kInvalidDataclassRegistration);
        }
    } catch (const SqlError& error) {
        logStorageError(error.what());
        throw Refusal(ErrorNames::kErrorIODataclassRegistration);
    }
}

WideString Conversation::collect(const Command& command) {
    if (!settings_.processData) {
        throw Refusal(ErrorNames::kNotRightAccessToWrite);
    }
    const std::string document = payloadText(command.payload);
    const Batch batch(document);
    const Session& session = batch.session();
    if (session.application != application_) {
        throw Refusal(ErrorNames::kApplicationPipeNotMatch);
    }
    if (!session.started.empty() && !isCompactTimestamp(session.started)) {
        throw Refusal(ErrorNames::kInvalidDatetimeFormat);
    }
    if (batch.size() > largestBatch(settings_.limits)) {
        throw Refusal(ErrorNames::kQuotaExceeded);
    }
    const auto events = batch.judge(
        [this](std::string_view identifier) {
            return store_.latestClass(application_, identifier);
        },
        [this](std::string_view identifier) {
            return settings_.access.mayUse(application_, identifier);
        });
    std::vector<ErrorName> errors;
    for (const JudgedEvent& event : events) {
        if (!event.error.empty()) {
            errors.push_back(event.error);
        }
    }
    WideString reply = errors.empty() ? plainReply(name_, Tokens::kSuccess)
                                      : errorReply(name_, command.token, errors);
    store_.addBatch(session, peer_.userId, events);
    return reply;
}

void Conversation::setConsent(WideStringView payload) {
    if (settings_.managed) {
        throw Refusal(ErrorNames::kUnableToSetConsentForManagedDevice);
    }
    store_.setConsent(application_, peer_.userId, readPermissions(payloadText(payload)));
}

void Conversation::logStorageError(const char* reason) {
    log_.write("storage_error", {{"application", application_}, {"reason", reason}});
}

}  // namespace Orvel::Service
