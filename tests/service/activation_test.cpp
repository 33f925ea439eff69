#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "client.h"
#include "support/service_process.h"

/// The service as a service manager runs it: on a socket that is handed over, and telling when it
/// is ready.

namespace Orvel::Service {
namespace {

using nlohmann::json;
using Support::Process;
using testing::HasSubstr;

/// A Unix domain socket with a name, in the hands of whoever plays the service manager.
class NamedSocket {
  public:
    NamedSocket(int type, const std::string& name) : descriptor_(::socket(AF_UNIX, type, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, name.data(), name.size());
        if (address.sun_path[0] == '@') {
            address.sun_path[0] = '\0';
        }
        EXPECT_EQ(::bind(descriptor_, reinterpret_cast<const sockaddr*>(&address),
                         static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size())),
                  0);
    }
    NamedSocket(const NamedSocket&) = delete;
    NamedSocket& operator=(const NamedSocket&) = delete;
    ~NamedSocket() { ::close(descriptor_); }

    int descriptor() const { return descriptor_; }
    void listen() { EXPECT_EQ(::listen(descriptor_, 10), 0); }
    /// Waits for the next message.
    std::string receive() {
        std::array<char, 100> message;
        const ssize_t size = ::recv(descriptor_, message.data(), message.size(), 0);
        return {message.data(), size < 0 ? 0 : static_cast<std::size_t>(size)};
    }

  private:
    int descriptor_;
};

class ActivationTest : public testing::Test {
  protected:
    /// Starts the service with a descriptor as its number 3, and with variables of its own.
    void start(const std::string& descriptor, const std::string& variables,
               const std::vector<std::string>& environment = {}) {
        process_ = std::make_unique<Process>(
            "/bin/bash",
            std::vector<std::string>{"-c", variables + " exec \"$@\" 3<" + descriptor, "bash",
                                     ORVEL_ANALYTICSD, "serve", "--data",
                                     (folder_.path() / "data").string(), "--settings", "/dev/null"},
            environment);
    }

    void startWithSocket() {
        start("&" + std::to_string(socket_.descriptor()), "LISTEN_PID=$$ LISTEN_FDS=1");
        ::setenv("ORVEL_RPC_DIRECTORY", folder_.path().c_str(), 1);
    }

    /// Waits for a line of the log. @return it, or the last one.
    json logged(const std::string& event) {
        json last;
        for (std::string line = process_->errorLine(); !line.empty();
             line = process_->errorLine()) {
            last = json::parse(line);
            if (last["event"] == event) {
                break;
            }
        }
        return last;
    }

    int stop() {
        process_->signal(SIGTERM);
        return process_->wait();
    }

    Support::TemporaryFolder folder_;
    const std::string path_ = (folder_.path() / "OrvelAnalyticsRpcEndpoint.sock").string();
    NamedSocket socket_{SOCK_STREAM, path_};
    std::unique_ptr<Process> process_;
};

TEST_F(ActivationTest, SocketThatIsHandedOverIsServedAndLeftThere) {
    socket_.listen();
    startWithSocket();
    EXPECT_EQ(logged("listening")["socket"], path_);
    {
        Client client;
        EXPECT_EQ(client.say("MyApp::CONNECT_APP::"), u"MyApp::ACK::");
    }
    EXPECT_EQ(stop(), 0);
    EXPECT_TRUE(std::filesystem::is_socket(path_));
    EXPECT_FALSE(std::filesystem::exists(path_ + ".lock"));
}

TEST_F(ActivationTest, ClientWhoComesWhileNobodyServesIsServedByTheNextService) {
    socket_.listen();
    startWithSocket();
    logged("listening");
    EXPECT_EQ(stop(), 0);
    // The system takes the client in, as somebody listens there still.
    const NamedSocket client(SOCK_STREAM, (folder_.path() / "client").string());
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path_.data(), path_.size());
    ASSERT_EQ(
        ::connect(client.descriptor(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
        0);
    startWithSocket();
    logged("listening");
    // Whoever sends no frame hears of it.
    ASSERT_EQ(::send(client.descriptor(), std::string(32, 'x').data(), 32, 0), 32);
    std::array<char, 32> answer;
    EXPECT_EQ(::recv(client.descriptor(), answer.data(), answer.size(), MSG_WAITALL), 32);
    EXPECT_EQ(std::string(answer.data(), 4), "ORVL");
    EXPECT_EQ(stop(), 0);
}

TEST_F(ActivationTest, WhatIsNoSocketThatListensIsRefused) {
    startWithSocket();
    EXPECT_THAT(logged("failed")["reason"].get<std::string>(), HasSubstr("handed over"));
    EXPECT_EQ(process_->wait(), 1);
    start("/dev/null", "LISTEN_PID=$$ LISTEN_FDS=1");
    EXPECT_THAT(logged("failed")["reason"].get<std::string>(), HasSubstr("handed over"));
    EXPECT_EQ(process_->wait(), 1);
}

TEST_F(ActivationTest, MoreThanOneSocketIsRefused) {
    socket_.listen();
    start("&" + std::to_string(socket_.descriptor()), "LISTEN_PID=$$ LISTEN_FDS=2");
    EXPECT_THAT(logged("failed")["reason"].get<std::string>(), HasSubstr("exactly one socket"));
    EXPECT_EQ(process_->wait(), 1);
}

TEST_F(ActivationTest, WhatWasHandedToAnotherProcessIsNotTaken) {
    const Support::TemporaryFolder own;
    for (const char* variables :
         {"LISTEN_PID=1 LISTEN_FDS=1", "LISTEN_PID=$$", "LISTEN_PID=$$ LISTEN_FDS=0"}) {
        start("/dev/null", variables, {"ORVEL_RPC_DIRECTORY=" + own.path().string()});
        EXPECT_EQ(logged("listening")["socket"],
                  (own.path() / "OrvelAnalyticsRpcEndpoint.sock").string());
        EXPECT_EQ(stop(), 0);
    }
}

TEST_F(ActivationTest, ServiceManagerIsToldWhenItIsReadyAndWhenItEnds) {
    for (const std::string& name :
         {(folder_.path() / "notify").string(), "@orvel-test-" + std::to_string(::getpid())}) {
        NamedSocket manager(SOCK_DGRAM, name);
        start("/dev/null", "",
              {"NOTIFY_SOCKET=" + name,
               "ORVEL_RPC_DIRECTORY=" + (folder_.path() / "endpoint").string()});
        EXPECT_EQ(manager.receive(), "READY=1");
        EXPECT_EQ(stop(), 0);
        EXPECT_EQ(manager.receive(), "STOPPING=1");
    }
}

TEST_F(ActivationTest, ServiceManagerThatIsGoneKeepsNothingFromWorking) {
    start("/dev/null", "",
          {"NOTIFY_SOCKET=" + (folder_.path() / "nobody").string(),
           "ORVEL_RPC_DIRECTORY=" + (folder_.path() / "endpoint").string()});
    EXPECT_EQ(logged("listening")["event"], "listening");
    EXPECT_EQ(stop(), 0);
}

}  // namespace
}  // namespace Orvel::Service
