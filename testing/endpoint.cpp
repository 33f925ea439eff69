#include "testing/endpoint.h"

#include <mutex>
#include <stdexcept>
#include <utility>

namespace Orvel::Analytics::Testing {
namespace {

std::mutex mutex;
InForce* latest = nullptr;

}  // namespace

InForce::InForce(Endpoint& endpoint) : endpoint_(endpoint) {
    const std::lock_guard lock(mutex);
    earlier_ = std::exchange(latest, this);
}

InForce::~InForce() {
    const std::lock_guard lock(mutex);
    InForce** link = &latest;
    while (*link != this) {
        link = &(*link)->earlier_;
    }
    *link = earlier_;
}

Endpoint& InForce::endpoint() {
    const std::lock_guard lock(mutex);
    if (latest == nullptr) {
        throw std::logic_error(
            "the analytics service is needed, and the test has made no "
            "Orvel::Analytics::Testing::Service");
    }
    return latest->endpoint_;
}

}  // namespace Orvel::Analytics::Testing

namespace Orvel::Relay::Client::Native {

std::shared_ptr<Core::RpcClient> RpcClient::GetClientForEndpoint(WideString endpoint) {
    return Analytics::Testing::InForce::endpoint().newClient(std::move(endpoint));
}

}  // namespace Orvel::Relay::Client::Native
