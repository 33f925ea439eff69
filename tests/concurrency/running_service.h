#ifndef ORVEL_CONCURRENCY_RUNNING_SERVICE_H
#define ORVEL_CONCURRENCY_RUNNING_SERVICE_H

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "orvel/relay/server.h"
#include "service/log.h"
#include "service/settings.h"
#include "service/store.h"
#include "support/temporary_folder.h"

namespace Orvel::TestSupport {

/// The analytics service on threads of this process, at the endpoint that sessions use.
class RunningService {
  public:
    RunningService();
    RunningService(const RunningService&) = delete;
    RunningService& operator=(const RunningService&) = delete;
    ~RunningService();

    /// Ends the service. Commands that have arrived are answered first.
    void stop();

    /// The values of all good events, in the order in which they are stored; also while it runs.
    [[nodiscard]] std::vector<std::string> storedEvents() const;

    /// How often it had something to complain about.
    [[nodiscard]] std::size_t complaints() const { return complaints_; }

  private:
    Support::TemporaryFolder folder_;
    std::size_t complaints_ = 0;
    Service::Log log_;
    Service::Settings settings_;
    std::unique_ptr<Service::Store> store_;
    std::unique_ptr<Relay::Server::Server> server_;
    std::thread thread_;
};

/// Calls a function on so many threads at once, with the number of the thread.
void onThreads(int count, const std::function<void(int)>& work);

}  // namespace Orvel::TestSupport

#endif
