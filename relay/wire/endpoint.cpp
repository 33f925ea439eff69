#include "relay/wire/endpoint.h"

#include <algorithm>

namespace Orvel::Relay::Wire {
namespace {

bool belongsToName(char character) {
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') ||
           (character >= '0' && character <= '9') || character == '.' || character == '_' ||
           character == '-';
}

}  // namespace

bool isEndpointName(const std::string& name) {
    return !name.empty() && name.size() <= kLongestEndpointName && name != "." && name != ".." &&
           std::all_of(name.begin(), name.end(), belongsToName);
}

std::string toEndpointName(WideStringView name) {
    std::string narrow;
    if (name.size() > kLongestEndpointName) {
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
        return {endpointPath(folders.chosen, endpoint)};
    }
    std::vector<std::string> paths;
    for (const std::string& folder : {folders.machine, folders.user}) {
        if (!folder.empty()) {
            paths.push_back(endpointPath(folder, endpoint));
        }
    }
    return paths;
}

}  // namespace Orvel::Relay::Wire
