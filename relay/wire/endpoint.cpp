#include "relay/wire/endpoint.h"

#include <algorithm>

namespace Orvel::Relay::Wire {
namespace {

constexpr std::size_t kLongestName = 64;

bool belongsToName(char character) {
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') ||
           (character >= '0' && character <= '9') || character == '.' || character == '_' ||
           character == '-';
}

}  // namespace

bool isEndpointName(const std::string& name) {
    return !name.empty() && name.size() <= kLongestName && name != "." && name != ".." &&
           std::all_of(name.begin(), name.end(), belongsToName);
}

std::string toEndpointName(WideStringView name) {
    std::string narrow;
    if (name.size() > kLongestName) {
        return narrow;
    }
    for (const WideChar unit : name) {
        if (unit > 0x7F) {
            return {};
        }
        narrow.push_back(static_cast<char>(unit));
    }
    if (!isEndpointName(narrow)) {
        narrow.clear();
    }
    return narrow;
}

std::vector<std::string> pathsToTry(const EndpointFolders& folders, const std::string& endpoint) {
    if (!folders.chosen.empty()) {
        return {socketPath(folders.chosen, endpoint)};
    }
    std::vector<std::string> paths = {socketPath(folders.machine, endpoint)};
    if (!folders.user.empty()) {
        paths.push_back(socketPath(folders.user, endpoint));
    }
    return paths;
}

}  // namespace Orvel::Relay::Wire
