#include <windows.h>

#include <optional>

#include "tests/relay/open_handles.h"

namespace Orvel::Relay::Testing {
namespace {

// Nothing when there is no such handle.
std::optional<DWORD> flagsOf(std::uintptr_t handle) {
    DWORD flags = 0;
    if (!::GetHandleInformation(reinterpret_cast<HANDLE>(handle), &flags)) {
        return std::nullopt;
    }
    return flags;
}

}  // namespace

std::set<std::uintptr_t> openHandles() {
    // Handles are small multiples of four, and far fewer in a test.
    constexpr std::uintptr_t kStep = 4;
    constexpr std::uintptr_t kEnd = 4096 * kStep;
    std::set<std::uintptr_t> open;
    for (std::uintptr_t handle = kStep; handle < kEnd; handle += kStep) {
        if (flagsOf(handle)) {
            open.insert(handle);
        }
    }
    return open;
}

bool isInherited(std::uintptr_t handle) {
    return (flagsOf(handle).value_or(0) & HANDLE_FLAG_INHERIT) != 0;
}

// The pipe, and an event for each direction.
std::size_t handlesOfAConnection() { return 3; }

}  // namespace Orvel::Relay::Testing
