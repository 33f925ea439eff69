/// The programs of the README, run as they stand there.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "support/service_process.h"

namespace {

using nlohmann::json;
using Orvel::Support::Process;
using Orvel::Support::runProgram;
using Orvel::Support::ServiceProcess;

class Readme : public testing::Test {
  protected:
    Readme() {
        service.useSettings("privacy_documents.privacyurl = 'https://example.com/privacy'\n");
        service.start();
        service.useEndpoint();
    }

    /// The only event that is stored.
    json stored() {
        const Process::Output events = service.run({"events", "--json"});
        EXPECT_EQ(std::count(events.out.begin(), events.out.end(), '\n'), 1) << events.out;
        return json::parse(events.out);
    }

    ServiceProcess service{ORVEL_SERVICE_PROGRAM};
};

TEST_F(Readme, TheFirstProgramStoresItsEvent) {
    const Process::Output program = runProgram(README_FIRST_PROGRAM, {});
    EXPECT_EQ(program.status, 0) << program.error;
    EXPECT_EQ(program.out + program.error, "");
    EXPECT_EQ(stored()["class"], "click");
    EXPECT_EQ(stored()["values"]["button"], "save");
}

TEST_F(Readme, TheFirstProgramSaysWhenNobodyIsThere) {
    service.stop();
    EXPECT_EQ(runProgram(README_FIRST_PROGRAM, {}).status, 1);
}

TEST_F(Readme, TheProgramWithFieldsReportsWhatIsTooLong) {
    const Process::Output program = runProgram(README_FIELDS_PROGRAM, {});
    EXPECT_EQ(program.status, 0) << program.error;
    EXPECT_EQ(program.out, "0 29\n");
    EXPECT_EQ(stored()["values"]["page"], "Start");
}

TEST_F(Readme, TheProgramAboutConsentChangesIt) {
    const Process::Output program = runProgram(README_CONSENT_PROGRAM, {});
    EXPECT_EQ(program.status, 0) << program.error;
    EXPECT_EQ(program.out, "https://example.com/privacy\n");
    const json consent = json::parse(service.run({"consent", "--json"}).out);
    EXPECT_NE(consent.dump().find(R"("support":"Accepted")"), std::string::npos) << consent;
}

TEST_F(Readme, TheProgramAboutConsentSaysWhyItChangedNothing) {
    service.stop();
    const Process::Output nobody = runProgram(README_CONSENT_PROGRAM, {});
    EXPECT_EQ(nobody.status, 1);
    EXPECT_EQ(nobody.error, "The consent was not changed: 1\n");
    service.useSettings("managed = true\n");
    service.start();
    const Process::Output managed = runProgram(README_CONSENT_PROGRAM, {});
    EXPECT_EQ(managed.status, 1);
    EXPECT_EQ(managed.error, "The consent was not changed: 19\n");
}

}  // namespace
