#ifndef ORVEL_SERVER_SESSION_H
#define ORVEL_SERVER_SESSION_H

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>

#include "orvel/relay/server.h"
#include "relay/server/alarm.h"
#include "relay/server/descriptor.h"
#include "relay/wire/frame.h"
#include "relay/wire/wire_text.h"

namespace Orvel::Relay::Server {

/// What all sessions of a server share. It outlives them.
struct Service {
    ConversationFactory factory;
    Options options;
    /// Rings when it is time to `look` at the sessions.
    Alarm& alarm;
};

/// One connection. `advance`, `linger` and `execute` are called by one thread at a time, the others
/// by any.
class Session {
  public:
    using TimePoint = Alarm::TimePoint;

    /// What a session needs to go on.
    enum class Next {
        kInput,      ///< something to receive
        kOutput,     ///< room to send
        kExecution,  ///< `execute`
        kEnd,        ///< nothing: the connection is over
    };

    Session(Descriptor socket, const Service& service);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Calls a function that lets others wait for the socket, with the socket. Whoever wakes up
    /// then sees all that was done before.
    template <typename Function>
    auto handOver(Function function) {
        const std::lock_guard lock(mutex_);
        return function(socket_.get());
    }

    /// Talks with the client as far as that goes without waiting.
    Next advance();

    /// Waits a moment for something to receive, and goes on as `advance` does. To be called when
    /// that is needed.
    /// @return nothing when nothing came.
    std::optional<Next> linger();

    /// Executes the command that has arrived, answers it, and goes on as `advance` does.
    Next execute();

    /// Sees to what is due by now: tells the client that its command is still being executed, or
    /// ends a connection that has missed a deadline.
    void look(TimePoint now);

    /// Ends the connection as soon as the command that is being executed, if one is, has been
    /// answered.
    void stop();

  private:
    // What is to be received next.
    enum class Stage { kHeader, kTarget, kBody };

    Next proceed();
    std::size_t receive();
    std::size_t received(std::size_t wanted, std::ptrdiff_t result);
    std::span<std::byte> room();
    std::span<const std::byte> unread() const;
    bool understand();
    void takeHeader();
    void takeText();
    void greet(const Peer& peer);
    void beginExecution();
    void answer(Answer given);

    void say(Wire::FrameHeader header, WideString body = {});
    void sayError(std::int32_t status);
    void sayLast(std::int32_t status);
    bool flush();
    void sendProgress();

    void expectFrame(std::chrono::milliseconds within);
    void beginFrame(TimePoint now);
    void bytesMoved(TimePoint now);
    void setDue(TimePoint due);
    void cutOff();

    // Declared first, so that it is closed last: the end of the connection tells the client that
    // the conversation has ended.
    Descriptor socket_;
    const Service& service_;
    std::mutex mutex_;
    std::unique_ptr<Conversation> conversation_;
    bool stopping_ = false;
    bool executing_ = false;
    bool over_ = false;

    // The command that is expected or being answered.
    std::uint32_t id_ = Wire::kGreetingId;

    // When something has to happen, and until when all of the frame at hand must be through.
    TimePoint due_ = TimePoint::max();
    TimePoint frameUntil_ = TimePoint::max();

    // Received and not yet understood. It holds a short command whole, header included.
    std::array<std::byte, 2048> inbox_;
    std::size_t filled_ = 0;
    std::size_t read_ = 0;
    // Whether the last look found no more to receive.
    bool drained_ = false;
    Stage stage_ = Stage::kHeader;
    Wire::FrameHeader header_;
    Wire::IncomingText incoming_{0};

    // The command at hand. While it is being executed, these belong to the worker.
    WideString target_;
    WideString command_;

    // The frame that is being sent.
    Wire::HeaderBytes head_;
    WideString body_;
    std::optional<Wire::OutgoingText> text_;
    std::size_t sent_ = 0;
    bool lastWords_ = false;
};

}  // namespace Orvel::Relay::Server

#endif
