#ifndef ORVEL_WIRE_ENDPOINT_H
#define ORVEL_WIRE_ENDPOINT_H

#include <cstddef>
#include <string>
#include <vector>

#include "orvel/relay/text.h"

/// @file
/// Where the server of an endpoint is found: the one rule that client and server share.

namespace Orvel::Relay::Wire {

/// In characters.
inline constexpr std::size_t kLongestEndpointName = 64;

/// Whether a text is an endpoint's name: 1 to 64 of the characters `A-Z a-z 0-9 . _ -`, and not one
/// of the two names that every folder has.
bool isEndpointName(const std::string& name);

/// The same for a wide text.
/// @return the name, or an empty text when it is none.
std::string toEndpointName(WideStringView name);

/// The folders in which endpoints are looked for: of sockets, or on Windows of pipes. An empty text
/// stands for a folder that is not known.
struct EndpointFolders {
    /// Set by whoever runs the program, to the exclusion of the others.
    std::string chosen;
    /// Of the services that run for the whole machine.
    std::string machine;
    /// Of the services that run for this user. Pipes have no such folder.
    std::string user;
};

/// The folders of this process, as its environment says; none when the environment chooses one that
/// cannot be. The environment of a program that runs with more rights than its caller is not
/// believed.
EndpointFolders foldersOfThisProcess();

/// The socket or pipe of an endpoint in a folder.
std::string endpointPath(const std::string& folder, const std::string& endpoint);

/// Where a client looks, in this order.
/// @param endpoint an endpoint's name.
std::vector<std::string> pathsToTry(const EndpointFolders& folders, const std::string& endpoint);

}  // namespace Orvel::Relay::Wire

#endif
