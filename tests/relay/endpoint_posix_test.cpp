#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <optional>
#include <stdexcept>

#include "orvel/relay/server.h"
#include "relay/wire/endpoint.h"

namespace Orvel::Relay::Wire {
namespace {

using testing::ElementsAre;

// An environment variable with another value, or without one, for the length of a test.
class EnvironmentVariable {
  public:
    EnvironmentVariable(const char* name, const char* value) : name_(name) {
        if (const char* before = ::getenv(name)) {
            before_ = before;
        }
        set(value);
    }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;
    ~EnvironmentVariable() { set(before_ ? before_->c_str() : nullptr); }

  private:
    void set(const char* value) {
        if (value == nullptr) {
            ::unsetenv(name_);
        } else {
            ::setenv(name_, value, 1);
        }
    }

    const char* name_;
    std::optional<std::string> before_;
};

TEST(EndpointPaths, ChosenFolderExcludesTheOthers) {
    EXPECT_THAT(pathsToTry({"/chosen", "/machine", "/user"}, "Name"),
                ElementsAre("/chosen/Name.sock"));
}

TEST(EndpointPaths, MachineComesBeforeUser) {
    EXPECT_THAT(pathsToTry({"", "/machine", "/user"}, "Name"),
                ElementsAre("/machine/Name.sock", "/user/Name.sock"));
    EXPECT_THAT(pathsToTry({"", "/machine", ""}, "Name"), ElementsAre("/machine/Name.sock"));
}

TEST(EndpointFolders, AreReadFromTheEnvironment) {
    const EnvironmentVariable chosen("ORVEL_RPC_DIRECTORY", "/some/where");
    const EnvironmentVariable runtime("XDG_RUNTIME_DIR", "/run/user/1000");
    const EndpointFolders folders = foldersOfThisProcess();
    EXPECT_EQ(folders.chosen, "/some/where");
    EXPECT_EQ(folders.machine, "/run/orvel");
    EXPECT_EQ(folders.user, "/run/user/1000/orvel");
}

TEST(EndpointFolders, AreUnknownWhenTheEnvironmentDoesNotSay) {
    const EnvironmentVariable chosen("ORVEL_RPC_DIRECTORY", nullptr);
    for (const char* value : {static_cast<const char*>(nullptr), "", "relative/folder"}) {
        const EnvironmentVariable runtime("XDG_RUNTIME_DIR", value);
        const EndpointFolders folders = foldersOfThisProcess();
        EXPECT_EQ(folders.chosen, "");
        EXPECT_EQ(folders.user, "");
    }
}

TEST(EndpointSocket, OfAServerIsAmongThoseThatItsClientsTry) {
    const EnvironmentVariable runtime("XDG_RUNTIME_DIR", "/run/user/1000");
    for (const char* value : {static_cast<const char*>(nullptr), "/some/where"}) {
        const EnvironmentVariable chosen("ORVEL_RPC_DIRECTORY", value);
        EXPECT_THAT(pathsToTry(foldersOfThisProcess(), "Name"),
                    testing::Contains(Server::endpointSocket("Name").string()));
    }
}

TEST(EndpointSocket, OfAMalformedNameIsRefused) {
    EXPECT_THROW(Server::endpointSocket(""), std::invalid_argument);
    EXPECT_THROW(Server::endpointSocket("../Name"), std::invalid_argument);
}

}  // namespace
}  // namespace Orvel::Relay::Wire
