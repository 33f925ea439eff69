#ifndef ORVEL_CLIENT_SERVER_IDENTITY_POSIX_H
#define ORVEL_CLIENT_SERVER_IDENTITY_POSIX_H

#include <string>

namespace Orvel::Relay::Client {

/// Whether the server of a connection runs as somebody whom the client believes: root, the
/// (effective) user of this process, or the service's user. That is the user to whom root has given
/// the folder of the socket: a folder in which nobody but its owner may write, in a folder of
/// root's in which nobody but root may.
/// @param socket a connected socket. Its server's user is the one that began to listen.
/// @param path the path that it was connected to.
bool serverIsTrusted(int socket, const std::string& path);

}  // namespace Orvel::Relay::Client

#endif
