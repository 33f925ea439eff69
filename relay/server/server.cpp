#include "orvel/relay/server.h"

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/signal_set.hpp>
#include <asio/steady_timer.hpp>
#include <errno.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <exception>
#include <new>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "orvel/relay/rpc_client.h"
#include "relay/server/alarm.h"
#include "relay/server/descriptor.h"
#include "relay/server/listening_socket.h"
#include "relay/server/session.h"
#include "relay/server/workers.h"
#include "relay/wire/endpoint.h"
#include "relay/wire/frame.h"

namespace Orvel::Relay::Server {
namespace {

// Descriptors come back when connections end: until then there is no use in trying.
constexpr std::chrono::milliseconds kPauseWithoutDescriptors{100};

Options checked(Options options) {
    if (options.largestBody > Wire::kLargestBody) {
        throw std::invalid_argument("the largest body is at most 1 GiB");
    }
    if (options.workers == 0 || options.connections == 0) {
        throw std::invalid_argument("a server needs at least one worker and one connection");
    }
    return options;
}

// A refused client learns why, if only it listens: nothing is waited for.
void refuse(const Descriptor& client, std::int32_t status) {
    Wire::FrameHeader error;
    error.type = Wire::FrameType::kError;
    error.id = Wire::kGreetingId;
    error.code = static_cast<std::uint32_t>(status);
    const Wire::HeaderBytes bytes = Wire::encode(error);
    [[maybe_unused]] const auto sent =
        ::send(client.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
}

}  // namespace

// The thread that runs the server keeps the time and hears signals; all else is the workers'.
class Server::Impl {
  public:
    Impl(const std::filesystem::path& path, ConversationFactory factory, const Options& options)
        : listening_(path, checked(options)),
          door_(listening_.release()),
          service_{std::move(factory), options, alarm_} {}
    Impl(HandedOverSocket socket, ConversationFactory factory, const Options& options)
        : listening_(socket),
          door_(listening_.release()),
          service_{std::move(factory), checked(options), alarm_} {}

    void run();
    void stop();
    void stopOnSignals();
    std::filesystem::path socket() const { return listening_.path(); }

  private:
    void takeClientIn();
    void admit(Descriptor client);
    void watchDoorLater();
    void pauseAtDoor();
    void lookAtSessions();
    void beginToStop();
    void endWhenStopped();

    ListeningSocket listening_;
    asio::io_context io_{1};
    Descriptor door_;
    asio::steady_timer pause_{io_};
    asio::signal_set signals_{io_};
    Alarm alarm_{io_, [this] { lookAtSessions(); }};
    Service service_;
    std::atomic<bool> stopping_ = false;
    std::optional<Workers> workers_;
};

void Server::Impl::run() {
    workers_.emplace(door_.get(), service_.options.workers, service_.options.connections,
                     Workers::Events{[this] { takeClientIn(); }, [this] { endWhenStopped(); }});
    workers_->watchDoor();
    const auto untilStopped = asio::make_work_guard(io_);
    io_.run();
    workers_.reset();
}

void Server::Impl::stop() {
    asio::post(io_, [this] { beginToStop(); });
}

void Server::Impl::stopOnSignals() {
    signals_.add(SIGTERM);
    signals_.add(SIGINT);
    signals_.async_wait([this](std::error_code error, int) {
        if (!error) {
            beginToStop();
        }
    });
}

void Server::Impl::beginToStop() {
    stopping_ = true;
    listening_.removeFile();
    if (!listening_.isShared()) {
        // Whoever has come and not been taken in is turned away by the thread that this wakes.
        ::shutdown(door_.get(), SHUT_RDWR);
    }
    std::error_code ignored;
    pause_.cancel();
    signals_.cancel(ignored);
    if (workers_->stop() == 0) {
        endWhenStopped();
    }
}

// Called when there are no sessions, by whichever thread ended the last one.
void Server::Impl::endWhenStopped() {
    if (stopping_) {
        io_.stop();
    }
}

void Server::Impl::lookAtSessions() { workers_->look(Alarm::Clock::now()); }

// On a worker. The door is watched again before the client is served, so that it keeps nobody else
// waiting.
void Server::Impl::takeClientIn() {
    if (stopping_ && listening_.isShared()) {
        return;
    }
    Descriptor client(::accept4(door_.get(), nullptr, nullptr, SOCK_CLOEXEC));
    const int error = errno;
    if (client.get() < 0 && stopping_) {
        return;
    }
    if (client.get() < 0 &&
        (error == EMFILE || error == ENFILE || error == ENOBUFS || error == ENOMEM)) {
        watchDoorLater();
        return;
    }
    workers_->watchDoor();
    if (client.get() >= 0) {
        admit(std::move(client));
    }
}

void Server::Impl::watchDoorLater() {
    try {
        asio::post(io_, [this] { pauseAtDoor(); });
    } catch (const std::bad_alloc&) {
        workers_->watchDoor();
    }
}

void Server::Impl::pauseAtDoor() {
    try {
        pause_.expires_after(kPauseWithoutDescriptors);
        pause_.async_wait([this](std::error_code error) {
            if (!error) {
                workers_->watchDoor();
            }
        });
    } catch (const std::bad_alloc&) {
        workers_->watchDoor();
    }
}

void Server::Impl::admit(Descriptor client) {
    try {
        if (!workers_->serve(client, service_) && !stopping_) {
            refuse(client, Status::kServerTooBusy);
        }
    } catch (const std::exception&) {
        // No memory for this client: it finds its connection closed, and the others are none the
        // worse.
    }
}

Server::Server(const std::filesystem::path& socket, ConversationFactory factory, Options options)
    : impl_(std::make_unique<Impl>(socket, std::move(factory), options)) {}

Server::Server(HandedOverSocket socket, ConversationFactory factory, Options options)
    : impl_(std::make_unique<Impl>(socket, std::move(factory), options)) {}

Server::~Server() = default;

std::filesystem::path Server::socket() const { return impl_->socket(); }

void Server::run() { impl_->run(); }

void Server::stop() { impl_->stop(); }

void Server::stopOnSignals() { impl_->stopOnSignals(); }

std::filesystem::path endpointSocket(const std::string& endpoint) {
    if (!Wire::isEndpointName(endpoint)) {
        throw std::invalid_argument("not an endpoint's name: " + endpoint);
    }
    const Wire::EndpointFolders folders = Wire::foldersOfThisProcess();
    std::string folder = folders.chosen;
    if (folder.empty()) {
        folder = ::geteuid() == 0 ? folders.machine : folders.user;
    }
    if (folder.empty()) {
        throw std::invalid_argument(
            "no folder for the socket: neither ORVEL_RPC_DIRECTORY nor XDG_RUNTIME_DIR is set");
    }
    return Wire::endpointPath(folder, endpoint);
}

}  // namespace Orvel::Relay::Server
