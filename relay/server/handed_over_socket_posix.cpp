#include <errno.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>
#include <system_error>

#include "orvel/relay/server.h"

namespace Orvel::Relay::Server {
namespace {

// Where descriptors that are handed over begin.
constexpr int kFirst = 3;

// The value of a variable, which programs that this one starts must not take for theirs.
std::string take(const char* name) {
    const char* value = ::getenv(name);
    std::string taken = value == nullptr ? "" : value;
    ::unsetenv(name);
    return taken;
}

}  // namespace

std::optional<HandedOverSocket> takeHandedOverSocket() {
    const std::string process = take("LISTEN_PID");
    const std::string count = take("LISTEN_FDS");
    take("LISTEN_FDNAMES");
    // Variables of another process have come here by inheritance only.
    if (process != std::to_string(::getpid()) || count.empty() || count == "0") {
        return std::nullopt;
    }
    if (count != "1") {
        throw std::system_error(EINVAL, std::generic_category(),
                                "exactly one socket may be handed over, not " + count);
    }
    return HandedOverSocket{kFirst};
}

}  // namespace Orvel::Relay::Server
