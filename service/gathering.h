#ifndef ORVEL_SERVICE_GATHERING_H
#define ORVEL_SERVICE_GATHERING_H

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

namespace Orvel::Service {

/// Work whose cost is mostly that of doing it at all: of the threads that have a part of it, one
/// does what has gathered while another was working, and the others wait for it.
///
/// Any thread.
template <typename Part>
class Gathering {
  public:
    /// Does the work for at least one part. Called by one thread at a time; must not throw.
    using Work = std::function<void(const std::vector<Part*>&)>;

    explicit Gathering(Work work) : work_(std::move(work)) {}

    /// Returns when the work is done for this part, together with all parts that came before it.
    void run(Part& part);

    /// How many parts wait for the work that is going on to end.
    std::size_t waiting() const {
        const std::scoped_lock lock(mutex_);
        return waiting_.size();
    }

  private:
    Work work_;
    mutable std::mutex mutex_;
    std::condition_variable ended_;
    std::vector<Part*> waiting_;
    bool working_ = false;
    /// How many parts have come, and how many of them are done.
    std::uint64_t come_ = 0;
    std::uint64_t done_ = 0;
};

template <typename Part>
void Gathering<Part>::run(Part& part) {
    std::unique_lock lock(mutex_);
    waiting_.push_back(&part);
    const std::uint64_t own = ++come_;
    ended_.wait(lock, [this, own] { return done_ >= own || !working_; });
    if (done_ >= own) {
        return;
    }
    working_ = true;
    const std::vector<Part*> parts = std::exchange(waiting_, {});
    const std::uint64_t last = come_;
    lock.unlock();
    work_(parts);
    lock.lock();
    done_ = last;
    working_ = false;
    ended_.notify_all();
}

}  // namespace Orvel::Service

#endif
