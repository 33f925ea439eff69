#ifndef ORVEL_MEMORY_EXHAUSTION_H
#define ORVEL_MEMORY_EXHAUSTION_H

#include <gtest/gtest.h>

#include <cstdint>
#include <iostream>
#include <new>
#include <string>

#include "support/failing_memory.h"
#include "support/fault_line.h"

namespace Orvel::TestSupport {

/// Prints a line of the table of faults: how often memory ran out, and how often that was raised
/// instead of overcome. A fault that never happened, or was never noticed, is a failure.
inline void printFault(const std::string& operation, int injected, int raised) {
    std::cout << Support::faultLine("memory runs out: " + operation,
                                    static_cast<std::uint64_t>(injected),
                                    static_cast<std::uint64_t>(raised))
              << std::endl;
    EXPECT_GT(injected, 0) << "nothing failed";
    EXPECT_GT(raised, 0) << "no failure was noticed";
}

/// What became of an operation whose memory ran out, over all the allocations that it makes.
class Exhaustion {
  public:
    /// @param operation as the table of faults has it.
    explicit Exhaustion(std::string operation) : operation_(std::move(operation)) {}

    /// Runs the operation again and again, each time with one allocation more before memory runs
    /// out, until it gets by with what there is: first with one allocation that fails, then with
    /// all that follow it.
    /// @param makeScene makes what the operation works on, anew each time.
    /// @param operate the operation; the only part for which memory runs out.
    /// @param judge is given the scene and whether `std::bad_alloc` was raised.
    template <typename MakeScene, typename Operate, typename Judge>
    void run(const MakeScene& makeScene, const Operate& operate, const Judge& judge) {
        // Once with enough, for what is made once for the whole process and is no leak.
        runOnce(makeScene, operate, judge, kEnough, Memory::Shortage::kMomentary);
        for (const auto shortage : {Memory::Shortage::kMomentary, Memory::Shortage::kLasting}) {
            for (long n = 0; !testing::Test::HasFailure(); ++n) {
                if (!runOnce(makeScene, operate, judge, n, shortage)) {
                    break;
                }
            }
        }
        printFault(operation_, failed_, raised_);
    }

  private:
    static constexpr long kEnough = 1'000'000;

    template <typename MakeScene, typename Operate, typename Judge>
    bool runOnce(const MakeScene& makeScene, const Operate& operate, const Judge& judge, long n,
                 Memory::Shortage shortage) {
        SCOPED_TRACE(operation_ + ": memory runs out after " + std::to_string(n) +
                     (shortage == Memory::Shortage::kLasting ? " allocations for good"
                                                             : " allocations for a moment"));
        const long heldBefore = Memory::held();
        long failures = 0;
        bool raised = false;
        {
            auto scene = makeScene();
            Memory::failAfter(n, shortage);
            try {
                operate(*scene);
            } catch (const std::bad_alloc&) {
                raised = true;
            } catch (...) {
                Memory::relent();
                throw;
            }
            failures = Memory::relent();
            judge(*scene, raised);
        }
        EXPECT_TRUE(n == kEnough || Memory::held() == heldBefore)
            << Memory::held() - heldBefore << " blocks leaked";
        EXPECT_TRUE(failures > 0 || !raised) << "there was enough memory";
        failed_ += failures > 0 ? 1 : 0;
        raised_ += raised ? 1 : 0;
        return failures > 0;
    }

    std::string operation_;
    int failed_ = 0;
    int raised_ = 0;
};

/// Runs an operation that takes no memory, and so cannot lack any.
template <typename Operate>
void withoutMemory(const Operate& operate) {
    Memory::failAfter(0, Memory::Shortage::kLasting);
    operate();
    EXPECT_EQ(Memory::relent(), 0) << "memory was asked for";
}

}  // namespace Orvel::TestSupport

#endif
