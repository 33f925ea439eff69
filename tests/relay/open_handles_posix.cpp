#include <fcntl.h>

#include <filesystem>
#include <string>

#include "tests/relay/open_handles.h"

namespace Orvel::Relay::Testing {
namespace {

int flagsOf(std::uintptr_t descriptor) { return ::fcntl(static_cast<int>(descriptor), F_GETFD); }

}  // namespace

std::set<std::uintptr_t> openHandles() {
    std::set<std::uintptr_t> listed;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        listed.insert(std::stoul(entry.path().filename()));
    }
    // The listing held a descriptor of its own, which is closed by now.
    std::erase_if(listed, [](std::uintptr_t descriptor) { return flagsOf(descriptor) < 0; });
    return listed;
}

bool isInherited(std::uintptr_t handle) { return (flagsOf(handle) & FD_CLOEXEC) == 0; }

std::size_t handlesOfAConnection() { return 1; }

}  // namespace Orvel::Relay::Testing
