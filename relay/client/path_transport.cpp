#include "relay/client/path_transport.h"

#include <algorithm>
#include <utility>

#include "orvel/relay/rpc_client.h"
#include "relay/wire/endpoint.h"

namespace Orvel::Relay::Client {
namespace {

// A server whose queue of connections is full makes room within moments, but no system offers a
// wait for that with a clock of one's own: it is asked again, ever less often.
constexpr std::chrono::milliseconds kFirstPause{1};
constexpr std::chrono::milliseconds kLongestPause{50};

}  // namespace

PathTransport::PathTransport(std::vector<std::string> paths, Waiter& waiter)
    : paths_(std::move(paths)), waiter_(waiter) {}

TimePoint PathTransport::now() { return waiter_.now(); }

std::int32_t PathTransport::connect(TimePoint until) {
    std::int32_t status = Status::kServerUnavailable;
    for (const std::string& path : paths_) {
        status = connectTo(path, until);
        if (status != Status::kServerUnavailable) {
            break;
        }
    }
    return status;
}

std::int32_t PathTransport::connectTo(const std::string& path, TimePoint until) {
    auto pause = kFirstPause;
    for (;;) {
        const std::optional<std::int32_t> status = tryToConnect(path);
        if (status) {
            return *status;
        }
        const TimePoint time = waiter_.now();
        if (time >= until) {
            return Status::kTimeout;
        }
        waiter_.pauseUntil(std::min<TimePoint>(until, time + pause));
        pause = std::min(2 * pause, kLongestPause);
    }
}

std::unique_ptr<Transport> makeTransport(const std::string& endpoint) {
    std::vector<std::string> paths;
    if (!endpoint.empty()) {
        paths = Wire::pathsToTry(Wire::foldersOfThisProcess(), endpoint);
    }
    return makeTransport(std::move(paths), systemWaiter());
}

}  // namespace Orvel::Relay::Client
