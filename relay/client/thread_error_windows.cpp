#include <errno.h>

#include "relay/client/handle_windows.h"
#include "relay/client/thread_error.h"

namespace Orvel::Relay::Client {

ThreadError threadError() noexcept { return {errno, ::GetLastError()}; }

void setThreadError(const ThreadError& error) noexcept {
    errno = error.number;
    ::SetLastError(error.code);
}

}  // namespace Orvel::Relay::Client
