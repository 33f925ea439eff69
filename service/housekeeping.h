#ifndef ORVEL_SERVICE_HOUSEKEEPING_H
#define ORVEL_SERVICE_HOUSEKEEPING_H

#include <condition_variable>
#include <mutex>
#include <thread>

#include "service/log.h"
#include "service/store.h"

namespace Orvel::Service {

/// Removes what is stored beyond its limits also when nothing new arrives: at once, then every
/// hour, on a thread of its own that ends with the object. A little at a time, so that applications
/// wait no longer for it than for each other.
class Housekeeping {
  public:
    /// Both must outlive it. @throws std::system_error when there is no thread to be had.
    Housekeeping(Store& store, Log& log);

  private:
    void work(const std::stop_token& stop);
    void cleanUp(const std::stop_token& stop);

    Store& store_;
    Log& log_;
    std::mutex mutex_;
    std::condition_variable_any stopped_;
    std::jthread thread_;
};

}  // namespace Orvel::Service

#endif
