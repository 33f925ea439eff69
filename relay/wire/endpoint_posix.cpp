#include <stdlib.h>

#include "relay/wire/endpoint.h"

namespace Orvel::Relay::Wire {
namespace {

std::string fromEnvironment(const char* name) {
    const char* value = ::secure_getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

}  // namespace

EndpointFolders foldersOfThisProcess() {
    EndpointFolders folders;
    folders.chosen = fromEnvironment("ORVEL_RPC_DIRECTORY");
    folders.machine = "/run/orvel";
    // A relative folder would be another one for every working folder: the rule for this variable
    // is to ignore it then.
    const std::string runtime = fromEnvironment("XDG_RUNTIME_DIR");
    if (runtime.starts_with('/')) {
        folders.user = runtime + "/orvel";
    }
    return folders;
}

std::string endpointPath(const std::string& folder, const std::string& endpoint) {
    return folder + '/' + endpoint + ".sock";
}

}  // namespace Orvel::Relay::Wire
