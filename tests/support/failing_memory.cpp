#include "support/failing_memory.h"

#include <atomic>

namespace Orvel::TestSupport::Memory {
namespace {

// Everything here is used while memory is being allocated, from a program's first moment on: it
// has no constructors and takes no memory.

struct OwnPlan {
    bool inForce;
    Shortage shortage;
    long left;
    long failed;
};

thread_local constinit OwnPlan own{};
thread_local constinit long blocks = 0;

enum class Elsewhere { kPlenty, kMomentary, kLasting };

constinit std::atomic<Elsewhere> elsewhere{Elsewhere::kPlenty};
constinit std::atomic<long> leftElsewhere{0};
constinit std::atomic<long> failuresElsewhere{0};
thread_local constinit bool spared = false;

bool failsByOwnPlan() noexcept {
    if (own.left > 0) {
        --own.left;
        return false;
    }
    ++own.failed;
    own.inForce = own.shortage == Shortage::kLasting;
    return true;
}

bool failsByPlanOfOthers(Elsewhere plan) noexcept {
    const long left = leftElsewhere.fetch_sub(1);
    if (left > 0 || (left < 0 && plan == Elsewhere::kMomentary)) {
        return false;
    }
    ++failuresElsewhere;
    return true;
}

}  // namespace

void failAfter(long allocations, Shortage shortage) { own = {true, shortage, allocations, 0}; }

long relent() {
    own.inForce = false;
    return own.failed;
}

void failElsewhereAfter(long allocations, Shortage shortage) {
    spared = true;
    failuresElsewhere = 0;
    leftElsewhere = allocations;
    elsewhere = shortage == Shortage::kLasting ? Elsewhere::kLasting : Elsewhere::kMomentary;
}

long relentElsewhere() {
    elsewhere = Elsewhere::kPlenty;
    return failuresElsewhere;
}

long failedElsewhere() { return failuresElsewhere; }

long held() { return blocks; }

bool allocationFails() noexcept {
    if (own.inForce) {
        return failsByOwnPlan();
    }
    const Elsewhere plan = elsewhere;
    return plan != Elsewhere::kPlenty && !spared && failsByPlanOfOthers(plan);
}

void allocated() noexcept { ++blocks; }

void freed() noexcept { --blocks; }

}  // namespace Orvel::TestSupport::Memory
