#include "relay/server/workers.h"

#include <errno.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>

#include <cstdint>
#include <iterator>
#include <system_error>
#include <utility>

namespace Orvel::Relay::Server {
namespace {

Descriptor checked(int descriptor, const char* what) {
    if (descriptor < 0) {
        throw std::system_error(errno, std::generic_category(), what);
    }
    return Descriptor(descriptor);
}

bool await(int poll, int operation, int descriptor, std::uint32_t events, void* whose) {
    epoll_event awaited{};
    awaited.events = events;
    awaited.data.ptr = whose;
    return ::epoll_ctl(poll, operation, descriptor, &awaited) == 0;
}

}  // namespace

Workers::Workers(int door, std::size_t executing, std::size_t sessions, Events events)
    : door_(door),
      mostExecuting_(executing),
      mostClients_(sessions),
      events_(std::move(events)),
      poll_(checked(::epoll_create1(EPOLL_CLOEXEC), "cannot wait for clients")),
      finishing_(checked(::eventfd(0, EFD_CLOEXEC), "cannot wait for the end")) {
    if (!await(poll_.get(), EPOLL_CTL_ADD, finishing_.get(), EPOLLIN, nullptr) ||
        !await(poll_.get(), EPOLL_CTL_ADD, door_, EPOLLONESHOT, this)) {
        throw std::system_error(errno, std::generic_category(), "cannot wait for clients");
    }
    try {
        for (std::size_t i = 0; i <= executing; ++i) {
            threads_.emplace_back([this] { work(); });
        }
    } catch (...) {
        finish();
        throw;
    }
}

Workers::~Workers() { finish(); }

// What says so is never taken away, so that every thread hears it.
void Workers::finish() noexcept {
    ::eventfd_write(finishing_.get(), 1);
    for (std::thread& thread : threads_) {
        thread.join();
    }
}

// One client wakes one thread, which takes it in before the next one is waited for.
void Workers::watchDoor() {
    await(poll_.get(), EPOLL_CTL_MOD, door_, EPOLLIN | EPOLLONESHOT, this);
}

bool Workers::serve(Descriptor& socket, const Service& service) {
    Client* client = nullptr;
    {
        const std::lock_guard lock(clientsMutex_);
        if (stopping_ || clients_.size() >= mostClients_) {
            return false;
        }
        client = &clients_.emplace_back(std::move(socket), service);
        client->place = std::prev(clients_.end());
    }
    // Its greeting has mostly come along.
    serve(*client, Session::Next::kInput);
    return true;
}

void Workers::look(Session::TimePoint now) {
    const std::lock_guard lock(clientsMutex_);
    for (Client& client : clients_) {
        client.session.look(now);
    }
}

std::size_t Workers::stop() {
    const std::lock_guard lock(clientsMutex_);
    stopping_ = true;
    for (Client& client : clients_) {
        client.session.stop();
    }
    return clients_.size();
}

void Workers::work() {
    for (;;) {
        epoll_event event{};
        if (::epoll_wait(poll_.get(), &event, 1, -1) != 1) {
            continue;
        }
        if (event.data.ptr == nullptr) {
            return;
        }
        if (event.data.ptr == this) {
            events_.knock();
        } else {
            Client& client = *static_cast<Client*>(event.data.ptr);
            serve(client, client.session.advance());
        }
    }
}

// Goes on with the commands that had to wait meanwhile.
void Workers::serve(Client& client, Session::Next next) {
    if (!begin(client, next)) {
        return;
    }
    for (Client* served = &client; served != nullptr; served = nextInTurn()) {
        putOff(*served, talk(served->session, next));
        next = Session::Next::kExecution;
    }
}

// Goes on until the session takes a longer wait, or it is the turn of others.
Session::Next Workers::talk(Session& session, Session::Next next) {
    if (next == Session::Next::kExecution) {
        next = session.execute();
    }
    while (mayGoOn(next)) {
        if (next == Session::Next::kExecution) {
            next = session.execute();
        } else if (const auto heard = session.linger()) {
            next = *heard;
        } else {
            break;
        }
    }
    return next;
}

// Waiting for a single client is for when there is little to do: half of the threads stay ready for
// the commands of others.
bool Workers::mayGoOn(Session::Next next) {
    const std::lock_guard lock(turnsMutex_);
    return queue_.empty() && (next == Session::Next::kExecution ||
                              (next == Session::Next::kInput && engaged_ <= mostExecuting_ / 2));
}

// Whether this thread may engage itself for a client; otherwise the client is put off.
bool Workers::begin(Client& client, Session::Next next) {
    if (next == Session::Next::kInput || next == Session::Next::kExecution) {
        const std::lock_guard lock(turnsMutex_);
        if (engaged_ < mostExecuting_) {
            ++engaged_;
            return true;
        }
        if (next == Session::Next::kExecution) {
            enqueue(client);
            return false;
        }
    }
    putOff(client, next);
    return false;
}

Workers::Client* Workers::nextInTurn() {
    const std::lock_guard lock(turnsMutex_);
    if (queue_.empty()) {
        --engaged_;
        return nullptr;
    }
    Client* const next = queue_.front();
    next->ticket.splice(next->ticket.end(), queue_, queue_.begin());
    return next;
}

void Workers::enqueue(Client& client) { queue_.splice(queue_.end(), client.ticket); }

// One event wakes one thread, which then has the client for itself: the client must not be touched
// once it is waited for again.
void Workers::putOff(Client& client, Session::Next next) {
    if (next == Session::Next::kExecution) {
        const std::lock_guard lock(turnsMutex_);
        enqueue(client);
        return;
    }
    if (next != Session::Next::kEnd) {
        const std::uint32_t events = next == Session::Next::kInput ? EPOLLIN : EPOLLOUT;
        const bool watched = client.session.handOver([&](int socket) {
            const int operation =
                std::exchange(client.watched, true) ? EPOLL_CTL_MOD : EPOLL_CTL_ADD;
            return await(poll_.get(), operation, socket, events | EPOLLONESHOT, &client);
        });
        if (watched) {
            return;
        }
    }
    end(client);
}

void Workers::end(Client& client) {
    std::list<Client> ended;
    bool last = false;
    {
        const std::lock_guard lock(clientsMutex_);
        ended.splice(ended.end(), clients_, client.place);
        last = clients_.empty();
    }
    ended.clear();
    if (last) {
        events_.empty();
    }
}

}  // namespace Orvel::Relay::Server
