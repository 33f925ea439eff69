/// Memory runs out at any allocation of the service, those of its database included, while it
/// serves a command.

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "memory/exhaustion.h"
#include "service/conversation.h"
#include "support/failing_memory.h"
#include "support/temporary_folder.h"
#include "wide.h"

namespace Orvel::Service {
namespace {

using TestSupport::printFault;
namespace Memory = TestSupport::Memory;

constexpr const char* kIdentity =
    R"({"V":"1.0","DT":"20240131T235959","1":"AnApplication","2":"2.1","3":"{S}","4":0,)"
    R"("5":"a user","6":"a device","7":"Production"})";

std::string batchOf(const std::string& events) {
    return std::string(R"({"events":[{"appsession":)") + kIdentity + R"(,"data":[)" + events +
           "]}]}";
}

std::string event(const std::string& number) {
    return R"({"Evt":{"n":)" + number + R"(,"text":")" + std::string(300, 'x') +
           R"(","DT":"20240131T235959","V":"1.0"}})";
}

/// As many good events, and then one that is refused.
std::string events(int good) {
    std::string list;
    for (int n = 0; n < good; ++n) {
        list += event(std::to_string(n)) + ",";
    }
    return list + event(R"("no number")");
}

class ServiceWithoutMemory : public testing::Test {
  protected:
    using Make = std::function<std::unique_ptr<Conversation>()>;

    /// The answer to a command; nothing when an exception would have ended the connection.
    static std::optional<WideString> execute(Conversation& conversation, WideString command) {
        try {
            return conversation.execute(WideString(kTarget), 0, std::move(command)).text;
        } catch (const std::exception&) {
            return std::nullopt;
        }
    }

    std::unique_ptr<Conversation> conversation() {
        return std::make_unique<Conversation>(store_, settings_, log_, Relay::Server::Peer());
    }

    std::unique_ptr<Conversation> connected() {
        auto made = conversation();
        EXPECT_EQ(execute(*made, wide(kName + "::CONNECT_APP::")), wide(kName + "::ACK::"));
        return made;
    }

    WideString answerTo(const std::string& command) {
        return execute(*connected(), wide(kName + command)).value_or(WideString());
    }

    /// A registration of a version that was never registered.
    std::string registration() {
        return R"(::REGISTER_DATACLASS::{"name":"An event","id":"Evt","version":")" +
               std::to_string(++versions_) +
               R"(","fields":[)"
               R"({"id":"n","name":"Number","nullable":"false","type":"integer"},)"
               R"json({"id":"text","name":"Text","nullable":"true","type":"varchar(4000)"}]})json";
    }

    std::int64_t count(const std::string& what) {
        Statement statement(reader_, "SELECT count(*) FROM " + what);
        statement.step();
        return statement.integer(0);
    }

    std::int64_t stored() {
        return count("event") + count("refused_event") + count("consent_change") + count("batch") +
               count("data_class");
    }

    /// Executes commands, each time with one allocation more before memory runs out.
    /// @param command makes the command.
    /// @param expected the answer that acknowledges it.
    /// @param changes how many rows it stores then.
    /// @param make makes the conversation that it is said in.
    void run(const std::string& name, const std::function<std::string()>& command,
             const WideString& expected, std::int64_t changes, const Make& make) {
        int failed = 0;
        int unacknowledged = 0;
        for (const auto shortage : {Memory::Shortage::kMomentary, Memory::Shortage::kLasting}) {
            for (long n = 0, failures = 1; failures > 0 && !HasFailure(); ++n) {
                SCOPED_TRACE(name + ": memory runs out after " + std::to_string(n) +
                             (shortage == Memory::Shortage::kLasting ? " for good" : ""));
                const auto conversation = make();
                WideString text = wide(kName + command());
                const std::int64_t before = stored();
                Memory::failAfter(n, shortage);
                const auto answer = execute(*conversation, std::move(text));
                failures = Memory::relent();
                const bool acknowledged = answer == expected;
                EXPECT_TRUE(acknowledged || failures > 0);
                EXPECT_TRUE(!answer || acknowledged || isError(*answer));
                EXPECT_EQ(stored() - before, acknowledged ? changes : 0);
                failed += failures > 0 ? 1 : 0;
                unacknowledged += acknowledged ? 0 : 1;
                expectUsable();
            }
        }
        printFault("the service's " + name, failed, unacknowledged);
    }

    void run(const std::string& name, const std::string& command, const WideString& expected,
             std::int64_t changes) {
        run(
            name, [&] { return command; }, expected, changes, [this] { return connected(); });
    }

    static bool isError(const WideString& answer) {
        return answer.find(u"GenericError") != answer.npos ||
               answer.find(u"ErrorIODataclassRegistration") != answer.npos;
    }

    void expectUsable() {
        const std::int64_t before = stored();
        EXPECT_EQ(answerTo("::SET_CONSENT::" + permissions_), kSuccess);
        EXPECT_EQ(stored() - before, 1);
    }

    const std::string kName = "AnApplication";
    const WideString kSuccess = u"AnApplication::SUCCESS::";
    const std::string permissions_ =
        R"({"marketing":"Accepted","support":"Rejected","product_enhancement":"Unknown"})";

    Support::TemporaryFolder folder_;
    std::filesystem::path file_ = folder_.path() / "analytics.db";
    int versions_ = 0;
    std::chrono::milliseconds now_{1'700'000'000'000};
    Store store_{file_, [this] { return now_; }};
    Database reader_{file_, Database::Access::kReadOnly};
    Log log_{[](std::string_view) {}, [this] { return now_; }};
    Settings settings_;
};

