#ifndef ORVEL_SUPPORT_FAULT_TALLY_H
#define ORVEL_SUPPORT_FAULT_TALLY_H

#include <gtest/gtest.h>

#include <cstdint>
#include <iostream>
#include <map>
#include <string>
#include <utility>

#include "support/fault_line.h"

namespace Orvel::Support {

/// How often each fault of a suite was injected, and how often the effect that it should have was
/// observed. For one thread.
class FaultTally {
  public:
    /// @param suite what the table is called.
    explicit FaultTally(std::string suite) : suite_(std::move(suite)) {}
    FaultTally(const FaultTally&) = delete;
    FaultTally& operator=(const FaultTally&) = delete;

    /// Names a fault that is to be injected, so that one that never is shows.
    void expect(const std::string& fault) { counts_[fault]; }

    void injected(const std::string& fault) { ++counts_[fault].injected; }

    /// @param seen whether its effect was observed; the test fails otherwise.
    void observed(const std::string& fault, bool seen) {
        EXPECT_TRUE(seen) << fault;
        counts_[fault].observed += seen ? 1 : 0;
    }

    /// Prints the table, a line for each fault. The test fails when there is none, or one that was
    /// not injected.
    void report() const {
        EXPECT_FALSE(counts_.empty()) << suite_ << " has no faults";
        for (const auto& [fault, count] : counts_) {
            EXPECT_GT(count.injected, 0U) << fault << " was never injected";
            std::cout << faultLine(suite_ + ", " + fault, count.injected, count.observed)
                      << std::endl;
        }
    }

  private:
    struct Count {
        std::uint64_t injected = 0;
        std::uint64_t observed = 0;
    };

    std::string suite_;
    std::map<std::string, Count> counts_;
};

}  // namespace Orvel::Support

#endif
