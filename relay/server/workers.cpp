#include "relay/server/workers.h"

#include <errno.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>

#include <cstdint>
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

}  // namespace

Workers::Workers(std::size_t executing, std::size_t sessions, std::function<void()> ended)
    : mostExecuting_(executing),
      ended_(std::move(ended)),
      poll_(checked(::epoll_create1(EPOLL_CLOEXEC), "cannot wait for clients")),
      finishing_(checked(::eventfd(0, EFD_CLOEXEC), "cannot wait for the end")) {
    queue_.reserve(sessions);
    epoll_event end{};
    end.events = EPOLLIN;
    if (::epoll_ctl(poll_.get(), EPOLL_CTL_ADD, finishing_.get(), &end) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot wait for the end");
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

void Workers::add(std::shared_ptr<Session> session) {
    Session& added = *session;
    {
        const std::lock_guard lock(sessionsMutex_);
        sessions_.emplace(&added, std::move(session));
    }
    settle(added, added.advance(), EPOLL_CTL_ADD);
}

std::size_t Workers::sessions() const {
    const std::lock_guard lock(sessionsMutex_);
    return sessions_.size();
}

void Workers::forEach(const std::function<void(Session&)>& visit) const {
    const std::lock_guard lock(sessionsMutex_);
    for (const auto& entry : sessions_) {
        visit(*entry.second);
    }
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
        Session& session = *static_cast<Session*>(event.data.ptr);
        const Session::Next next = session.advance();
        if (next == Session::Next::kExecution) {
            execute(&session);
        } else {
            settle(session, next, EPOLL_CTL_MOD);
        }
    }
}

// Goes on with the commands that had to wait.
void Workers::execute(Session* session) {
    {
        const std::lock_guard lock(queueMutex_);
        if (executing_ == mostExecuting_) {
            queue_.push_back(session);
            return;
        }
        ++executing_;
    }
    while (session != nullptr) {
        const Session::Next next = session->execute();
        if (next != Session::Next::kExecution) {
            settle(*session, next, EPOLL_CTL_MOD);
            session = nullptr;
        }
        const std::lock_guard lock(queueMutex_);
        if (session != nullptr) {
            queue_.push_back(session);
        }
        if (queue_.empty()) {
            --executing_;
            session = nullptr;
        } else {
            session = queue_.front();
            queue_.erase(queue_.begin());
        }
    }
}

// One event wakes one thread, which then has the session for itself: the session must not be
// touched once it is waited for again. A command that is ready before its session is waited for at
// all is left to the thread that the wait for output wakes at once.
void Workers::settle(Session& session, Session::Next next, int operation) {
    if (next != Session::Next::kEnd) {
        epoll_event awaited{};
        awaited.events = EPOLLONESHOT | (next == Session::Next::kInput ? EPOLLIN : EPOLLOUT);
        awaited.data.ptr = &session;
        if (::epoll_ctl(poll_.get(), operation, session.socket(), &awaited) == 0) {
            return;
        }
    }
    end(session);
}

void Workers::end(Session& session) {
    std::shared_ptr<Session> ended;
    bool last = false;
    {
        const std::lock_guard lock(sessionsMutex_);
        const auto found = sessions_.find(&session);
        ended = std::move(found->second);
        sessions_.erase(found);
        last = sessions_.empty();
    }
    ended.reset();
    if (last) {
        ended_();
    }
}

}  // namespace Orvel::Relay::Server
