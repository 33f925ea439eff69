#include "orvel/analytics/testing/matchers.h"

#include <sstream>
#include <string>
#include <vector>

#include "orvel/analytics/testing/records.h"

namespace Orvel::Analytics::Testing {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::Gt;
using testing::HasSubstr;
using testing::Matcher;
using testing::Not;
using testing::StartsWith;
using testing::StringMatchResultListener;

Event someEvent() {
    return {"click",
            Value::parse(R"({"button":"save","count":3,"ratio":1.5,"done":true,"gone":null,)"
                         R"("window":{"width":800}})"),
            "20240131T235959", "1.0"};
}

std::string explanation(const Matcher<const Event&>& matcher, const Event& event) {
    StringMatchResultListener listener;
    EXPECT_FALSE(matcher.MatchAndExplain(event, &listener));
    return listener.str();
}

std::string description(const Matcher<const Event&>& matcher) {
    std::ostringstream out;
    matcher.DescribeTo(&out);
    out << "; ";
    matcher.DescribeNegationTo(&out);
    return out.str();
}

TEST(EventMatchers, LookAtTheDataClassAndTheStampedMembers) {
    EXPECT_THAT(someEvent(), OfDataClass("click"));
    EXPECT_THAT(someEvent(), OfDataClass(StartsWith("cl")));
    EXPECT_THAT(someEvent(), Not(OfDataClass("clic")));
    EXPECT_THAT(someEvent(), HasTime("20240131T235959"));
    EXPECT_THAT(someEvent(), Not(HasTime("")));
    EXPECT_THAT(someEvent(), HasVersion("1.0"));
    EXPECT_THAT(someEvent(), Not(HasVersion("1")));
}

TEST(EventMatchers, LookAtOneValue) {
    EXPECT_THAT(someEvent(), HasValue("button", "save"));
    EXPECT_THAT(someEvent(), HasValue("count", 3));
    EXPECT_THAT(someEvent(), HasValue("done", true));
    EXPECT_THAT(someEvent(), HasValue("gone", nullptr));
    EXPECT_THAT(someEvent(), HasValue("ratio", Value::number("1.5")));
    EXPECT_THAT(someEvent(), HasValue(std::string("button"), std::string("save")));
    EXPECT_THAT(someEvent(), HasValue("window", HasValue("width", 800)));
    EXPECT_THAT(someEvent(), Not(HasValue("button", "Save")));
    EXPECT_THAT(someEvent(), Not(HasValue("count", "3")));
    EXPECT_THAT(someEvent(), Not(HasValue("absent", nullptr)));
}

TEST(EventMatchers, TakeMatchersOfTextsAndNumbers) {
    EXPECT_THAT(someEvent(), HasValue("button", Text(HasSubstr("av"))));
    EXPECT_THAT(someEvent(), HasValue("button", Not(Text("open"))));
    EXPECT_THAT(someEvent(), HasValue("count", Integer(Gt(2))));
    EXPECT_THAT(someEvent(), Not(HasValue("count", Integer(Gt(3)))));
    EXPECT_THAT(someEvent(), Not(HasValue("ratio", Integer(1)))) << "it has a fraction";
    EXPECT_THAT(someEvent(), Not(HasValue("count", Text("3"))));
    EXPECT_THAT(someEvent(), Not(HasValue("button", Integer(0))));
}

TEST(EventMatchers, LookWhetherThereIsAValue) {
    EXPECT_THAT(someEvent(), HasValue("gone"));
    EXPECT_THAT(someEvent(), Not(HasValue("absent")));
}

TEST(EventMatchers, LookAtAllValues) {
    const Event event{"click", Value::parse(R"({"a":1,"b":"x"})"), "", ""};
    EXPECT_THAT(event, HasValues(R"({"b":"x","a":1})"));
    EXPECT_THAT(event, Not(HasValues(R"({"a":1})")));
}

TEST(EventMatchers, AreCombined) {
    const std::vector<Event> events{someEvent(), someEvent()};
    EXPECT_THAT(events,
                ElementsAre(AllOf(OfDataClass("click"), HasValue("count", 3)), HasVersion("1.0")));
}

TEST(EventMatchers, SayWhatTheyFound) {
    EXPECT_EQ(explanation(HasValue("absent", 1), someEvent()), "which has no value \"absent\"");
    EXPECT_EQ(explanation(HasValue("count", 4), someEvent()), "whose value \"count\" is 3");
    EXPECT_THAT(explanation(OfDataClass("x"), someEvent()), HasSubstr("click"));
}

TEST(EventMatchers, SayWhatTheyLookFor) {
    EXPECT_EQ(
        description(HasValue("count", 4)),
        "has a value \"count\" that is equal to 4; has no value \"count\" that is equal to 4");
    EXPECT_THAT(description(HasValue("a", Text(StartsWith("x")))),
                HasSubstr("is a string that starts with \"x\""));
    EXPECT_THAT(description(HasValue("a", Integer(Gt(2)))),
                HasSubstr("is a whole number that is > 2"));
    EXPECT_EQ(description(HasValue("a")),
              "has a value \"a\" that is anything; has no value \"a\" that is anything");
}

}  // namespace
}  // namespace Orvel::Analytics::Testing
