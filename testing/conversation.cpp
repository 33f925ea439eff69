#include "testing/conversation.h"

#include <cstdint>
#include <optional>

#include "orvel/analytics/testing/service.h"
#include "testing/documents.h"

namespace Orvel::Analytics::Testing {
namespace {

/// What the RPC client gives for a step.
struct Outcome {
    std::int32_t status = 0;
    std::optional<WideString> reply;
    /// How long it would have waited.
    std::chrono::milliseconds wait{0};
};

/// What a step comes to, but for its reply when it succeeds.
Outcome outcomeOf(const Answer& answer, Step step) {
    if (answer.kind() == Answer::Kind::Silence) {
        return {Relay::Status::kTimeout,
                {},
                step == Step::Connect ? kConnectDeadline : kAnswerDeadline};
    }
    return {answer.status(), {}};
}

WideString plainReply(const Request& request, WideStringView token) {
    WideString reply(request.application);
    reply += token;
    return reply;
}

/// Does what a command asks for. The state is locked.
/// @return the reply.
WideString perform(const Request& request, ConsentObject& consent) {
    switch (request.step) {
        case Step::Greet:
            return plainReply(request, Token::kAcknowledged);
        case Step::GetConsent:
            return plainReply(request, Token::kConsentRecord) + consentDocument(consent);
        case Step::GetDocumentURLs:
            return plainReply(request, Token::kDocuments) +
                   addressesDocument(consent.privacyDocuments);
        case Step::SetConsent:
            consent.processingPermissions = readPermissions(request.document);
            consent.consentSource = request.application;
            break;
        default:
            break;
    }
    return plainReply(request, Token::kSuccess);
}

/// The answer that the consent record demands in place of a success.
Answer judge(Step step, Answer answer, const ConsentObject& consent) {
    using Emitters::AnalyticsResult;
    if (answer.kind() != Answer::Kind::Success) {
        return answer;
    }
    if (step == Step::SendEvents && !consent.processData) {
        return Answer::error(AnalyticsResult::NotRightAccessToWrite);
    }
    if (step == Step::SetConsent && consent.managed) {
        return Answer::error(AnalyticsResult::UnableToSetConsentForManagedDevice);
    }
    return answer;
}

class ServiceClient final : public Relay::Client::Core::RpcClient {
  public:
    explicit ServiceClient(std::shared_ptr<ServiceState> state) : state_(std::move(state)) {}

    std::int32_t OpenConnection(WideString /*argument*/) override {
        const Outcome outcome = connect();
        wait(outcome.wait);
        isOpen_ = outcome.status == 0;
        application_.clear();
        return outcome.status;
    }

    std::int32_t ExecuteCommand(WideString /*target*/, std::uint32_t /*argument*/,
                                WideString command, WideString& reply) override {
        if (!isOpen_) {
            return Relay::Status::kConnectionLost;
        }
        Outcome outcome = answer(command);
        wait(outcome.wait);
        isOpen_ = outcome.status == 0;
        if (outcome.reply) {
            reply = std::move(*outcome.reply);
        }
        return outcome.status;
    }

    std::int32_t CloseConnection() override {
        return std::exchange(isOpen_, false) ? Relay::Status::kSuccess
                                             : Relay::Status::kConnectionLost;
    }

  private:
    Outcome connect() {
        const std::lock_guard lock(state_->mutex);
        ++state_->connections;
        return outcomeOf(state_->script.take(Step::Connect), Step::Connect);
    }

    Outcome answer(const WideString& command) {
        const std::lock_guard lock(state_->mutex);
        const auto request = readCommand(command, application_);
        if (!request) {
            return {0, errorReply(request, ORVEL_TEXT("MalformedOrUnknownMessage"))};
        }
        const Answer verdict =
            judge(request->step, state_->script.take(request->step), state_->consent);
        Outcome outcome = outcomeOf(verdict, request->step);
        switch (verdict.kind()) {
            case Answer::Kind::Success:
                outcome.reply = perform(*request, state_->consent);
                break;
            case Answer::Kind::Error:
                outcome.reply = errorReply(request, verdict.text());
                break;
            case Answer::Kind::Text:
                outcome.reply = verdict.text();
                break;
            default:
                break;
        }
        keep(*request, command, verdict.kind() == Answer::Kind::Success);
        return outcome;
    }

    void keep(const Request& request, const WideString& command, bool accepted) {
        if (request.step == Step::Greet) {
            application_ = request.application;
            return;
        }
        state_->arrived.push_back({request.step, WideString(request.application),
                                   WideString(request.document), command, accepted});
    }

    /// Moves the fake clock.
    void wait(std::chrono::milliseconds time) {
        if (time.count() == 0) {
            return;
        }
        std::function<void(std::chrono::milliseconds)> onWait;
        {
            const std::lock_guard lock(state_->mutex);
            state_->waited += time;
            onWait = state_->onWait;
        }
        // Not called under the lock, as it may call the service.
        if (onWait) {
            onWait(time);
        }
    }

    std::shared_ptr<ServiceState> state_;
    bool isOpen_ = false;
    // That has greeted.
    WideString application_;
};

}  // namespace

std::shared_ptr<Relay::Client::Core::RpcClient> ServiceEndpoint::newClient(
    WideString /*endpoint*/) {
    return std::make_shared<ServiceClient>(state_);
}

}  // namespace Orvel::Analytics::Testing
