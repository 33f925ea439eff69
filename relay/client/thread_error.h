#ifndef ORVEL_CLIENT_THREAD_ERROR_H
#define ORVEL_CLIENT_THREAD_ERROR_H

namespace Orvel::Relay::Client {

/// What a thread remembers of its last error.
struct ThreadError {
    /// `errno`.
    int number = 0;
    /// What the system has beside it; 0 where it has nothing.
    unsigned long code = 0;
};

ThreadError threadError() noexcept;
void setThreadError(const ThreadError& error) noexcept;

/// Keeps it as it is until the end of a scope: the host's errors are its own.
class ThreadErrorKept {
  public:
    ThreadErrorKept() : error_(threadError()) {}
    ThreadErrorKept(const ThreadErrorKept&) = delete;
    ThreadErrorKept& operator=(const ThreadErrorKept&) = delete;
    ~ThreadErrorKept() { setThreadError(error_); }

  private:
    ThreadError error_;
};

}  // namespace Orvel::Relay::Client

#endif
