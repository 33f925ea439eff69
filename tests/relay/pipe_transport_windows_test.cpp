#include "relay/client/pipe_transport_windows.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <thread>
#include <vector>

#include "orvel/relay/rpc_client.h"
#include "tests/relay/server_end.h"

/// What goes on by itself while a transport does something else.

namespace Orvel::Relay::Testing {
namespace {

using Client::Outcome;
using Client::PipeTransport;

constexpr Client::TimePoint kOver{};

// Whatever is waited for comes at once, though nothing has.
class HastyWaiter final : public Client::Waiter {
  public:
    Client::TimePoint now() override { return time_ += std::chrono::seconds(1); }
    bool wait(Client::Awaited&, Client::TimePoint) override { return true; }
    void pauseUntil(Client::TimePoint) override {}

  private:
    Client::TimePoint time_{};
};

class PipeTransportTest : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(transport.connect(kOver), Status::kSuccess);
        ASSERT_TRUE(server.accept());
    }

    // What is there within a look, as text.
    std::string receive(std::size_t most = 100) {
        const Client::Readiness ready = transport.wait(false, kOver);
        std::string text(most, '\0');
        const Client::Transfer received =
            transport.receive(std::as_writable_bytes(std::span(text)));
        EXPECT_EQ(ready.toReceive, received.outcome != Outcome::kNothingYet);
        text.resize(received.bytes);
        return text;
    }

    Client::Transfer send(const std::string& text) {
        const std::array pieces{std::as_bytes(std::span(text))};
        return transport.send(pieces);
    }

