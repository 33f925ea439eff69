/// The library and the real service: what a session reports is what is stored.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sstream>
#include <string>
#include <vector>

#include "orvel/analytics.h"
#include "support/data_classes.h"
#include "support/service_process.h"

namespace {

using nlohmann::json;
using Orvel::toWide;
using Orvel::Analytics::hresult_error;
using Orvel::Support::ServiceProcess;
using Orvel::TestSupport::field;
using Orvel::TestSupport::TestDataClass;

constexpr std::int64_t kSomeTime = 1'706'745'599;

std::vector<json> jsonLines(const std::string& text) {
    std::vector<json> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(json::parse(line));
    }
    return lines;
}

class SessionWithService : public testing::Test {
  protected:
    SessionWithService() {
        service.start();
        service.useEndpoint();
        evt.dateTime = kSomeTime;
    }

    int registerClass(TestDataClass& dataClass) {
        return static_cast<int>(session.RegisterDataClass(&dataClass));
    }
    int collect(TestDataClass& dataClass, const std::string& event) {
        return static_cast<int>(session.CollectEvent(&dataClass, toWide(event)));
    }
    int send() { return static_cast<int>(session.SendEvents()); }

    std::vector<json> stored(std::vector<std::string> arguments = {}) {
        arguments.insert(arguments.begin(), {"events", "--json"});
        const auto output = service.run(std::move(arguments));
        EXPECT_EQ(output.status, 0) << output.error;
        return jsonLines(output.out);
    }

    ServiceProcess service{ORVEL_SERVICE_PROGRAM};
    AnalyticsSession session{ORVEL_TEXT("MyApp"), ORVEL_TEXT("1.2")};
    TestDataClass evt{{field(ORVEL_TEXT("count"), ORVEL_TEXT("integer")),
                       field(ORVEL_TEXT("text"), ORVEL_TEXT("varchar(2000)"))}};
};

TEST_F(SessionWithService, StoresEveryValueAsItWasReported) {
    const std::vector<std::string> events = {
        R"({"count":1,"text":"plain"})",
        R"({"text":"漢字 かな 한글"})",
        R"({"text":"😀👩‍👩‍👧"})",
        R"({"text":"\"quoted\" \\ \/ \b\f\n\r\t é"})",
        R"({"text":"before\u0000after\u001f"})",
        R"({"big":12345678901234567890123,"small":-0.10,"exponent":1e10})",
        R"({"nested":{"list":[1,[2,{"deep":null}],true]},"count":-2147483648})"};
    ASSERT_EQ(registerClass(evt), 0);
    for (const std::string& event : events) {
        ASSERT_EQ(collect(evt, event), 0) << event;
    }
    ASSERT_EQ(send(), 0);

    const std::vector<json> rows = stored({"--good"});
    ASSERT_EQ(rows.size(), events.size());
    for (std::size_t at = 0; at < events.size(); ++at) {
        json expected = json::parse(events[at]);
        expected["V"] = "1.0";
        json values = rows[at]["values"];
        EXPECT_EQ(values["DT"].get<std::string>().size(), 15U);
        values.erase("DT");
        EXPECT_EQ(values, expected);
        EXPECT_EQ(rows[at]["class"], "Evt");
    }
    const auto output = service.run({"events", "--json"});
    EXPECT_NE(output.out.find("12345678901234567890123"), std::string::npos)
        << "no digit of a number changes";
    EXPECT_NE(output.out.find("-0.10"), std::string::npos);
}

TEST_F(SessionWithService, StoresTheIdentityOfEachBatch) {
    ASSERT_EQ(registerClass(evt), 0);
    collect(evt, R"({"count":1})");
    ASSERT_EQ(send(), 0);
    collect(evt, R"({"count":2})");
    ASSERT_EQ(send(), 0);
    const std::vector<json> rows = stored();
    ASSERT_EQ(rows.size(), 2U);
    for (const json& row : rows) {
        EXPECT_EQ(row["application"], "MyApp");
        EXPECT_EQ(row["application_version"], "1.2");
        EXPECT_EQ(row["environment"], "Production");
        EXPECT_EQ(row["session"].get<std::string>().size(), 36U);
        EXPECT_EQ(row["uid"], getuid());
    }
    EXPECT_NE(rows[0]["session"], rows[1]["session"]);
    EXPECT_NE(rows[0]["user"], rows[1]["user"]);
    EXPECT_EQ(rows[0]["device"], rows[1]["device"]);
}

