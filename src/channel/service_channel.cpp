#include "channel/service_channel.h"

#include <cstdint>
#include <optional>
#include <utility>

#include "channel/reply.h"
#include "channel/tokens.h"

namespace Orvel::Analytics::Channel {
namespace {

using Emitters::AnalyticsResult;

/// Closes the connection on every way out.
class OpenConnection {
  public:
    explicit OpenConnection(Relay::Client::Core::RpcClient& client) : client_(client) {}
    OpenConnection(const OpenConnection&) = delete;
    OpenConnection& operator=(const OpenConnection&) = delete;
    ~OpenConnection() {
        try {
            client_.CloseConnection();
        } catch (...) {
            // A client that cannot even close must not end the process of the application.
        }
    }

  private:
    Relay::Client::Core::RpcClient& client_;
};

/// What became of one conversation with the service.
struct Conversation {
    enum class Stage { NotConnected, NoHandshake, CommandFailed, Answered };

    Stage stage = Stage::NotConnected;
    /// Of a connection that could not be opened; nothing when there is no client.
    std::optional<std::int32_t> openStatus;
    /// The last reply written, that of the handshake when the command gave none.
    WideString reply;
};

Conversation converse(ServiceChannel& channel, WideStringView appName, WideStringView token,
                      WideString payload) {
    using Stage = Conversation::Stage;
    Conversation conversation;
    if (!channel.client) {
        return conversation;
    }
    conversation.openStatus = channel.client->OpenConnection({});
    if (*conversation.openStatus != 0) {
        return conversation;
    }
    const OpenConnection connection(*channel.client);
    const auto execute = [&](WideString command) {
        return channel.client->ExecuteCommand(channel.commandTarget, 0, std::move(command),
                                              conversation.reply);
    };
    WideString acknowledgement(appName);
    acknowledgement.append(Token::kAck);
    WideString handshake(appName);
    handshake.append(Token::kConnectApp);
    if (execute(std::move(handshake)) != 0 || conversation.reply != acknowledgement) {
        conversation.stage = Stage::NoHandshake;
        return conversation;
    }
    WideString command;
    command.reserve(appName.size() + token.size() + payload.size());
    command.append(appName).append(token).append(payload);
    // A batch may be large, and the client has no use for its document beside the command.
    payload = WideString();
    const std::int32_t status = execute(std::move(command));
    conversation.stage = status == 0 ? Stage::Answered : Stage::CommandFailed;
    return conversation;
}

/// The result that most commands draw from their conversation.
AnalyticsResult resultOf(const Conversation& conversation) {
    switch (conversation.stage) {
        case Conversation::Stage::NoHandshake:
        case Conversation::Stage::Answered:
            return parseServiceReply(conversation.reply);
        default:
            return AnalyticsResult::GenericError;
    }
}

}  // namespace

ServiceChannel getServiceClient() {
    ServiceChannel channel;
    channel.endpointName = ORVEL_TEXT("OrvelAnalyticsRpcEndpoint");
    channel.commandTarget = ORVEL_TEXT("TA");
    channel.client = Relay::Client::Native::RpcClient::GetClientForEndpoint(channel.endpointName);
    return channel;
}

AnalyticsResult registerCommand(ServiceChannel& channel, WideStringView appName,
                                WideString document) {
    const Conversation conversation =
        converse(channel, appName, Token::kRegisterDataclass, std::move(document));
    if (conversation.stage == Conversation::Stage::NotConnected) {
        if (conversation.openStatus == Relay::Status::kServerUnavailable) {
            return AnalyticsResult::ServiceUnavailable;
        }
        if (conversation.openStatus == Relay::Status::kAccessDenied) {
            return AnalyticsResult::AccessDenied;
        }
    }
    return resultOf(conversation);
}

AnalyticsResult collectCommand(ServiceChannel& channel, WideStringView appName,
                               WideString document) {
    const Conversation conversation =
        converse(channel, appName, Token::kCollectDataclass, std::move(document));
    return conversation.stage == Conversation::Stage::NoHandshake ? AnalyticsResult::GenericError
                                                                  : resultOf(conversation);
}

AnalyticsResult getConsentCommand(ServiceChannel& channel, WideStringView appName,
                                  WideString& consent) {
    Conversation conversation = converse(channel, appName, Token::kGetConsent, {});
    // The reply is judged whole, before the record is cut out of it.
    const AnalyticsResult result = resultOf(conversation);
    if (conversation.stage == Conversation::Stage::Answered ||
        conversation.stage == Conversation::Stage::CommandFailed) {
        const std::size_t record = conversation.reply.find(Token::kConsentRecord);
        if (record != WideString::npos) {
            conversation.reply.erase(0, record + Token::kConsentRecord.size());
        }
        consent = std::move(conversation.reply);
    }
    return result;
}

AnalyticsResult setConsentCommand(ServiceChannel& channel, WideStringView appName,
                                  WideString permissions) {
    return resultOf(converse(channel, appName, Token::kSetConsent, std::move(permissions)));
}

AnalyticsResult getPrivacyDocumentsCommand(ServiceChannel& channel, WideStringView appName,
                                           WideString& documents) {
    Conversation conversation = converse(channel, appName, Token::kGetPrivacyDocuments, {});
    switch (conversation.stage) {
        case Conversation::Stage::Answered: {
            WideString mark(appName);
            mark.append(Token::kPrivacyDocuments);
            const std::size_t at = conversation.reply.find(mark);
            if (at != WideString::npos) {
                conversation.reply.erase(at, mark.size());
            }
            documents = std::move(conversation.reply);
            return AnalyticsResult::Success;
        }
        case Conversation::Stage::CommandFailed:
            return parseServiceReply(conversation.reply);
        default:
            return resultOf(conversation);
    }
}

}  // namespace Orvel::Analytics::Channel