    // Sends until the server would have to receive.
    void fill() {
        while (send(std::string(100'000, 'x')).outcome == Outcome::kMoved) {
        }
    }

    ServerEnd server;
    PipeTransport transport{{server.path()}, Client::systemWaiter()};
};

TEST_F(PipeTransportTest, HandsOnWhatCameInPortionsOfTheCallersChoice) {
    EXPECT_EQ(receive(), "");
    ASSERT_EQ(server.send("first, second"), 13u);
    EXPECT_EQ(receive(5), "first");
    EXPECT_EQ(receive(2), ", ");
    EXPECT_EQ(receive(), "second");
    EXPECT_EQ(receive(), "");
}

TEST_F(PipeTransportTest, HandsOnWhatCameBeforeTheServerWent) {
    EXPECT_EQ(receive(), "");
    ASSERT_EQ(server.send("last words"), 10u);
    server.close();
    EXPECT_EQ(receive(4), "last");
    EXPECT_EQ(receive(), " words");
    std::array<std::byte, 8> room;
    EXPECT_EQ(transport.receive(room).outcome, Outcome::kLost);
    EXPECT_EQ(transport.receive(room).outcome, Outcome::kLost);
}

TEST_F(PipeTransportTest, SendsFromMemoryThatIsItsOwn) {
    fill();
    std::string received(1'000'000, '\0');
    std::string all;
    while (const std::size_t count = server.receive(received)) {
        all.append(received, 0, count);
    }
    EXPECT_GT(all.size(), 0u);
    EXPECT_EQ(all.find_first_not_of('x'), std::string::npos);
}

TEST_F(PipeTransportTest, CanSendAgainWhenTheServerHasReceived) {
    fill();
    EXPECT_FALSE(transport.wait(true, kOver).toSend);
    std::string received(1'000'000, '\0');
    while (server.receive(received) != 0) {
    }
    EXPECT_TRUE(transport.wait(true, kOver).toSend);
    EXPECT_EQ(send("more").outcome, Outcome::kMoved);
    EXPECT_EQ(server.receive(received), 4u);
    EXPECT_EQ(received.substr(0, 4), "more");
}

TEST_F(PipeTransportTest, IsLostToBothSidesOfAWaitWhenTheServerGoesMeanwhile) {
    fill();
    EXPECT_EQ(receive(), "");
    server.close();
    const Client::Readiness ready = transport.wait(true, kOver);
    EXPECT_TRUE(ready.toReceive);
    EXPECT_TRUE(ready.toSend);
    std::array<std::byte, 8> room;
    EXPECT_EQ(transport.receive(room).outcome, Outcome::kLost);
    EXPECT_EQ(send("x").outcome, Outcome::kLost);
    EXPECT_EQ(send("x").outcome, Outcome::kLost);
}

TEST_F(PipeTransportTest, DisconnectsWhileAReadAndAWriteAreUnderWay) {
    fill();
    EXPECT_EQ(receive(), "");
    transport.disconnect();
    EXPECT_FALSE(transport.isConnected());
    ASSERT_EQ(transport.connect(kOver), Status::kSuccess);
    ASSERT_TRUE(server.accept());
    EXPECT_EQ(send("anew").outcome, Outcome::kMoved);
    std::string received(100, '\0');
    EXPECT_EQ(server.receive(received), 4u);
    ASSERT_EQ(server.send("welcome"), 7u);
    EXPECT_EQ(receive(), "welcome");
}

TEST_F(PipeTransportTest, ForgetsWhatItHasNotHandedOnWhenItDisconnects) {
    ASSERT_EQ(server.send("old bytes"), 9u);
    EXPECT_EQ(receive(3), "old");
    transport.disconnect();
    ASSERT_EQ(transport.connect(kOver), Status::kSuccess);
    ASSERT_TRUE(server.accept());
    EXPECT_EQ(receive(), "");
    ASSERT_EQ(server.send("new"), 3u);
    EXPECT_EQ(receive(), "new");
}

TEST_F(PipeTransportTest, GoesOnReadingWhenTheThreadThatBeganHasEnded) {
    std::thread([&] { EXPECT_EQ(receive(), ""); }).join();
    ASSERT_EQ(server.send("for another"), 11u);
    EXPECT_EQ(receive(), "for another");
}

TEST_F(PipeTransportTest, IsLostWhenTheThreadThatWroteHasEndedBeforeTheServerReceived) {
    std::thread([&] { fill(); }).join();
    EXPECT_TRUE(transport.wait(true, kOver).toSend);
    EXPECT_EQ(send("x").outcome, Outcome::kLost);
}

TEST(PipeTransport, KeepsItsDeadlineThoughItIsWokenForNothing) {
    ServerEnd server;
    HastyWaiter waiter;
    PipeTransport transport({server.path()}, waiter);
    ASSERT_EQ(transport.connect(waiter.now()), Status::kSuccess);
    const Client::TimePoint begun = waiter.now();
    const Client::Readiness ready = transport.wait(false, begun + std::chrono::seconds(10));
    EXPECT_FALSE(ready.toReceive);
    EXPECT_FALSE(ready.toSend);
    EXPECT_EQ(waiter.now(), begun + std::chrono::seconds(11));
}

TEST(PipeOperation, ThatIsReleasedLeavesWhatComesLaterToOthers) {
    ServerEnd server;
    const std::string path = server.path();
    const Client::Handle pipe =
        Client::ownedHandle(::CreateFileA(path.c_str(), GENERIC_READ | FILE_WRITE_DATA, 0, nullptr,
                                          OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr));
    ASSERT_TRUE(server.accept());
    Client::PipeOperation given;
    given.memory()[0] = std::byte{0};
    ASSERT_TRUE(given.prepare());
    given.read(pipe.get());
    ASSERT_TRUE(given.isUnderWay(pipe.get()));
    given.release(pipe.get());
    EXPECT_EQ(given.event(), nullptr);

    ASSERT_EQ(server.send("later"), 5u);
    EXPECT_EQ(given.memory()[0], std::byte{0});
    Client::PipeOperation other;
    ASSERT_TRUE(other.prepare());
    other.read(pipe.get());
    EXPECT_FALSE(other.isUnderWay(pipe.get()));
    EXPECT_EQ(other.takeBytes().size(), 5u);
    EXPECT_TRUE(other.takeBytes().empty());
    other.release(pipe.get());
}

}  // namespace
}  // namespace Orvel::Relay::Testing
