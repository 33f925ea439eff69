#ifndef ORVEL_RELAY_CLIENT_FAULTS_H
#define ORVEL_RELAY_CLIENT_FAULTS_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tests/relay/scripted_server.h"

/// @file
/// What may go wrong with a server, and what it costs a client: every fault with its status and
/// with the client's time that passes before the client knows. Shared by the tests of the client
/// and of the library above it.

namespace Orvel::Relay::Testing {

/// An answer that is due.
struct DueAnswer {
    std::uint32_t id = 0;
    /// The frame that it should be.
    std::string frame;
};

/// What a server may do in place of an answer, after it has received what it should answer.
struct AnswerFault {
    const char* name;
    std::function<void(ScriptedServer&, const DueAnswer&)> inject;
    std::int32_t status;
    std::chrono::milliseconds cost;
};

/// The faults of the answer to a greeting.
std::vector<AnswerFault> greetingFaults();

/// The faults of the answer to a command, whose text is not empty.
std::vector<AnswerFault> replyFaults();

/// Why a client may not reach a server at all.
struct ConnectFault {
    const char* name;
    /// Prepares a server that listens. @return where the client is to look.
    std::function<std::vector<std::string>(ScriptedServer&)> inject;
    std::int32_t status;
    std::chrono::milliseconds cost;
};

/// Those that need neither another user nor a shortage of the whole process.
std::vector<ConnectFault> connectFaults();

}  // namespace Orvel::Relay::Testing

#endif