TEST_F(ServiceWithoutMemory, AcknowledgesAHandshakeOrNot) {
    run(
        "handshake", [] { return "::CONNECT_APP::"; }, u"AnApplication::ACK::", 0,
        [this] { return conversation(); });
}

TEST_F(ServiceWithoutMemory, AcknowledgesARegistrationThatItHasStored) {
    run(
        "register command", [this] { return registration(); }, kSuccess, 1,
        [this] { return connected(); });
}

TEST_F(ServiceWithoutMemory, AcknowledgesABatchThatItHasStored) {
    ASSERT_EQ(answerTo(registration()), kSuccess);
    run("collect command, 1 event", "::COLLECT_DATACLASS::" + batchOf(event("1")), kSuccess, 2);
    run("collect command, 41 events", "::COLLECT_DATACLASS::" + batchOf(events(40)),
        u"AnApplication::COLLECT_DATACLASS::"
        u"{\"Results\":[\"ErrorCode :DataclassNotFollowRegisteredFormat\"]}",
        42);
}

TEST_F(ServiceWithoutMemory, AcknowledgesAConsentThatItHasStored) {
    run("set-consent command", "::SET_CONSENT::" + permissions_, kSuccess, 1);
}

TEST_F(ServiceWithoutMemory, GivesTheConsentThatIsStoredOrNone) {
    expectUsable();
    run("get-consent command", "::GET_CONSENT::", answerTo("::GET_CONSENT::"), 0);
}

TEST_F(ServiceWithoutMemory, StoresWhatItAcknowledgesForSeveralThreadsAtATime) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 100;
    constexpr int kAllocations = 50;
    ASSERT_EQ(answerTo(registration()), kSuccess);
    std::atomic<int> failed = 0;
    std::atomic<int> acknowledged = 0;
    const auto send = [&] {
        const auto conversation = connected();
        for (int round = 0; round < kRounds; ++round) {
            WideString text =
                wide(kName + "::COLLECT_DATACLASS::" + batchOf(event(std::to_string(round))));
            Memory::failAfter(round % kAllocations, round % 2 == 0 ? Memory::Shortage::kMomentary
                                                                   : Memory::Shortage::kLasting);
            const auto answer = execute(*conversation, std::move(text));
            failed += Memory::relent() > 0 ? 1 : 0;
            acknowledged += answer == kSuccess ? 1 : 0;
            EXPECT_TRUE(!answer || answer == kSuccess || isError(*answer));
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back(send);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(count("batch"), acknowledged);
    EXPECT_EQ(count("event"), acknowledged);
    printFault("the service's collect command in four threads", failed,
               kThreads * kRounds - acknowledged);
    expectUsable();
}

TEST_F(ServiceWithoutMemory, OpensItsDataOrSaysWhyNot) {
    // There are some 1,600 allocations, and each attempt takes its time.
    constexpr long kStep = 37;
    expectUsable();
    const std::int64_t before = stored();
    int failed = 0;
    int raised = 0;
    for (const auto shortage : {Memory::Shortage::kMomentary, Memory::Shortage::kLasting}) {
        for (long n = 0, failures = 1; failures > 0; n += kStep) {
            std::unique_ptr<Store> opened;
            Memory::failAfter(n, shortage);
            try {
                opened = std::make_unique<Store>(file_, systemTime);
            } catch (const std::exception&) {
                ++raised;
            }
            failures = Memory::relent();
            EXPECT_TRUE(opened || failures > 0);
            failed += failures > 0 ? 1 : 0;
        }
    }
    printFault("opening the service's data", failed, raised);
    EXPECT_EQ(stored(), before);
    expectUsable();
}

TEST_F(ServiceWithoutMemory, LogsAWholeLineOrNone) {
    std::string last;
    last.reserve(1'000);
    Log log([&last](std::string_view line) { last = line; }, [this] { return now_; });
    int failed = 0;
    int leftOut = 0;
    for (long n = 0, failures = 1; failures > 0; ++n) {
        last.clear();
        Memory::failAfter(n, Memory::Shortage::kLasting);
        EXPECT_NO_THROW(log.write("command_failed", {{"reason", "the reason, in some words"}}));
        failures = Memory::relent();
        EXPECT_TRUE(last.ends_with("the reason, in some words\"}\n") ||
                    (failures > 0 && last.empty()));
        failed += failures > 0 ? 1 : 0;
        leftOut += last.empty() ? 1 : 0;
    }
    printFault("the service's log", failed, leftOut);
}

TEST_F(ServiceWithoutMemory, GivesTheAddressesOrNone) {
    settings_.privacyAddresses.privacy = "https://example.com/privacy";
    run("get-privacy-documents command",
        "::GET_PRIVACY_DOCUMENTS::", answerTo("::GET_PRIVACY_DOCUMENTS::"), 0);
}

}  // namespace
}  // namespace Orvel::Service
