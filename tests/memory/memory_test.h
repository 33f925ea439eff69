#ifndef ORVEL_MEMORY_MEMORY_TEST_H
#define ORVEL_MEMORY_MEMORY_TEST_H

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>
#include <string>

#include "memory/answering_service.h"
#include "memory/exhaustion.h"
#include "memory/session_scene.h"
#include "support/time_zone.h"

namespace Orvel::TestSupport {

/// A service for sessions that lack memory. At the end no descriptor is left over.
class MemoryTest : public testing::Test {
  protected:
    MemoryTest() : descriptorsBefore_(openDescriptors()) { service_.emplace(); }

    ~MemoryTest() override {
        service_.reset();
        EXPECT_EQ(openDescriptors(), descriptorsBefore_) << "descriptors leaked";
    }

    AnsweringService& service() { return *service_; }

    /// Of an operation of a session.
    static Exhaustion exhaustion(const std::string& operation) {
        return Exhaustion(operation + " (" + AnsweringService::client() + ")");
    }

    auto sessionWith(std::size_t queued) {
        return [this, queued] { return std::make_unique<SessionScene>(service(), queued); };
    }

  private:
    static std::ptrdiff_t openDescriptors() {
        const std::filesystem::directory_iterator listed("/proc/self/fd");
        return std::distance(begin(listed), end(listed));
    }

    // The C library does not tell when it lacks the memory for reading a zone's file.
    const TimeZone zone_{"XXX-3"};
    std::ptrdiff_t descriptorsBefore_;
    std::optional<AnsweringService> service_;
};

}  // namespace Orvel::TestSupport

#endif