TEST_F(SessionWithService, RefusesAVersionThatIsRegisteredWithOtherFields) {
    TestDataClass other({field(ORVEL_TEXT("other"), ORVEL_TEXT("integer"))});
    EXPECT_EQ(registerClass(evt), 0);
    EXPECT_EQ(registerClass(other), 13);
    other.version = ORVEL_TEXT("1.1");
    EXPECT_EQ(registerClass(other), 0);
}

TEST_F(SessionWithService, ReportsTheLastBadEventOfABatchAndKeepsTheGoodOnes) {
    ASSERT_EQ(registerClass(evt), 0);
    TestDataClass unregistered({}, ORVEL_TEXT("Other"));
    unregistered.dateTime = kSomeTime;
    TestDataClass timeless = evt;
    timeless.dateTime = 0;
    collect(evt, R"({"count":1})");
    collect(unregistered, R"({"a":1})");
    collect(timeless, R"({"count":2})");
    collect(evt, R"({"count":3})");
    EXPECT_EQ(send(), 27);
    EXPECT_EQ(stored({"--good"}).size(), 2U);
    const std::vector<json> bad = stored({"--bad"});
    ASSERT_EQ(bad.size(), 2U);
    EXPECT_EQ(bad[0]["error"], "UnregisteredDataclass");
    EXPECT_EQ(bad[1]["error"], "DateTimeFieldIsRequired");
}

TEST_F(SessionWithService, AcceptsAnEmptyBatch) {
    EXPECT_EQ(send(), 0);
    EXPECT_TRUE(stored().empty());
}

TEST_F(SessionWithService, KeepsWhatItAcknowledgedWhenItIsKilled) {
    ASSERT_EQ(registerClass(evt), 0);
    collect(evt, R"({"count":1})");
    ASSERT_EQ(send(), 0);
    service.kill();
    EXPECT_EQ(registerClass(evt), 22);
    EXPECT_EQ(send(), 1);
    service.start();
    EXPECT_EQ(stored().size(), 1U);
    collect(evt, R"({"count":2})");
    EXPECT_EQ(send(), 0) << "the class is still registered";
    EXPECT_EQ(stored().size(), 2U);
}

TEST_F(SessionWithService, TakesABatchOfManyEvents) {
    constexpr std::size_t kMany = 20'000;
    ASSERT_EQ(registerClass(evt), 0);
    for (std::size_t count = 0; count < kMany; ++count) {
        ASSERT_EQ(collect(evt, "{\"count\":" + std::to_string(count) + ",\"text\":\"漢\"}"), 0);
    }
    ASSERT_EQ(send(), 0);
    const std::vector<json> rows = stored();
    ASSERT_EQ(rows.size(), kMany);
    for (std::size_t count = 0; count < kMany; ++count) {
        ASSERT_EQ(rows[count]["values"]["count"], count);
    }
}

TEST_F(SessionWithService, ServesAnApplicationWhoseNameHoldsTheFraming) {
    AnalyticsSession odd(ORVEL_TEXT("My::App::COLLECT_DATACLASS::"), ORVEL_TEXT("1"));
    EXPECT_EQ(static_cast<int>(odd.RegisterDataClass(&evt)), 0);
    odd.CollectEvent(&evt, ORVEL_TEXT("{\"count\":1}"));
    EXPECT_EQ(static_cast<int>(odd.SendEvents()), 0);
    ASSERT_EQ(stored().size(), 1U);
    EXPECT_EQ(stored()[0]["application"], "My::App::COLLECT_DATACLASS::");
}

TEST_F(SessionWithService, CannotReadTheErrorOfAnApplicationWithAColonInItsName) {
    AnalyticsSession odd(ORVEL_TEXT("My:App"), ORVEL_TEXT("1"));
    EXPECT_EQ(static_cast<int>(odd.RegisterDataClass(&evt)), 0);
    evt.fields.clear();
    EXPECT_THROW(odd.RegisterDataClass(&evt), hresult_error);
}

TEST(SessionWithoutService, SaysThatNobodyIsThere) {
    const ServiceProcess service{ORVEL_SERVICE_PROGRAM};
    service.useEndpoint();
    AnalyticsSession session(ORVEL_TEXT("MyApp"), ORVEL_TEXT("1"));
    TestDataClass evt({});
    EXPECT_EQ(static_cast<int>(session.RegisterDataClass(&evt)), 22);
    EXPECT_EQ(static_cast<int>(session.SendEvents()), 1);
}

}  // namespace
