#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "service/service_manager.h"

namespace Orvel::Service {

void tellServiceManager(std::string_view state) {
    const char* name = std::getenv("NOTIFY_SOCKET");
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::size_t length = name == nullptr ? 0 : std::strlen(name);
    if (length < 2 || length > sizeof address.sun_path) {
        return;
    }
    std::memcpy(address.sun_path, name, length);
    if (address.sun_path[0] == '@') {
        address.sun_path[0] = '\0';
    }
    const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (socket < 0) {
        return;
    }
    // The address ends with the name: in an abstract one, a further zero would count.
    [[maybe_unused]] const auto sent =
        ::sendto(socket, state.data(), state.size(), MSG_NOSIGNAL | MSG_DONTWAIT,
                 reinterpret_cast<const sockaddr*>(&address),
                 static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + length));
    ::close(socket);
}

}  // namespace Orvel::Service
