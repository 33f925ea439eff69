#include <gtest/gtest.h>

#include <iostream>

#include "support/fault_table.h"

/// Linked into a program of tests, prints its faults when the last test has ended, and fails when
/// one of them was never injected or its effect never observed.

namespace Orvel::Support {
namespace {

class FaultReport : public testing::Environment {
  public:
    void TearDown() override {
        std::cout << faultTable() << std::flush;
        EXPECT_TRUE(everyFaultCounted())
            << "a fault was never injected, or its effect never observed";
    }
};

[[maybe_unused]] testing::Environment* const report =
    testing::AddGlobalTestEnvironment(new FaultReport);

}  // namespace
}  // namespace Orvel::Support
