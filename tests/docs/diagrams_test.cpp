/// The diagrams of the pages: what they draw is what happens.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <regex>
#include <set>
#include <utility>

#include "docs/pages.h"
#include "orvel/analytics.h"
#include "orvel/relay/rpc_client.h"

namespace {

using Orvel::TestSupport::blocksOf;

const char* const kPage = "docs/guide/delivery.md";

using Lines = std::vector<std::string>;

/// The page's diagram whose first line is this.
Lines diagram(const std::string& firstLine) {
    for (const Lines& block : blocksOf(kPage, "mermaid")) {
        if (!block.empty() && block.front() == firstLine) {
            return block;
        }
    }
    return {};
}

/// What goes from one participant of the conversation to another, in its order.
struct Message {
    std::string from;
    std::string to;
    std::string text;
    bool operator==(const Message&) const = default;
};

std::vector<Message> drawnMessages() {
    static const std::regex kMessage(R"( +(\w+)--?>>(\w+): (.+))");
    std::vector<Message> messages;
    for (const std::string& line : diagram("sequenceDiagram")) {
        std::smatch parts;
        if (std::regex_match(line, parts, kMessage)) {
            messages.push_back({parts[1], parts[2], parts[3]});
        }
    }
    return messages;
}

/// What a session said to its client, and the answers that it gets.
std::vector<Message> heard;
std::vector<std::string> answers;

class DrawnClient final : public Orvel::Relay::Client::Core::RpcClient {
  public:
    std::int32_t OpenConnection(Orvel::Relay::WideString /*argument*/) override {
        heard.push_back({"Lib", "Srv", "connect"});
        return 0;
    }
    std::int32_t ExecuteCommand(Orvel::Relay::WideString /*target*/, std::uint32_t /*argument*/,
                                Orvel::Relay::WideString command,
                                Orvel::Relay::WideString& reply) override {
        heard.push_back({"Lib", "Srv", Orvel::toUtf8(command)});
        if (answers.empty()) {
            return Orvel::Relay::Status::kConnectionLost;
        }
        heard.push_back({"Srv", "Lib", answers.front()});
        reply = Orvel::toWide(answers.front());
        answers.erase(answers.begin());
        return 0;
    }
    std::int32_t CloseConnection() override {
        heard.push_back({"Lib", "Srv", "disconnect"});
        return 0;
    }
};

/// Whether a text is as drawn, where … stands for anything.
bool isAsDrawn(const std::string& text, const std::string& drawn) {
    const std::string ellipsis = "…";
    const std::size_t at = drawn.find(ellipsis);
    return at == std::string::npos ? text == drawn
                                   : text.starts_with(drawn.substr(0, at)) &&
                                         text.ends_with(drawn.substr(at + ellipsis.size()));
}

TEST(ConversationDiagram, IsTheConversation) {
    const std::vector<Message> drawn = drawnMessages();
    ASSERT_EQ(drawn.size(), 8U);
    answers.clear();
    for (const Message& message : drawn) {
        if (message.from == "Srv") {
            answers.push_back(message.text);
        }
    }
    EXPECT_THAT(answers, testing::ElementsAre("MyApp::ACK::", "MyApp::SUCCESS::"))
        << "what the service replies; the blocks of docs/service.md are sent to it";

    AnalyticsSession session(ORVEL_TEXT("MyApp"), ORVEL_TEXT("1.0"));
    heard = {{"App", "Lib", "SendEvents()"}};
    const auto result = session.SendEvents();
    ASSERT_EQ(result, Orvel::Analytics::Emitters::AnalyticsResult::Success);
    heard.push_back({"Lib", "App", "Success"});

    ASSERT_EQ(heard.size(), drawn.size());
    for (std::size_t at = 0; at < drawn.size(); ++at) {
        EXPECT_EQ(heard[at].from, drawn[at].from) << at;
        EXPECT_EQ(heard[at].to, drawn[at].to) << at;
        EXPECT_TRUE(isAsDrawn(heard[at].text, drawn[at].text)) << heard[at].text;
    }
}

/// The road of an event leads from its beginning to everything that is drawn.
TEST(RoadDiagram, IsOneRoad) {
    static const std::regex kEdge(R"( +([A-Z]\d?)(?:[\[{].*)? -->(?:\|[^|]*\|)? ?([A-Z]\d?)\b.*)");
    std::vector<std::pair<std::string, std::string>> edges;
    std::set<std::string> places;
    const Lines lines = diagram("flowchart TD");
    for (std::size_t at = 1; at < lines.size(); ++at) {
        std::smatch parts;
        ASSERT_TRUE(std::regex_match(lines[at], parts, kEdge)) << lines[at];
        edges.emplace_back(parts[1], parts[2]);
        places.insert({parts[1], parts[2]});
    }
    EXPECT_GT(edges.size(), 10U);
    std::set<std::string> reached = {"A"};
    for (std::size_t before = 0; before != reached.size();) {
        before = reached.size();
        for (const auto& [from, to] : edges) {
            if (reached.contains(from)) {
                reached.insert(to);
            }
        }
    }
    EXPECT_EQ(reached, places);
}

TEST(RoadDiagram, NamesOperationsAndResultsThatThereAre) {
    const std::string results = Orvel::TestSupport::contentOf("include/orvel/analytics/result.h");
    const std::string operations =
        Orvel::TestSupport::contentOf("include/orvel/analytics/session.h");
    static const std::regex kName(R"(\b([A-Z][a-z]+(?:[A-Z][a-z]+)+|Success)\b)");
    int names = 0;
    for (const std::string& line : diagram("flowchart TD")) {
        for (std::sregex_iterator at(line.begin(), line.end(), kName), end; at != end; ++at) {
            const std::string name = (*at)[1];
            EXPECT_TRUE(results.find(' ' + name + " = ") != std::string::npos ||
                        operations.find(' ' + name + '(') != std::string::npos)
                << name;
            ++names;
        }
    }
    EXPECT_GE(names, 6);
}

}  // namespace

std::shared_ptr<Orvel::Relay::Client::Core::RpcClient>
Orvel::Relay::Client::Native::RpcClient::GetClientForEndpoint(WideString /*endpoint*/) {
    return std::make_shared<DrawnClient>();
}
