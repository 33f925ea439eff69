/// The library's rules for events, held against the plain model of them, over schemas and events
/// that are made up.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <map>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>

#include "orvel/analytics.h"
#include "support/data_classes.h"
#include "support/event_maker.h"
#include "support/event_model.h"
#include "support/session_access.h"

namespace Orvel::TestSupport {
namespace {

using Analytics::Emitters::AnalyticsResult;
using Analytics::Session::SessionAccess;

constexpr int kSchemas = 4'000;
constexpr int kEventsOfASchema = 5;

std::optional<AnalyticsResult> collect(AnalyticsSession& session, TestDataClass& dataClass,
                                       const WideString& event) {
    try {
        return session.CollectEvent(&dataClass, event);
    } catch (const std::out_of_range&) {
        return std::nullopt;
    }
}

std::string nameOf(std::optional<AnalyticsResult> result) {
    return result ? std::to_string(static_cast<int>(*result)) : "raised";
}

std::string recordByModel(PlainJson values) {
    values.set("DT", plainString(""));
    values.set("V", plainString("1.0"));
    return plainText(plainObject("Evt", std::move(values)));
}

class EventOracle : public testing::Test {
  protected:
    EventOracle() {
        SessionAccess::appSession(session_).versionTag = ORVEL_TEXT("1.0");
        dataClass_.dateTime = 0;
    }

    /// Judges one event both ways, and counts the verdict.
    void compare(const WideString& event) {
        const auto result = collect(session_, dataClass_, event);
        const ModelVerdict expected = judgeByModel(event, dataClass_.fields);
        ++verdicts_[nameOf(expected.result)];
        auto& queue = SessionAccess::eventQueue(session_);
        ASSERT_EQ(nameOf(result), nameOf(expected.result));
        ASSERT_EQ(queue.size(), result == AnalyticsResult::Success ? 1U : 0U);
        if (!queue.empty()) {
            ASSERT_EQ(toUtf8(queue.front()), recordByModel(expected.values));
            queue.clear();
        }
    }

    void compareMany(std::uint64_t seed) {
        std::cout << "ORVEL_ORACLE_SEED=" << seed << " repeats this" << std::endl;
        EventMaker maker(seed);
        for (int schema = 0; schema < kSchemas; ++schema) {
            dataClass_.fields = maker.fields();
            for (int event = 0; event < kEventsOfASchema; ++event) {
                const std::string text = maker.event(dataClass_.fields);
                SCOPED_TRACE("seed " + std::to_string(seed) + ", schema " + std::to_string(schema) +
                             ": " + text);
                ASSERT_NO_FATAL_FAILURE(compare(toWide(text)));
            }
        }
        for (const auto& [verdict, count] : verdicts_) {
            std::cout << "verdict " << verdict << ": " << count << " events" << std::endl;
        }
        // Every verdict that the rules know on this platform was reached, and not just once.
        for (const char* verdict : {"0", "1", "15", "29", "raised"}) {
            EXPECT_GE(verdicts_[verdict], 100) << verdict;
        }
    }

  private:
    AnalyticsSession session_{ORVEL_TEXT("MyApp"), ORVEL_TEXT("1.2")};
    TestDataClass dataClass_{{}};
    std::map<std::string, int> verdicts_;
};

TEST_F(EventOracle, AgreesOnTheSameEventsEveryTime) { compareMany(20'240'131); }

TEST_F(EventOracle, AgreesOnOtherEventsEachTime) {
    const char* const given = std::getenv("ORVEL_ORACLE_SEED");
    compareMany(given == nullptr ? std::random_device()() : std::stoull(given));
}

}  // namespace
}  // namespace Orvel::TestSupport
