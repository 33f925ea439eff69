#include <windows.h>

#include <array>
#include <string_view>

#include "relay/wire/endpoint.h"

namespace Orvel::Relay::Wire {
namespace {

// The pipes of this machine. What stands behind it must not lead out of it again.
constexpr std::string_view kPipes = R"(\\.\pipe\)";

}  // namespace

EndpointFolders foldersOfThisProcess() {
    EndpointFolders folders;
    std::array<WideChar, kLongestEndpointName + 1> value;
    const DWORD length = ::GetEnvironmentVariableW(L"ORVEL_RPC_DIRECTORY", value.data(),
                                                   static_cast<DWORD>(value.size()));
    if (length == 0) {
        folders.machine = std::string(kPipes) + "orvel";
        return folders;
    }
    // A value that is too long says how long it is, and that may be much.
    const std::string name =
        length < value.size() ? toEndpointName({value.data(), length}) : std::string();
    if (!name.empty()) {
        folders.chosen = std::string(kPipes) + name;
    }
    return folders;
}

std::string endpointPath(const std::string& folder, const std::string& endpoint) {
    return folder + '\\' + endpoint;
}

}  // namespace Orvel::Relay::Wire
