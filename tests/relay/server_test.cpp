#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

#include "tests/relay/frame_bytes.h"
#include "tests/relay/raw_client.h"
#include "tests/relay/running_server.h"

/// The server's side of a conversation, with clients that keep to the protocol and with others.

namespace Orvel::Relay::Testing {
namespace {

using std::chrono::milliseconds;
using std::chrono::minutes;

// Something that one thread waits for and another lets happen.
class Gate {
  public:
    void open() {
        const std::lock_guard lock(mutex_);
        open_ = true;
        opened_.notify_all();
    }

    void wait() {
        std::unique_lock lock(mutex_);
        // Far longer than any test needs: a failure must not hang it.
        if (!opened_.wait_for(lock, std::chrono::seconds(30), [this] { return open_; })) {
            ADD_FAILURE() << "what was waited for did not happen";
        }
    }

  private:
    std::mutex mutex_;
    std::condition_variable opened_;
    bool open_ = false;
};

// A factory whose conversations echo, and open a gate when they end.
Server::ConversationFactory opensWhenEnded(Gate& gate) {
    return [&gate](const Server::Peer&) {
        return std::make_unique<FunctionConversation>(echo, [&gate] { gate.open(); });
    };
}

std::string greet(RawClient& client) {
    client.send(helloFrame());
    return client.receive(Wire::kHeaderSize);
}

// A client that has been greeted. With a short deadline for that, not every one is.
std::unique_ptr<RawClient> greetedClient(const std::string& path) {
    for (;;) {
        auto client = std::make_unique<RawClient>(path);
        if (!greet(*client).empty()) {
            return client;
        }
    }
}

// Deadlines that end no test by themselves.
Server::Options patient() {
    Server::Options options;
    options.idleDeadline = options.frameDeadline = options.wholeFrameDeadline = minutes(10);
    options.progressInterval = minutes(10);
    return options;
}

TEST(Server, SpeaksExactlyTheFramesOfTheProtocol) {
    Server::Options options = patient();
    options.largestBody = 1000;
    RunningServer server(
        always([](const WideString& target, std::uint32_t argument, const WideString&) {
            return Server::Answer{static_cast<std::int32_t>(argument), target};
        }),
        options);
    RawClient client(server.path());
    EXPECT_EQ(greet(client), welcomeFrame(1000));
    client.send(frame(Wire::FrameType::kCommand, 1, 0, u"TA", u"x"));
    const std::string reply = replyFrame(1, u"TA");
    EXPECT_EQ(client.receive(reply.size()), reply);
    client.send(frame(Wire::FrameType::kCommand, 2, 50, u"TA", u"x"));
    EXPECT_EQ(client.receive(Wire::kHeaderSize), errorFrame(2, 50));
}

TEST(Server, ReadsCommandsThatComeByteByByteOrSeveralAtOnce) {
    RunningServer server(always(echo), patient());
    RawClient client(server.path());
    for (const char byte : helloFrame() + commandFrame(1, u"one")) {
        client.send(std::string(1, byte));
    }
    client.send(commandFrame(2, u"two") + commandFrame(3, u"") +
                commandFrame(4, WideString(10'000, u'4')) + commandFrame(5, u"five"));
    const std::string answers = welcomeFrame() + replyFrame(1, u"one") + replyFrame(2, u"two") +
                                replyFrame(3, u"") + replyFrame(4, WideString(10'000, u'4')) +
                                replyFrame(5, u"five");
    EXPECT_EQ(client.receive(answers.size()), answers);
}

TEST(Server, TellsTheConversationWhoIsCalling) {
    Server::Peer caller;
    RunningServer server([&](const Server::Peer& peer) {
        caller = peer;
        return std::make_unique<FunctionConversation>(echo);
    });
    const auto client = server.makeClient();
    ASSERT_EQ(client->OpenConnection(u"argument"), Status::kSuccess);
    server.finish();
    EXPECT_EQ(caller.processId, ::getpid());
    EXPECT_EQ(caller.userId, ::geteuid());
    EXPECT_EQ(caller.groupId, ::getegid());
    EXPECT_EQ(caller.argument, u"argument");
}

TEST(Server, RefusesAClientForWhomThereIsNoConversation) {
    RunningServer server([](const Server::Peer&) { return nullptr; });
    EXPECT_EQ(server.makeClient()->OpenConnection(u""), Status::kAccessDenied);
}

TEST(Server, AThrowingFactoryEndsThatConnectionOnly) {
    std::atomic<bool> throws = true;
    RunningServer server([&](const Server::Peer&) {
        if (throws) {
            throw std::runtime_error("no conversation");
        }
        return std::make_unique<FunctionConversation>(echo);
    });
    EXPECT_EQ(server.makeClient()->OpenConnection(u""), Status::kConnectionLost);
    throws = false;
    EXPECT_EQ(server.makeClient()->OpenConnection(u""), Status::kSuccess);
}

TEST(Server, AThrowingConversationEndsItsConnectionOnly) {
    RunningServer server(
        always([](const WideString&, std::uint32_t, const WideString& command) -> Server::Answer {
            if (command == u"throw") {
                throw std::runtime_error("of the conversation");
            }
            if (command == u"throw what is no exception") {
                throw 5;
            }
            return {0, command};
        }));
    const auto calm = server.makeClient();
    ASSERT_EQ(calm->OpenConnection(u""), Status::kSuccess);
    WideString reply;
    for (const char16_t* command : {u"throw", u"throw what is no exception"}) {
        const auto client = server.makeClient();
        ASSERT_EQ(client->OpenConnection(u""), Status::kSuccess);
        EXPECT_EQ(client->ExecuteCommand(u"TA", 0, command, reply), Status::kConnectionLost);
    }
    EXPECT_EQ(calm->ExecuteCommand(u"TA", 0, u"calm", reply), Status::kSuccess);
    EXPECT_EQ(reply, u"calm");
}

TEST(Server, RefusesAReplyLongerThanAnnouncedAndStaysOpen) {
    Server::Options options;
    options.largestBody = 100;
    RunningServer server(always([](const WideString&, std::uint32_t argument, const WideString&) {
                             return Server::Answer{0, WideString(argument, u'x')};
                         }),
                         options);
    const auto client = server.makeClient();
    ASSERT_EQ(client->OpenConnection(u""), Status::kSuccess);
    WideString reply;
    EXPECT_EQ(client->ExecuteCommand(u"TA", 51, u"", reply), Status::kTextTooLong);
    EXPECT_EQ(client->ExecuteCommand(u"TA", 50, u"", reply), Status::kSuccess);
    EXPECT_EQ(reply.size(), 50u);
}

TEST(Server, TellsClientsBeyondTheCapThatItIsTooBusy) {
    Gate ended;
    Server::Options options;
    options.connections = 1;
    RunningServer server(opensWhenEnded(ended), options);
    const auto first = server.makeClient();
    const auto second = server.makeClient();
    ASSERT_EQ(first->OpenConnection(u""), Status::kSuccess);
    EXPECT_EQ(second->OpenConnection(u""), Status::kServerTooBusy);
    EXPECT_EQ(first->CloseConnection(), Status::kSuccess);
    ended.wait();
    EXPECT_EQ(second->OpenConnection(u""), Status::kSuccess);
}

TEST(Server, SendsProgressWhileACommandIsBeingExecuted) {
    Gate enough;
    Server::Options options = patient();
    options.progressInterval = milliseconds(1);
    RunningServer server(always([&](const WideString&, std::uint32_t, WideString command) {
                             enough.wait();
                             return Server::Answer{0, std::move(command)};
                         }),
                         options);
    RawClient client(server.path());
    greet(client);
    client.send(commandFrame(1, u"slow"));
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(client.receive(Wire::kHeaderSize), progressFrame(1));
    }
    enough.open();
    std::string next = client.receive(Wire::kHeaderSize);
    while (next == progressFrame(1)) {
        next = client.receive(Wire::kHeaderSize);
    }
    EXPECT_EQ(next + client.receive(8), replyFrame(1, u"slow"));
}

TEST(Server, FinishesACommandWhoseClientHasGone) {
    Gate started;
    Gate finish;
    Gate ended;
    Server::Options options = patient();
    options.progressInterval = milliseconds(1);
    RunningServer server(
        [&](const Server::Peer&) {
            return std::make_unique<FunctionConversation>(
                [&](const WideString&, std::uint32_t, const WideString&) {
                    started.open();
                    finish.wait();
                    return Server::Answer();
                },
                [&] { ended.open(); });
        },
        options);
    RawClient client(server.path());
    greet(client);
    client.send(commandFrame(1, u"slow"));
    started.wait();
    client.close();
    finish.open();
    ended.wait();
}

TEST(Server, ExecutesCommandsOfSeveralConnectionsAtATime) {
    Server::Options options;
    options.workers = 3;
    Gate allThere;
    std::atomic<int> there = 0;
    RunningServer server(always([&](const WideString&, std::uint32_t, WideString command) {
                             if (++there == 3) {
                                 allThere.open();
                             }
                             allThere.wait();
                             return Server::Answer{0, std::move(command)};
                         }),
                         options);
    std::vector<std::thread> threads;
    threads.reserve(3);
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] {
            const auto client = server.makeClient();
            WideString reply;
            EXPECT_EQ(client->OpenConnection(u""), Status::kSuccess);
            EXPECT_EQ(client->ExecuteCommand(u"TA", 0, u"x", reply), Status::kSuccess);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(there, 3);
}

// Clients that break the protocol.

struct BadFrame {
    const char* name;
    std::string bytes;
};

std::string nameOf(const testing::TestParamInfo<BadFrame>& info) { return info.param.name; }

void PrintTo(const BadFrame& bad, std::ostream* to) { *to << bad.name; }

class MalformedHello : public testing::TestWithParam<BadFrame> {};

TEST_P(MalformedHello, IsAnsweredWithAProtocolErrorAndTheEnd) {
    RunningServer server(always(echo), patient());
    RawClient client(server.path());
    client.send(GetParam().bytes);
    EXPECT_EQ(client.receiveRest(), errorFrame(0, Status::kProtocolError));
    EXPECT_EQ(server.makeClient()->OpenConnection(u""), Status::kSuccess);
}

INSTANTIATE_TEST_SUITE_P(
    Frames, MalformedHello,
    testing::Values(BadFrame{"WrongMagic", with(helloFrame(), 0, 'X')},
                    BadFrame{"Text", "GET / HTTP/1.1\r\nHost: localhost\r\n\r\n"},
                    BadFrame{"WrongVersion", with(helloFrame(), 4, 2)},
                    BadFrame{"UnknownType", with(helloFrame(), 5, 99)},
                    BadFrame{"WrongHeaderLength", with(helloFrame(), 6, 64)},
                    BadFrame{"WrongId", with(helloFrame(), 8, 1)},
                    BadFrame{"Flags", with(helloFrame(), 23, 0x80)},
                    BadFrame{"OversizedArgument", with(helloFrame(), 25, 0x21)},
                    BadFrame{"Command", commandFrame(1, u"before hello")},
                    BadFrame{"Reply", replyFrame(1, u"")}),
    nameOf);

class MalformedCommand : public testing::TestWithParam<BadFrame> {};

TEST_P(MalformedCommand, IsAnsweredWithAProtocolErrorAndTheEnd) {
    Server::Options options = patient();
    options.largestBody = 100;
    RunningServer server(always(echo), options);
    RawClient client(server.path());
    ASSERT_EQ(greet(client), welcomeFrame(100));
    client.send(GetParam().bytes);
    EXPECT_EQ(client.receiveRest(), errorFrame(1, Status::kProtocolError));
}

INSTANTIATE_TEST_SUITE_P(
    Frames, MalformedCommand,
    testing::Values(BadFrame{"WrongMagic", with(commandFrame(1, u"x"), 1, 'X')},
                    BadFrame{"WrongVersion", with(commandFrame(1, u"x"), 4, 0)},
                    BadFrame{"EarlierId", with(commandFrame(1, u"x"), 8, 0)},
                    BadFrame{"LaterId", commandFrame(2, u"x")},
                    BadFrame{"OddTarget", with(commandFrame(1, u"x"), 16, 3)},
                    BadFrame{"OversizedTarget", with(commandFrame(1, u"x"), 17, 0x21)},
                    BadFrame{"OddBody", with(commandFrame(1, u"x"), 24, 1)},
                    BadFrame{"MoreThanAnnounced", commandFrame(1, WideString(51, u'x'))},
                    BadFrame{"OversizedBody", with(commandFrame(1, u"x"), 31, 0xFF)},
                    BadFrame{"SecondHello", helloFrame()}, BadFrame{"Welcome", welcomeFrame()},
                    BadFrame{"Reply", replyFrame(1, u"x")}, BadFrame{"Error", errorFrame(1, 5)},
                    BadFrame{"Progress", progressFrame(1)}),
    nameOf);

// Deadlines. They are real but short, and nothing depends on how long they really take.

TEST(Server, ClosesAConnectionOnWhichNothingArrives) {
    Server::Options options = patient();
    options.idleDeadline = milliseconds(5);
    RunningServer server(always(echo), options);
    RawClient client(server.path());
    ASSERT_EQ(greet(client), welcomeFrame());
    EXPECT_EQ(client.receiveRest(), "");
}

TEST(Server, ClosesAConnectionThatDoesNotGreet) {
    Server::Options options = patient();
    options.frameDeadline = milliseconds(5);
    RunningServer server(always(echo), options);
    RawClient client(server.path());
    EXPECT_EQ(client.receiveRest(), "");
}

TEST(Server, DropsAClientThatSendsHalfAFrameAndStays) {
    const std::string command = commandFrame(1, WideString(100'000, u'x'));
    for (const std::size_t half : {std::size_t{1}, std::size_t{31}, std::size_t{33},
                                   command.size() / 2, command.size() - 1}) {
        Server::Options options = patient();
        options.frameDeadline = milliseconds(5);
        RunningServer server(always(echo), options);
        const auto client = greetedClient(server.path());
        client->send(command.substr(0, half));
        EXPECT_EQ(client->receiveRest(), "") << half;
    }
}

TEST(Server, DropsAClientThatAnnouncesAGibibyteAndStays) {
    Server::Options options = patient();
    options.frameDeadline = milliseconds(5);
    RunningServer server(always(echo), options);
    const auto client = greetedClient(server.path());
    client->send(headerBytes({Wire::FrameType::kCommand, 1, 0, 0, Wire::kLargestBody}));
    EXPECT_EQ(client->receiveRest(), "");
}

TEST(Server, DropsAClientWhoseFrameNeverEnds) {
    Server::Options options = patient();
    options.wholeFrameDeadline = milliseconds(5);
    RunningServer server(always(echo), options);
    const auto client = greetedClient(server.path());
    client->send(commandFrame(1, u"text").substr(0, 35));
    EXPECT_EQ(client->receiveRest(), "");
}

TEST(Server, DropsAClientThatDoesNotReadItsReply) {
    Gate ended;
    Server::Options options = patient();
    options.frameDeadline = milliseconds(5);
    RunningServer server(
        [&](const Server::Peer&) {
            return std::make_unique<FunctionConversation>(
                [](const WideString&, std::uint32_t, const WideString&) {
                    return Server::Answer{0, WideString(4'000'000, u'x')};
                },
                [&] { ended.open(); });
        },
        options);
    const auto client = greetedClient(server.path());
    client->send(commandFrame(1, u"much"));
    ended.wait();
    EXPECT_LT(client->receiveRest().size(), 8'000'000u);
}

TEST(Server, NoDeadlineEndsACommandThatTakesLonger) {
    Gate finish;
    Server::Options options = patient();
    options.idleDeadline = options.frameDeadline = milliseconds(5);
    options.progressInterval = milliseconds(20);
    RunningServer server(always([&](const WideString&, std::uint32_t, WideString command) {
                             finish.wait();
                             return Server::Answer{0, std::move(command)};
                         }),
                         options);
    // Greeting and command at once: with deadlines this short, the second might come too late.
    std::unique_ptr<RawClient> client;
    do {
        client = std::make_unique<RawClient>(server.path());
        client->send(helloFrame() + commandFrame(1, u"slow"));
    } while (client->receive(Wire::kHeaderSize).empty());
    // By then every deadline has passed several times.
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(client->receive(Wire::kHeaderSize), progressFrame(1));
    }
    finish.open();
    EXPECT_TRUE(client->receiveRest().ends_with(replyFrame(1, u"slow")));
}

// The end.

TEST(Server, FinishesAndAnswersACommandWhenItIsStopped) {
    Gate started;
    Gate finish;
    RunningServer server(always([&](const WideString&, std::uint32_t, WideString command) {
                             started.open();
                             finish.wait();
                             return Server::Answer{0, std::move(command)};
                         }),
                         patient());
    RawClient idle(server.path());
    greet(idle);
    RawClient busy(server.path());
    greet(busy);
    busy.send(commandFrame(1, u"important"));
    started.wait();
    server.stop();
    // The end of the idle connection shows that the server is stopping.
    EXPECT_EQ(idle.receiveRest(), "");
    EXPECT_EQ(server.makeClient()->OpenConnection(u""), Status::kServerUnavailable);
    finish.open();
    EXPECT_EQ(busy.receiveRest(), replyFrame(1, u"important"));
    server.join();
}

TEST(Server, AnswersCommandsThatWaitForAWorkerWhenItIsStopped) {
    Gate started;
    Gate finish;
    Server::Options options = patient();
    options.workers = 1;
    options.progressInterval = milliseconds(1);
    RunningServer server(always([&](const WideString&, std::uint32_t, WideString command) {
                             started.open();
                             finish.wait();
                             return Server::Answer{0, std::move(command)};
                         }),
                         options);
    RawClient first(server.path());
    RawClient second(server.path());
    RawClient idle(server.path());
    greet(first);
    greet(second);
    greet(idle);
    first.send(commandFrame(1, u"first"));
    started.wait();
    second.send(commandFrame(1, u"second"));
    // Its first sign of life shows that the command has been taken.
    EXPECT_EQ(second.receive(Wire::kHeaderSize), progressFrame(1));
    server.stop();
    EXPECT_EQ(idle.receiveRest(), "");
    finish.open();
    EXPECT_TRUE(first.receiveRest().ends_with(replyFrame(1, u"first")));
    EXPECT_TRUE(second.receiveRest().ends_with(replyFrame(1, u"second")));
    server.join();
}

TEST(Server, StoppedBeforeItRunsItEndsAtOnce) {
    const TemporaryFolder folder;
    Server::Server server(folder.file("a.sock"), always(echo));
    server.stop();
    server.stop();
    server.run();
    EXPECT_FALSE(std::filesystem::exists(folder.file("a.sock")));
    server.stop();
}

TEST(Server, EndsOnSignals) {
    for (const int signal : {SIGTERM, SIGINT}) {
        const TemporaryFolder folder;
        Server::Server server(folder.file("a.sock"), always(echo));
        server.stopOnSignals();
        ASSERT_EQ(::raise(signal), 0);
        server.run();
        EXPECT_FALSE(std::filesystem::exists(folder.file("a.sock")));
    }
}

}  // namespace
}  // namespace Orvel::Relay::Testing
