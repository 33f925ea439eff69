#ifndef ORVEL_TESTING_CONVERSATION_H
#define ORVEL_TESTING_CONVERSATION_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "orvel/analytics/consent_object.h"
#include "testing/endpoint.h"
#include "testing/protocol.h"
#include "testing/script.h"

namespace Orvel::Analytics::Testing {

/// A command that arrived.
struct Arrived {
    Step step = Step::Greet;
    WideString application;
    WideString document;
    WideString command;
    bool accepted = false;
};

/// What a service is made of; shared with the clients, so that one that outlives the service finds
/// nothing missing. Whoever reads or changes it holds its mutex.
struct ServiceState {
    std::mutex mutex;
    Script script;
    ConsentObject consent;
    std::vector<Arrived> arrived;
    std::size_t connections = 0;
    std::chrono::milliseconds waited{0};
    std::function<void(std::chrono::milliseconds)> onWait;
};

/// Makes the clients of a service.
class ServiceEndpoint final : public Endpoint {
  public:
    explicit ServiceEndpoint(std::shared_ptr<ServiceState> state) : state_(std::move(state)) {}
    std::shared_ptr<Relay::Client::Core::RpcClient> newClient(WideString endpoint) override;

  private:
    std::shared_ptr<ServiceState> state_;
};

}  // namespace Orvel::Analytics::Testing

#endif
