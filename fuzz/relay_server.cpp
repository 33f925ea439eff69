/// The frames of a client as the server sees them. A line of numbers says how many bytes arrive at
/// a time, again and again; the rest is what the client sends.

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <string>

#include "fuzz/support/allocations.h"
#include "fuzz/support/plain_frame.h"
#include "fuzz/support/require.h"
#include "fuzz/support/sizes.h"
#include "orvel/relay/rpc_client.h"
#include "relay/server/session.h"

namespace Orvel::Fuzz {
namespace {

using namespace Relay;
using Next = Server::Session::Next;

constexpr std::uint32_t kLargestBody = 600;

/// Answers with the command's argument as status, or with all the texts that it was given.
class Echo final : public Server::Conversation {
  public:
    explicit Echo(WideString argument) : argument_(std::move(argument)) {}

    Server::Answer execute(const WideString& target, std::uint32_t argument,
                           WideString command) override {
        return {static_cast<std::int32_t>(argument), argument_ + target + command};
    }

  private:
    WideString argument_;
};

const Server::Service& service() {
    static asio::io_context io;
    static Server::Alarm alarm(io, [] {});
    static const Server::Service made = [] {
        Server::Options options;
        options.largestBody = kLargestBody;
        return Server::Service{
            [](const Server::Peer& peer) { return std::make_unique<Echo>(peer.argument); }, options,
            alarm};
    }();
    return made;
}

/// The two ends of a connection: a session, and a client that sends what it is told.
class Connection {
  public:
    Connection() : Connection(pairOfSockets()) {}

    /// Returns whether the connection is still there.
    bool send(std::string_view bytes, bool lingers) {
        const auto sent = ::send(client_.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
        require(sent == static_cast<ssize_t>(bytes.size()), "the input fits the socket");
        Next next = lingers ? session_.linger().value_or(Next::kInput) : session_.advance();
        for (;;) {
            take();
            if (next == Next::kEnd) {
                return false;
            }
            if (next == Next::kInput) {
                return true;
            }
            next = next == Next::kExecution ? session_.execute() : session_.advance();
        }
    }

    [[nodiscard]] const std::string& received() const { return received_; }

  private:
    explicit Connection(const std::array<int, 2>& sockets)
        : client_(sockets[0]), session_(Server::Descriptor(sockets[1]), service()) {}

    static std::array<int, 2> pairOfSockets() {
        std::array<int, 2> sockets{};
        require(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets.data()) == 0,
                "there are sockets");
        return sockets;
    }

    void take() {
        std::array<char, 4096> buffer{};
        for (;;) {
            const auto count = ::recv(client_.get(), buffer.data(), buffer.size(), MSG_DONTWAIT);
            if (count <= 0) {
                return;
            }
            received_.append(buffer.data(), static_cast<std::size_t>(count));
        }
    }

    Server::Descriptor client_;
    Server::Session session_;
    std::string received_;
};

std::string converse(std::string_view bytes, const std::vector<std::size_t>& sizes) {
    const AllocationBound bound(300'000, 100, bytes.size());
    Connection connection;
    for (std::size_t turn = 0; !bytes.empty(); ++turn) {
        const std::string_view arriving = bytes.substr(0, sizes[turn % sizes.size()]);
        bytes.remove_prefix(arriving.size());
        if (!connection.send(arriving, turn % 2 == 1)) {
            break;
        }
    }
    return connection.received();
}

/// What the protocol says of the same bytes.
std::string expectedOf(std::string_view bytes) {
    std::string out;
    std::string argument;
    const auto take = [&bytes](std::size_t length) {
        const std::string_view taken = bytes.substr(0, length);
        bytes.remove_prefix(length);
        return taken;
    };
    for (std::uint32_t id = 0; bytes.size() >= kFrameHeader; ++id) {
        const auto frame = readPlainFrame(take(kFrameHeader));
        const bool isDue = frame && frame->id == id &&
                           frame->type == (id == 0 ? kHello : kCommand) &&
                           (id == 0 || frame->bodyLength <= kLargestBody);
        if (!isDue) {
            return out + plainFrameBytes(kError, id, Status::kProtocolError);
        }
        if (bytes.size() < frame->targetLength + frame->bodyLength) {
            break;
        }
        if (id == 0) {
            argument = take(frame->bodyLength);
            out += plainFrameBytes(kWelcome, id, kLargestBody);
            continue;
        }
        const std::string reply =
            argument + std::string(take(frame->targetLength + frame->bodyLength));
        if (frame->code != 0) {
            out += plainFrameBytes(kError, id, frame->code);
        } else if (reply.size() > kLargestBody) {
            out += plainFrameBytes(kError, id, Status::kTextTooLong);
        } else {
            out += plainFrameBytes(kReply, id, 0, reply);
        }
    }
    return out;
}

}  // namespace
}  // namespace Orvel::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Orvel::Fuzz;
    Input input(data, size);
    const auto sizes = readSizes(input.line());
    const std::string_view bytes = input.rest();
    require(converse(bytes, sizes) == expectedOf(bytes),
            "the server answers as the protocol says, however many bytes arrive at a time");
    return 0;
}
