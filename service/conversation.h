#ifndef ORVEL_SERVICE_CONVERSATION_H
#define ORVEL_SERVICE_CONVERSATION_H

#include <cstdint>
#include <string>

#include "orvel/relay/server.h"
#include "service/command.h"
#include "service/log.h"
#include "service/settings.h"
#include "service/store.h"

namespace Orvel::Service {

/// The status for a command that is meant for another target than `kTarget`: the interface is
/// unknown (RPC_S_UNKNOWN_IF).
inline constexpr std::int32_t kUnknownTarget = 1717;
/// The one target that the service has.
inline constexpr WideStringView kTarget = u"TA";

/// What the service and one client say to each other: a handshake that names the application, then
/// commands of that application.
class Conversation : public Relay::Server::Conversation {
  public:
    /// The store, the settings and the log must outlive the conversation.
    Conversation(Store& store, const Settings& settings, Log& log, const Relay::Server::Peer& peer)
        : store_(store), settings_(settings), log_(log), peer_(peer) {}

    /// Answers a command of any kind, a senseless one too. The number is not looked at.
    Relay::Server::Answer execute(const WideString& target, std::uint32_t argument,
                                  WideString command) override;

  private:
    WideString answer(WideStringView text);
    WideString connect(const Command& command);
    WideString serve(const Command& command);
    void registerClass(WideStringView payload);
    WideString collect(const Command& command);
    void setConsent(WideStringView payload);
    void logStorageError(const char* reason);

    Store& store_;
    const Settings& settings_;
    Log& log_;
    Relay::Server::Peer peer_;
    /// The application's name as the handshake gave it, and in UTF-8; empty before that.
    WideString name_;
    std::string application_;
};

}  // namespace Orvel::Service

#endif
