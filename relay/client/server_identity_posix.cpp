#include "relay/client/server_identity_posix.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <optional>

namespace Orvel::Relay::Client {
namespace {

constexpr uid_t kRoot = 0;

bool onlyItsOwnerWrites(const struct stat& folder) {
    return (folder.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

std::optional<uid_t> serviceUser(const std::filesystem::path& socket) {
    const std::filesystem::path folder = socket.parent_path();
    const std::filesystem::path above = folder.has_parent_path() ? folder.parent_path() : ".";
    struct stat found {};
    // Anybody can make a link to a folder that root has given to somebody.
    if (::lstat(folder.c_str(), &found) != 0 || !S_ISDIR(found.st_mode) ||
        !onlyItsOwnerWrites(found)) {
        return std::nullopt;
    }
    const uid_t owner = found.st_uid;
    if (::stat(above.c_str(), &found) != 0 || found.st_uid != kRoot || !onlyItsOwnerWrites(found)) {
        return std::nullopt;
    }
    return owner;
}

}  // namespace

bool serverIsTrusted(int socket, const std::string& path) {
    ucred server{};
    socklen_t size = sizeof server;
    if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &server, &size) != 0) {
        return false;
    }
    return server.uid == kRoot || server.uid == ::geteuid() || serviceUser(path) == server.uid;
}

}  // namespace Orvel::Relay::Client
