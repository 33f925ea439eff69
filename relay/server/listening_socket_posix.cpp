#include <errno.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <system_error>
#include <utility>

#include "relay/server/listening_socket.h"

namespace Orvel::Relay::Server {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(int error, const std::string& what) {
    throw std::system_error(error, std::generic_category(), what);
}

sockaddr_un addressOf(const fs::path& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.native().size() >= sizeof address.sun_path) {
        fail(ENAMETOOLONG, "the path of the socket is too long: " + path.native());
    }
    std::memcpy(address.sun_path, path.c_str(), path.native().size());
    return address;
}

const sockaddr* generic(const sockaddr_un& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

Descriptor newSocket() {
    Descriptor made(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (made.get() < 0) {
        fail(errno, "cannot make a socket");
    }
    return made;
}

// A service of the machine is for all its users, one that a user runs for that user.
void makeFolder(const fs::path& folder) {
    if (folder.empty()) {
        return;
    }
    std::error_code failure;
    const fs::file_type found = fs::status(folder, failure).type();
    if (found == fs::file_type::directory) {
        return;
    }
    if (failure && found != fs::file_type::not_found) {
        fail(failure.value(), "cannot look at the folder " + folder.native());
    }
    if (folder.has_parent_path()) {
        makeFolder(folder.parent_path());
    }
    const mode_t mode = ::geteuid() == 0 ? 0755 : 0700;
    if (::mkdir(folder.c_str(), mode) == 0) {
        // The mask of the process may have taken away what the folder needs.
        ::chmod(folder.c_str(), mode);
    } else if (errno != EEXIST) {
        fail(errno, "cannot make the folder " + folder.native());
    }
}

// Who may write to the folder can put a socket of their own in this one's place.
void refuseOthersFolder(const fs::path& folder) {
    struct stat found {};
    if (::stat(folder.empty() ? "." : folder.c_str(), &found) != 0) {
        fail(errno, "cannot look at the folder " + folder.native());
    }
    const bool isOpenToAll = (found.st_mode & S_IWOTH) != 0 && (found.st_mode & S_ISVTX) == 0;
    const bool isAnothers = found.st_uid != 0 && found.st_uid != ::geteuid();
    if (isOpenToAll || isAnothers) {
        fail(EPERM, "other users may change the folder of the socket, " + folder.native());
    }
}

// Two servers that start at once find the same dead socket; only the holder of the lock may remove
// it. The file stays when the server ends: removing it would let two hold a lock of the same name.
Descriptor lockBeside(const fs::path& path) {
    const std::string name = path.native() + ".lock";
    Descriptor lock(::open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (lock.get() < 0) {
        fail(errno, "cannot open " + name);
    }
    if (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK) {
            fail(EADDRINUSE, "another server is running at " + path.native());
        }
        fail(errno, "cannot lock " + name);
    }
    return lock;
}

// Removes what a dead server left, and nothing else.
void removeDeadSocket(const fs::path& path, const sockaddr_un& address) {
    struct stat found {};
    if (::lstat(path.c_str(), &found) != 0) {
        if (errno == ENOENT) {
            return;
        }
        fail(errno, "cannot look at " + path.native());
    }
    if (!S_ISSOCK(found.st_mode)) {
        fail(ENOTSOCK, "another file is in the socket's place: " + path.native());
    }
    // Somebody who does not know of the lock may listen there.
    const Descriptor probe = newSocket();
    if (::connect(probe.get(), generic(address), sizeof address) == 0 || errno == EAGAIN) {
        fail(EADDRINUSE, "a server is running at " + path.native());
    }
    if (errno != ECONNREFUSED) {
        fail(errno, "cannot tell whether a server is running at " + path.native());
    }
    if (::unlink(path.c_str()) != 0) {
        fail(errno, "cannot remove the socket of a dead server: " + path.native());
    }
}

int optionOf(const Descriptor& socket, int option) {
    int value = -1;
    socklen_t size = sizeof value;
    return ::getsockopt(socket.get(), SOL_SOCKET, option, &value, &size) == 0 ? value : -1;
}

fs::path pathOf(const Descriptor& socket) {
    sockaddr_un address{};
    socklen_t size = sizeof address;
    if (::getsockname(socket.get(), reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        fail(errno, "cannot tell where the socket is");
    }
    // A name without a file begins with a zero.
    return std::string(address.sun_path, ::strnlen(address.sun_path, sizeof address.sun_path));
}

}  // namespace

ListeningSocket::ListeningSocket(fs::path path, const Options& options) : path_(std::move(path)) {
    const sockaddr_un address = addressOf(path_);
    makeFolder(path_.parent_path());
    refuseOthersFolder(path_.parent_path());
    lock_ = lockBeside(path_);
    removeDeadSocket(path_, address);
    socket_ = newSocket();
    if (::bind(socket_.get(), generic(address), sizeof address) != 0) {
        fail(errno, "cannot make the socket " + path_.native());
    }
    bound_ = true;
    try {
        listenFor(options);
    } catch (...) {
        removeFile();
        throw;
    }
}

ListeningSocket::ListeningSocket(HandedOverSocket socket)
    : socket_(socket.descriptor), shared_(true) {
    if (optionOf(socket_, SO_DOMAIN) != AF_UNIX || optionOf(socket_, SO_TYPE) != SOCK_STREAM ||
        optionOf(socket_, SO_ACCEPTCONN) != 1) {
        fail(EINVAL, "what was handed over is no Unix domain stream socket that listens");
    }
    // Whoever made it may have let it block, which would hold up a thread when a client goes away.
    const int flags = ::fcntl(socket_.get(), F_GETFL);
    if (flags < 0 || ::fcntl(socket_.get(), F_SETFL, flags | O_NONBLOCK) != 0 ||
        ::fcntl(socket_.get(), F_SETFD, FD_CLOEXEC) != 0) {
        fail(errno, "cannot use the socket that was handed over");
    }
    path_ = pathOf(socket_);
}

ListeningSocket::~ListeningSocket() { removeFile(); }

// Group and mode first: nobody can connect before the socket listens.
void ListeningSocket::listenFor(const Options& options) {
    if (options.socketGroup && ::chown(path_.c_str(), static_cast<uid_t>(-1),
                                       static_cast<gid_t>(*options.socketGroup)) != 0) {
        fail(errno, "cannot set the group of " + path_.native());
    }
    if (::chmod(path_.c_str(), static_cast<mode_t>(options.socketMode)) != 0) {
        fail(errno, "cannot set the mode of " + path_.native());
    }
    if (::listen(socket_.get(), SOMAXCONN) != 0) {
        fail(errno, "cannot listen at " + path_.native());
    }
}

void ListeningSocket::removeFile() noexcept {
    if (std::exchange(bound_, false)) {
        ::unlink(path_.c_str());
    }
}

}  // namespace Orvel::Relay::Server
