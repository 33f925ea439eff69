#ifndef ORVEL_CLIENT_HANDLE_WINDOWS_H
#define ORVEL_CLIENT_HANDLE_WINDOWS_H

#include <windows.h>

#include <memory>

namespace Orvel::Relay::Client {

struct HandleCloser {
    void operator()(HANDLE handle) const noexcept { ::CloseHandle(handle); }
};

/// A handle that is closed with its owner; null when there is none.
using Handle = std::unique_ptr<void, HandleCloser>;

/// Takes a handle from a function that returns INVALID_HANDLE_VALUE or null for none.
inline Handle ownedHandle(HANDLE handle) {
    return Handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

}  // namespace Orvel::Relay::Client

#endif
