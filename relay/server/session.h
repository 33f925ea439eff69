#ifndef ORVEL_SERVER_SESSION_H
#define ORVEL_SERVER_SESSION_H

#include <asio/awaitable.hpp>
#include <asio/local/stream_protocol.hpp>
#include <asio/steady_timer.hpp>
#include <asio/thread_pool.hpp>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "orvel/relay/server.h"
#include "relay/server/watchdog.h"
#include "relay/wire/frame.h"
#include "relay/wire/wire_text.h"

namespace Orvel::Relay::Server {

/// What all sessions of a server share. It outlives them.
struct Service {
    ConversationFactory factory;
    Options options;
    asio::thread_pool& workers;
};

/// One connection. All of it runs on the thread that runs the server, but for `work`.
class Session : public std::enable_shared_from_this<Session> {
  public:
    using Socket = asio::local::stream_protocol::socket;

    Session(Socket socket, const Service& service);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session();

    /// Talks with the client until the connection ends.
    asio::awaitable<void> run();

    /// Ends the connection as soon as the command that is being executed, if one is, has been
    /// answered.
    void stop();

  private:
    using TimePoint = Watchdog::Clock::time_point;

    asio::awaitable<bool> greet();
    asio::awaitable<void> serveCommands();
    asio::awaitable<void> execute();
    asio::awaitable<bool> answer();

    asio::awaitable<std::optional<Wire::FrameHeader>> receiveHeader(TimePoint beginsUntil);
    asio::awaitable<bool> receiveText(std::uint64_t length, WideString& text);
    asio::awaitable<bool> receiveSome(std::span<std::byte> room, TimePoint until,
                                      std::size_t& count);
    asio::awaitable<bool> send(Wire::FrameHeader header, WideStringView body = {});
    asio::awaitable<bool> sendError(std::int32_t status);

    void work();
    void closeSocket();
    void beginFrame();
    TimePoint nextStep() const;

    Socket socket_;
    const Service& service_;
    std::shared_ptr<Watchdog> watchdog_;
    asio::steady_timer progress_;
    std::unique_ptr<Conversation> conversation_;
    bool stopping_ = false;
    bool busy_ = false;

    // The command that is expected or being answered.
    std::uint32_t id_ = Wire::kGreetingId;
    // Until when all of the frame at hand must be through.
    TimePoint frameUntil_{};

    // The command at hand. While it is being executed, these belong to the worker; `finished_`
    // hands them back.
    WideString target_;
    std::uint32_t argument_ = 0;
    WideString command_;
    std::optional<Answer> answer_;
    std::atomic<bool> finished_ = false;

    // Received and not yet understood. It holds a short command whole, header included.
    std::array<std::byte, 2048> inbox_;
    std::size_t filled_ = 0;
    std::size_t read_ = 0;
};

}  // namespace Orvel::Relay::Server

#endif
