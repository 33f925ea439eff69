#include "tests/relay/client_faults.h"

#include <iterator>
#include <utility>

#include "orvel/relay/rpc_client.h"
#include "tests/relay/frame_bytes.h"

namespace Orvel::Relay::Testing {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr milliseconds kAtOnce{0};

// Where a header has what.
constexpr std::size_t kMagic = 0;
constexpr std::size_t kVersion = 4;
constexpr std::size_t kType = 5;
constexpr std::size_t kHeaderLength = 6;
constexpr std::size_t kId = 8;
constexpr std::size_t kTargetLength = 16;
constexpr std::size_t kFlags = 20;
constexpr std::size_t kBodyLength = 24;

constexpr std::uint32_t kServersOwn = 50;

// The right answer, but for one byte of its header.
AnswerFault malformed(const char* name, std::size_t at, unsigned char value) {
    return {name,
            [at, value](ScriptedServer& server, const DueAnswer& due) {
                server.send(with(due.frame, at, value));
            },
            Status::kProtocolError, kAtOnce};
}

std::string withoutItsEnd(const DueAnswer& due) {
    return due.frame.substr(0, due.frame.size() - 1);
}

std::vector<AnswerFault> faultsOfTime() {
    return {
        {"a silent server", [](ScriptedServer&, const DueAnswer&) {}, Status::kTimeout,
         seconds(10)},
        {"a server that stops in mid-answer",
         [](ScriptedServer& server, const DueAnswer& due) { server.send(withoutItsEnd(due)); },
         Status::kTimeout, seconds(10)},
        {"a trickle",
         [](ScriptedServer& server, const DueAnswer&) {
             server.forever().pause(seconds(9)).send("O");
         },
         Status::kTimeout, seconds(60)},
        {"endless progress",
         [](ScriptedServer& server, const DueAnswer& due) {
             server.forever().pause(seconds(2)).send(progressFrame(due.id));
         },
         Status::kTimeout, hours(1)},
    };
}

std::vector<AnswerFault> faultsOfTheConnection() {
    return {
        {"a connection closed in place of an answer",
         [](ScriptedServer& server, const DueAnswer&) { server.close(); }, Status::kConnectionLost,
         kAtOnce},
        {"a connection closed in mid-answer",
         [](ScriptedServer& server, const DueAnswer& due) {
             server.send(withoutItsEnd(due)).close();
         },
         Status::kConnectionLost, kAtOnce},
        {"a connection closed in the midst of progress",
         [](ScriptedServer& server, const DueAnswer& due) {
             server.send(progressFrame(due.id)).close();
         },
         Status::kConnectionLost, kAtOnce},
    };
}

std::vector<AnswerFault> faultsOfFrames() {
    return {
        malformed("a wrong magic", kMagic, 'X'),
        malformed("a wrong version", kVersion, 2),
        malformed("an unknown type", kType, 7),
        malformed("a frame that clients send", kType, 3),
        malformed("a zero header length", kHeaderLength, 0),
        malformed("another header length", kHeaderLength, 40),
        malformed("a wrong id", kId, 0x77),
        malformed("a flag", kFlags, 1),
        malformed("a target", kTargetLength, 2),
        malformed("an odd length", kBodyLength, 1),
        malformed("an oversized length", kBodyLength + 7, 0x7F),
        {"zeroes",
         [](ScriptedServer& server, const DueAnswer&) { server.send(std::string(64, '\0')); },
         Status::kProtocolError, kAtOnce},
        {"an error frame without an error",
         [](ScriptedServer& server, const DueAnswer& due) { server.send(errorFrame(due.id, 0)); },
         Status::kProtocolError, kAtOnce},
        {"an error frame",
         [](ScriptedServer& server, const DueAnswer& due) {
             server.send(errorFrame(due.id, kServersOwn));
         },
         static_cast<std::int32_t>(kServersOwn), kAtOnce},
    };
}

// Its length is less than 128 code units, so that it stands in one byte.
std::string promisingMore(const DueAnswer& due) {
    const auto length = static_cast<unsigned char>(due.frame[kBodyLength]);
    return with(due.frame, kBodyLength, static_cast<unsigned char>(length + 2));
}

std::vector<AnswerFault> faultsOfReplies() {
    return {
        {"a reply shorter than its length",
         [](ScriptedServer& server, const DueAnswer& due) {
             server.send(promisingMore(due)).close();
         },
         Status::kConnectionLost, kAtOnce},
        {"a reply shorter than its length, and silence",
         [](ScriptedServer& server, const DueAnswer& due) { server.send(promisingMore(due)); },
         Status::kTimeout, seconds(10)},
        {"a reply whose length lies by a gibibyte",
         [](ScriptedServer& server, const DueAnswer& due) {
             server.send(with(with(due.frame, kBodyLength, 0), kBodyLength + 3, 0x40)).close();
         },
         Status::kConnectionLost, kAtOnce},
    };
}

std::vector<AnswerFault> joined(std::vector<std::vector<AnswerFault>> parts) {
    std::vector<AnswerFault> all;
    for (std::vector<AnswerFault>& part : parts) {
        std::move(part.begin(), part.end(), std::back_inserter(all));
    }
    return all;
}

}  // namespace

std::vector<AnswerFault> greetingFaults() {
    return joined({faultsOfTime(), faultsOfTheConnection(), faultsOfFrames()});
}

std::vector<AnswerFault> replyFaults() {
    return joined({faultsOfTime(), faultsOfTheConnection(), faultsOfFrames(), faultsOfReplies()});
}

std::vector<ConnectFault> connectFaults() {
    using Paths = std::vector<std::string>;
    return {
        {"nobody there", [](ScriptedServer& server) { return Paths{server.pathBeside("nothing")}; },
         Status::kServerUnavailable, kAtOnce},
        {"nobody listening",
         [](ScriptedServer& server) {
             server.stopListening();
             return Paths{server.path()};
         },
         Status::kServerUnavailable, kAtOnce},
        {"a path that is too long",
         [](ScriptedServer& server) { return Paths{server.pathBeside(std::string(300, 'x'))}; },
         Status::kServerUnavailable, kAtOnce},
        {"a full backlog",
         [](ScriptedServer& server) {
             server.fillQueue();
             return Paths{server.path()};
         },
         Status::kTimeout, seconds(2)},
    };
}

}  // namespace Orvel::Relay::Testing
