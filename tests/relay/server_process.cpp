#include "tests/relay/server_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <stdexcept>

#include "tests/relay/frame_bytes.h"
#include "tests/relay/other_user.h"

namespace Orvel::Relay::Testing {
namespace {

constexpr char kListening = 'L';

int listenAt(const std::string& path) {
    const int listening = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.data(), path.size());
    ::unlink(path.c_str());
    const bool listens =
        ::bind(listening, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
        ::chmod(path.c_str(), 0666) == 0 && ::listen(listening, SOMAXCONN) == 0;
    return listens ? listening : -1;
}

[[noreturn]] void runServer(const std::string& path, uid_t user, int test,
                            const ServerProcess::Serve& serve) {
    const int listening = becomeUser(user) ? listenAt(path) : -1;
    // Becoming another user forgets this.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (listening < 0 || ::write(test, &kListening, 1) != 1) {
        ::_exit(1);
    }
    for (;;) {
        const int accepted = ::accept4(listening, nullptr, nullptr, SOCK_CLOEXEC);
        if (accepted < 0) {
            ::_exit(1);
        }
        ServedConnection connection(accepted, test);
        serve(connection);
    }
}

}  // namespace

ServedConnection::ServedConnection(int connection, int test)
    : connection_(connection), test_(test) {}

ServedConnection::~ServedConnection() { ::close(connection_); }

std::string ServedConnection::receive(std::size_t bytes) {
    std::string received(bytes, '\0');
    if (bytes == 0) {
        return received;  // The system would wait for something to come.
    }
    const ssize_t count = ::recv(connection_, received.data(), bytes, MSG_WAITALL);
    received.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return received;
}

void ServedConnection::receiveFrame() {
    const std::string header = receive(Wire::kHeaderSize);
    if (header.size() < Wire::kHeaderSize) {
        return;
    }
    const auto read = Wire::decode(reinterpret_cast<const std::byte*>(header.data()));
    receive(read ? read->targetLength + read->bodyLength : 0);
}

void ServedConnection::send(const std::string& bytes) {
    for (std::size_t sent = 0; sent < bytes.size();) {
        const ssize_t count =
            ::send(connection_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count < 0) {
            return;
        }
        sent += static_cast<std::size_t>(count);
    }
}

void ServedConnection::welcome() {
    receiveFrame();
    send(welcomeFrame());
}

void ServedConnection::tell(char word) {
    if (::write(test_, &word, 1) != 1) {
        ::_exit(1);
    }
}

ServerProcess::ServerProcess(const std::string& path, uid_t user, const Serve& serve) {
    std::array<int, 2> pipe{};
    if (::pipe2(pipe.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("cannot make a pipe");
    }
    process_ = ::fork();
    if (process_ == 0) {
        ::close(pipe[0]);
        runServer(path, user, pipe[1], serve);
    }
    ::close(pipe[1]);
    told_ = pipe[0];
    if (hear() != kListening) {
        ::waitpid(process_, nullptr, 0);
        ::close(told_);
        throw std::runtime_error("a server's process cannot listen at " + path);
    }
}

ServerProcess::~ServerProcess() {
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
    ::close(told_);
}

char ServerProcess::hear() {
    char word = 0;
    return ::read(told_, &word, 1) == 1 ? word : '\0';
}

}  // namespace Orvel::Relay::Testing
