#include "orvel/relay/server.h"

#include <asio/co_spawn.hpp>
#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>
#include <asio/post.hpp>
#include <asio/redirect_error.hpp>
#include <asio/signal_set.hpp>
#include <asio/steady_timer.hpp>
#include <asio/thread_pool.hpp>
#include <asio/use_awaitable.hpp>
#include <errno.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <exception>
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

using Protocol = asio::local::stream_protocol;

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

// The thread that runs the server admits clients and keeps the time; all else is the workers'.
class Server::Impl {
  public:
    Impl(const std::filesystem::path& path, ConversationFactory factory, const Options& options)
        : listening_(path, checked(options).socketMode),
          acceptor_(io_, Protocol(), listening_.release()),
          service_{std::move(factory), options, alarm_} {}

    void run();
    void stop();
    void stopOnSignals();

  private:
    asio::awaitable<void> acceptClients();
    void admit(Descriptor client);
    void lookAtSessions();
    void beginToStop();
    void endWhenStopped();

    ListeningSocket listening_;
    asio::io_context io_{1};
    Protocol::acceptor acceptor_;
    asio::steady_timer pause_{io_};
    asio::signal_set signals_{io_};
    Alarm alarm_{io_, [this] { lookAtSessions(); }};
    Service service_;
    std::atomic<bool> stopping_ = false;
    std::optional<Workers> workers_;
};

void Server::Impl::run() {
    workers_.emplace(service_.options.workers, service_.options.connections,
                     [this] { endWhenStopped(); });
    asio::co_spawn(io_, acceptClients(), [](const std::exception_ptr& failure) {
        if (failure) {
            std::rethrow_exception(failure);
        }
    });
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
    std::error_code ignored;
    acceptor_.close(ignored);
    listening_.removeFile();
    pause_.cancel();
    signals_.cancel(ignored);
    workers_->forEach([](Session& session) { session.stop(); });
    if (workers_->sessions() == 0) {
        endWhenStopped();
    }
}

// Called when there are no sessions, by whichever thread ended the last one.
void Server::Impl::endWhenStopped() {
    if (stopping_) {
        io_.stop();
    }
}

void Server::Impl::lookAtSessions() {
    const auto now = Alarm::Clock::now();
    workers_->forEach([now](Session& session) { session.look(now); });
}

asio::awaitable<void> Server::Impl::acceptClients() {
    while (!stopping_) {
        std::error_code error;
        co_await acceptor_.async_wait(Protocol::acceptor::wait_read,
                                      asio::redirect_error(asio::use_awaitable, error));
        while (!stopping_) {
            Descriptor client(::accept4(acceptor_.native_handle(), nullptr, nullptr,
                                        SOCK_CLOEXEC | SOCK_NONBLOCK));
            if (client.get() >= 0) {
                admit(std::move(client));
            } else if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
                pause_.expires_after(kPauseWithoutDescriptors);
                co_await pause_.async_wait(asio::redirect_error(asio::use_awaitable, error));
            } else if (errno != EINTR && errno != ECONNABORTED) {
                break;
            }
        }
    }
}

void Server::Impl::admit(Descriptor client) {
    if (workers_->sessions() >= service_.options.connections) {
        refuse(client, Status::kServerTooBusy);
        return;
    }
    try {
        workers_->add(std::make_shared<Session>(std::move(client), service_));
    } catch (const std::exception&) {
        // No memory for this client: it finds its connection closed, and the others are none the
        // worse.
    }
}

Server::Server(const std::filesystem::path& socket, ConversationFactory factory, Options options)
    : impl_(std::make_unique<Impl>(socket, std::move(factory), options)) {}

Server::~Server() = default;

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
