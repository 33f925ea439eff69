#include "testing/protocol.h"

#include <algorithm>
#include <array>

namespace Orvel::Analytics::Testing {
namespace {

struct Command {
    Step step;
    WideStringView token;
};

constexpr std::array kCommands = {
    Command{Step::Greet, Token::kConnect},
    Command{Step::RegisterDataClass, Token::kRegister},
    Command{Step::SendEvents, Token::kCollect},
    Command{Step::GetConsent, Token::kGetConsent},
    Command{Step::SetConsent, Token::kSetConsent},
    Command{Step::GetDocumentURLs, Token::kGetDocuments},
};

/// What stands behind the application's name in the reply that reports an error.
WideStringView tokenOfError(const std::optional<Request>& request) {
    if (!request) {
        return Token::kNone;
    }
    if (request->step == Step::Greet) {
        return Token::kAcknowledged;
    }
    return std::find_if(kCommands.begin(), kCommands.end(),
                        [&](const Command& command) { return command.step == request->step; })
        ->token;
}

}  // namespace

std::optional<Request> readCommand(WideStringView command, WideStringView greeted) {
    if (greeted.empty()) {
        if (!command.ends_with(Token::kConnect)) {
            return std::nullopt;
        }
        command.remove_suffix(Token::kConnect.size());
        return Request{Step::Greet, command, {}};
    }
    if (!command.starts_with(greeted)) {
        return std::nullopt;
    }
    const WideStringView application = command.substr(0, greeted.size());
    command.remove_prefix(greeted.size());
    for (const auto& [step, token] : kCommands) {
        if (command.starts_with(token)) {
            return Request{step, application, command.substr(token.size())};
        }
    }
    return std::nullopt;
}

WideString errorReply(const std::optional<Request>& request, WideStringView name) {
    WideString reply(request ? request->application : WideStringView());
    reply += tokenOfError(request);
    reply += ORVEL_TEXT(R"({"Results":["ErrorCode :)");
    reply += name;
    reply += ORVEL_TEXT(R"("]})");
    return reply;
}

}  // namespace Orvel::Analytics::Testing
