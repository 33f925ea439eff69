#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <vector>

#include "relay/wire/endpoint.h"

namespace Orvel::Relay::Wire {
namespace {

using testing::ElementsAre;

// The variable that chooses a folder, with a value or without one for the length of a test.
class ChosenFolder {
  public:
    explicit ChosenFolder(const wchar_t* value) { set(value); }
    ChosenFolder(const ChosenFolder&) = delete;
    ChosenFolder& operator=(const ChosenFolder&) = delete;
    ~ChosenFolder() { set(nullptr); }

  private:
    static void set(const wchar_t* value) {
        ::SetEnvironmentVariableW(L"ORVEL_RPC_DIRECTORY", value);
    }
};

std::vector<std::string> pathsOfThisProcess() {
    return pathsToTry(foldersOfThisProcess(), "Some.Name");
}

TEST(EndpointPipes, AreThoseOfTheMachine) {
    for (const wchar_t* value : {static_cast<const wchar_t*>(nullptr), L""}) {
        const ChosenFolder chosen(value);
        EXPECT_THAT(pathsOfThisProcess(), ElementsAre(R"(\\.\pipe\orvel\Some.Name)"));
    }
}

TEST(EndpointPipes, AreThoseOfAChosenFolderAlone) {
    for (const std::wstring& name : {std::wstring(L"a-test_1.x"), std::wstring(64, L'x')}) {
        const ChosenFolder chosen(name.c_str());
        const std::string narrow(name.begin(), name.end());
        EXPECT_THAT(pathsOfThisProcess(), ElementsAre(R"(\\.\pipe\)" + narrow + R"(\Some.Name)"));
    }
}

TEST(EndpointPipes, AreNoneWhenTheChosenFolderCouldLeadElsewhere) {
    const std::wstring tooLong(65, L'x');
    const std::wstring muchTooLong(30'000, L'x');
    for (const wchar_t* value :
         {L".", L"..", L"a\\b", L"..\\..\\other", L"\\\\other\\pipe", L"C:\\folder", L"/folder",
          L"a/b", L"a:b", L"a b", L" ", L"\u0141", tooLong.c_str(), muchTooLong.c_str()}) {
        const ChosenFolder chosen(value);
        EXPECT_TRUE(pathsOfThisProcess().empty()) << value;
    }
}

}  // namespace
}  // namespace Orvel::Relay::Wire
