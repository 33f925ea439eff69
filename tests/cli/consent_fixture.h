#ifndef ORVEL_CLI_CONSENT_FIXTURE_H
#define ORVEL_CLI_CONSENT_FIXTURE_H

#include <nlohmann/json.hpp>

#include <map>
#include <string>
#include <vector>

#include "cli/tool_fixture.h"

namespace Orvel::Tool {

/// Runs the tool against a scripted service that keeps a consent record.
class ConsentTest : public ToolTest {
  protected:
    ConsentTest();

    /// The commands that talk to the service about consent, each with all that it needs.
    static std::vector<std::vector<std::string>> everyCommand() {
        return {{"consent", "get"}, {"consent", "set", "--marketing", "rejected"}, {"documents"}};
    }

    /// Makes the service answer the commands with this token with the error of this name.
    void refuse(const std::string& token, const std::string& name);

    /// The service is there for so many connections and is gone then.
    void leaveAfter(std::size_t connections);

    /// The record in force. A change replaces its permissions and its timestamp.
    nlohmann::json record;
    /// Replies of another kind, for the commands with this token.
    std::map<std::string, std::string> replies;

  private:
    std::string replyTo(const std::string& command);
};

}  // namespace Orvel::Tool

#endif
