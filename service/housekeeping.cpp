#include "service/housekeeping.h"

#include <chrono>
#include <exception>

namespace Orvel::Service {

namespace {

constexpr std::chrono::hours kPause{1};

}  // namespace

Housekeeping::Housekeeping(Store& store, Log& log)
    : store_(store), log_(log), thread_([this](const std::stop_token& stop) { work(stop); }) {}

void Housekeeping::work(const std::stop_token& stop) {
    do {
        cleanUp(stop);
        std::unique_lock lock(mutex_);
        stopped_.wait_for(lock, stop, kPause, [] { return false; });
    } while (!stop.stop_requested());
}

void Housekeeping::cleanUp(const std::stop_token& stop) {
    try {
        while (store_.removeSome() && !stop.stop_requested()) {
        }
    } catch (const std::exception& error) {
        log_.write("removal_failed", {{"reason", error.what()}});
    }
}

}  // namespace Orvel::Service
