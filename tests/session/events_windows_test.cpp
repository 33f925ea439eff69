/// What of an event's road depends on the JSON backend, where that is the platform's: it keeps
/// doubles, not spellings, and reads every record once more when a batch is built.

#include "session/events_fixture.h"
#include "support/raised_status.h"

namespace Orvel::TestSupport {
namespace {

class WindowsEvents : public Events {
  protected:
    static WideString nested(int depth) {
        WideString text = ORVEL_TEXT("1");
        for (int around = 0; around < depth; ++around) {
            text = ORVEL_TEXT("{\"a\":") + text + ORVEL_TEXT("}");
        }
        return text;
    }

    WideString valueAsQueued(const WideString& number) {
        evt.dateTime = 0;
        EXPECT_EQ(collect(evt, ORVEL_TEXT("{\"other\":") + number + ORVEL_TEXT("}")), 0);
        const WideString record = queue().back();
        const WideString before = ORVEL_TEXT("{\"Evt\":{\"other\":");
        EXPECT_TRUE(record.starts_with(before));
        return record.substr(before.size(), record.find(',') - before.size());
    }
};

TEST_F(WindowsEvents, JudgeAnIntegerByItsDoubleAndNotByItsSpelling) {
    EXPECT_EQ(collect(evt, ORVEL_TEXT("{\"count\":1e2}")), 0);
    EXPECT_EQ(collect(evt, ORVEL_TEXT("{\"count\":1e10}")), 1)
        << "it is written 10000000000, which is beyond 32 bits";
}

TEST_F(WindowsEvents, MeasureANumberByItsDoubleAndNotByItsSpelling) {
    TestDataClass dataClass({field(ORVEL_TEXT("s"), ORVEL_TEXT("varchar(1)"))});
    EXPECT_EQ(collect(dataClass, ORVEL_TEXT("{\"s\":1.50}")), 0) << "it is written 1.5";
    EXPECT_EQ(collect(dataClass, ORVEL_TEXT("{\"s\":1e3}")), 29) << "it is written 1000";
}

TEST_F(WindowsEvents, LoseTheDigitsThatADoubleDoesNotHold) {
    EXPECT_EQ(valueAsQueued(ORVEL_TEXT("9007199254740991")), ORVEL_TEXT("9007199254740991"));
    for (const char* number : {"9007199254740993", "12345678901234567890"}) {
        const std::string queued = toUtf8(valueAsQueued(toWide(number)));
        EXPECT_NE(queued, number);
        EXPECT_EQ(std::stod(queued), std::stod(number));
    }
}

TEST_F(WindowsEvents, NestedToTheLimitAreTakenButNoBatchWithThemCanBeBuilt) {
    // Around the event, the record has one object more.
    int depth = 1025;
    while (collect(evt, nested(depth)) == 15) {
        --depth;
    }
    EXPECT_GE(depth, 1000);
    EXPECT_LE(depth, 1024);
    ASSERT_EQ(queue().size(), 1U);
    EXPECT_NE(raisedStatus([&] { send(); }), 0U);
    EXPECT_TRUE(script.executed.empty());
    EXPECT_EQ(queue().size(), 1U) << "what was not sent is kept";
}

TEST_F(WindowsEvents, NestedLessDeeplyAreSent) {
    EXPECT_EQ(collect(evt, nested(1000)), 0);
    EXPECT_EQ(send(), 0);
    EXPECT_EQ(sent()["events"][0]["data"].size(), 1U);
}

}  // namespace
}  // namespace Orvel::TestSupport
