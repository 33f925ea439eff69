#ifndef ORVEL_ANALYTICS_TESTING_SCRIPTED_ENDPOINT_H
#define ORVEL_ANALYTICS_TESTING_SCRIPTED_ENDPOINT_H

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "orvel/analytics/testing/export.h"
#include "orvel/analytics/text.h"

/// @file
/// The raw road: an RPC client whose every status and every reply a test writes down. A test of an
/// application is better served by `Service`, which knows what commands mean.

namespace Orvel::Analytics::Testing {

/// One `ExecuteCommand` of an RPC client as it arrived.
struct Executed {
    /// The part of the server that the command was for.
    WideString target;
    /// The number that came with the command.
    std::uint32_t argument = 0;
    /// The text of the command.
    WideString command;
};

/// The outcome of one `ExecuteCommand`.
struct Execution {
    /// What the call returns.
    std::int32_t status = 0;
    /// What the call writes; without a reply, the caller's text stays as it was.
    std::optional<WideString> reply;
};

/// The endpoint that all RPC clients of the process reach as long as it lives; of several, and of
/// `Service`s, the one that was made last counts. A test writes down what is answered and reads
/// what was asked.
///
/// Threads: used by one thread at a time, the clients included. Clients must not outlive it.
struct ORVEL_ANALYTICS_TESTING_EXPORT ScriptedEndpoint {
    /// Every connection is opened, every greeting acknowledged, and every other command succeeds.
    ScriptedEndpoint();
    ScriptedEndpoint(const ScriptedEndpoint&) = delete;
    ScriptedEndpoint& operator=(const ScriptedEndpoint&) = delete;
    /// The endpoint made before this one, if there is one, counts again.
    ~ScriptedEndpoint();

    /// The answers to the commands, greetings included, in their order: the first one answers the
    /// first element of `executed`. For a command behind the last one, `onUnscripted` answers.
    std::vector<Execution> executions;
    /// What every `OpenConnection` returns.
    std::int32_t openStatus = 0;
    /// What every `CloseConnection` returns.
    std::int32_t closeStatus = 0;
    /// Whether there is no client, but a null pointer, for whoever asks for one.
    bool yieldsNoClient = false;

    /// Called when a client is asked for. It may throw.
    std::function<void()> onClient;
    /// Called with each command before it is answered. It may throw, and may change this object.
    std::function<void(const Executed&)> onExecute;
    /// Answers the commands for which `executions` has nothing; when it is null, `usualAnswer`
    /// does. It may throw.
    std::function<Execution(const Executed&)> onUnscripted;

    /// The endpoint of every client that was asked for.
    std::vector<WideString> endpoints;
    /// The argument of every `OpenConnection`.
    std::vector<WideString> openArguments;
    /// Every `ExecuteCommand`.
    std::vector<Executed> executed;
    /// How many times `CloseConnection` was called.
    int closed = 0;
    /// How many clients have not been destroyed.
    int clientsAlive = 0;

    /// Acknowledges a greeting, and says of every other command that it succeeded.
    [[nodiscard]] static Execution usualAnswer(const Executed& executed);

  private:
    class Clients;
    std::unique_ptr<Clients> clients_;
};

}  // namespace Orvel::Analytics::Testing

#endif
