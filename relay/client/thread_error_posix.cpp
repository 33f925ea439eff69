#include <errno.h>

#include "relay/client/thread_error.h"

namespace Orvel::Relay::Client {

ThreadError threadError() noexcept { return {errno, 0}; }

void setThreadError(const ThreadError& error) noexcept { errno = error.number; }

}  // namespace Orvel::Relay::Client
