#ifndef ORVEL_TESTING_ENDPOINT_H
#define ORVEL_TESTING_ENDPOINT_H

#include <memory>

#include "orvel/analytics/text.h"
#include "orvel/relay/rpc_client.h"

/// Where the RPC clients of the process lead.
namespace Orvel::Analytics::Testing {

/// What a client can reach.
class Endpoint {
  public:
    virtual std::shared_ptr<Relay::Client::Core::RpcClient> newClient(WideString endpoint) = 0;

  protected:
    Endpoint() = default;
    Endpoint(const Endpoint&) = default;
    Endpoint& operator=(const Endpoint&) = default;
    ~Endpoint() = default;
};

/// Makes an endpoint the one that clients reach, until a later one is made or this one ends.
class InForce {
  public:
    explicit InForce(Endpoint& endpoint);
    InForce(const InForce&) = delete;
    InForce& operator=(const InForce&) = delete;
    ~InForce();

    /// The endpoint in force. @throws std::logic_error when there is none.
    static Endpoint& endpoint();

  private:
    Endpoint& endpoint_;
    InForce* earlier_ = nullptr;
};

}  // namespace Orvel::Analytics::Testing

#endif
