#include "cli/data_class_file.h"

#include <gmock/gmock.h>

#include <fstream>

#include "cli/failure.h"
#include "cli/tool_fixture.h"
#include "support/temporary_folder.h"

namespace Orvel::Tool {
namespace {

using testing::HasSubstr;

std::string failureOf(std::string_view text) {
    try {
        static_cast<void>(parseDataClass(text, "class.json"));
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.status(), ExitStatus::Usage);
        return failure.what();
    }
    return "accepted";
}

TEST(DataClassFileTest, HoldsTheMembersOfTheRegistration) {
    FileDataClass dataClass = parseDataClass(
        R"json({"version":"1.0","fields":[
              {"type":"integer","nullable":"False","name":"A \u00e9","id":"a"},
              {"id":"b","name":"","nullable":"","type":"varchar(3)"}],
            "name":"名","id":"x"})json",
        "class.json");
    EXPECT_EQ(dataClass.name, ORVEL_TEXT("名"));
    EXPECT_EQ(dataClass.id, ORVEL_TEXT("x"));
    EXPECT_EQ(dataClass.version, ORVEL_TEXT("1.0"));
    const auto fields = dataClass.getFields();
    ASSERT_EQ(fields.size(), 2U);
    EXPECT_EQ(fields.front().id, ORVEL_TEXT("a"));
    EXPECT_EQ(fields.front().name, ORVEL_TEXT("A é"));
    EXPECT_EQ(fields.front().nullable, ORVEL_TEXT("False"));
    EXPECT_EQ(fields.front().type, ORVEL_TEXT("integer"));
    EXPECT_EQ(fields.back().id, ORVEL_TEXT("b"));
    EXPECT_EQ(fields.back().nullable, ORVEL_TEXT(""));
}

TEST(DataClassFileTest, MayHaveNoFields) {
    EXPECT_TRUE(
        parseDataClass(R"({"name":"","id":"","version":"","fields":[]})", "f").fields.empty());
}

TEST(DataClassFileTest, AnErrorOfSyntaxIsToldWithLineAndColumn) {
    EXPECT_THAT(failureOf("{\n  \"name\": x\n}"),
                HasSubstr("class.json:2:11: not JSON: syntax error"));
    EXPECT_THAT(failureOf("[}"), HasSubstr("class.json:1:2: not JSON: "));
}

TEST(DataClassFileTest, TextThatIsNoJsonIsRefused) {
    for (const char* text : {"", "{", "{}x", "{\"a\":1,}", "// c\n{}", "\"\\ud800\"", "\"\xFF\""}) {
        EXPECT_THAT(failureOf(text), HasSubstr("not JSON: ")) << text;
    }
}

TEST(DataClassFileTest, ANullCharacterDoesNotHideWhatFollowsIt) {
    using namespace std::string_view_literals;
    const std::string good = R"({"name":"","id":"","version":"","fields":[]})";
    EXPECT_EQ(failureOf(good), "accepted");
    EXPECT_EQ(failureOf(good + std::string("\0anything"sv)),
              "class.json:1:45: not JSON: a null character");
    EXPECT_THAT(failureOf("{\"name\":\0}"sv), HasSubstr("not JSON: "));
}

TEST(DataClassFileTest, AMissingMemberIsNamedWithItsPlace) {
    EXPECT_EQ(failureOf(R"({"id":"x","version":"1","fields":[]})"),
              "class.json: member \"name\" is missing");
    EXPECT_EQ(failureOf(R"({"name":"n","version":"1","fields":[]})"),
              "class.json: member \"id\" is missing");
    EXPECT_EQ(failureOf(R"({"name":"n","id":"x","fields":[]})"),
              "class.json: member \"version\" is missing");
    EXPECT_EQ(failureOf(R"({"name":"n","id":"x","version":"1"})"),
              "class.json: member \"fields\" is missing");
    EXPECT_EQ(failureOf(R"({"name":"n","id":"x","version":"1","fields":[
                  {"id":"a","name":"A","nullable":"true","type":"t"},{"id":"b"}]})"),
              "class.json: fields[1]: member \"name\" is missing");
}

TEST(DataClassFileTest, AWrongTypeIsNamedWithItsPlace) {
    EXPECT_EQ(failureOf("[]"), "class.json: must be an object, not an array");
    EXPECT_EQ(failureOf(R"({"name":"n","id":"x","version":1.0,"fields":[]})"),
              "class.json: member \"version\" must be a text in quotes, not a number");
    EXPECT_EQ(failureOf(R"({"name":"n","id":"x","version":"1","fields":{}})"),
              "class.json: member \"fields\" must be an array, not an object");
    EXPECT_EQ(failureOf(R"({"name":"n","id":"x","version":"1","fields":["a"]})"),
              "class.json: fields[0]: must be an object, not a text");
    EXPECT_EQ(failureOf(R"({"name":"n","id":"x","version":"1","fields":[
                  {"id":"a","name":"A","nullable":true,"type":"t"}]})"),
              "class.json: fields[0]: member \"nullable\" must be a text in quotes, not a boolean");
    EXPECT_EQ(failureOf(R"({"name":null,"id":"x","version":"1","fields":[]})"),
              "class.json: member \"name\" must be a text in quotes, not null");
}

TEST(DataClassFileTest, AnUnknownMemberIsRefusedBecauseItIsAMistakeMoreOftenThanNot) {
    EXPECT_EQ(failureOf(R"({"name":"n","id":"x","version":"1","fields":[],"filds":[]})"),
              "class.json: unknown member \"filds\"");
}

TEST(DataClassFileTest, AMemberThatStandsTwiceIsRefused) {
    EXPECT_THAT(failureOf(R"({"name":"n","id":"x","\u0069d":"y","version":"1","fields":[]})"),
                HasSubstr("member \"id\" stands twice in one object"));
    EXPECT_THAT(failureOf(R"({"name":"n","id":"x","version":"1","fields":[
                    {"id":"a","id":"b","name":"A","nullable":"true","type":"t"}]})"),
                HasSubstr("member \"id\" stands twice in one object"));
}

TEST(DataClassFileTest, DeepNestingIsRefusedAndNotFollowed) {
    EXPECT_THAT(failureOf(std::string(1'000'000, '[')), HasSubstr("nested deeper"));
}

TEST(DataClassFileTest, AFileThatCannotBeReadIsToldWithTheReason) {
    const Support::TemporaryFolder folder;
    const auto failure = [](const std::string& path) -> std::string {
        try {
            static_cast<void>(readDataClassFile(path));
            return "accepted";
        } catch (const Failure& caught) {
            EXPECT_EQ(caught.status(), ExitStatus::Usage);
            return caught.what();
        }
    };
    EXPECT_THAT(failure(argumentFor(folder.path() / "none")), HasSubstr("No such file"));
    EXPECT_THAT(failure(argumentFor(folder.path())), HasSubstr("is a folder"));
}

TEST(DataClassFileTest, AFileBeyondTheLimitIsRefused) {
    const Support::TemporaryFolder folder;
    const auto path = folder.path() / "large.json";
    std::ofstream(path).close();
    std::filesystem::resize_file(path, (16U << 20) + 1);
    try {
        static_cast<void>(readDataClassFile(argumentFor(path)));
        FAIL() << "accepted";
    } catch (const Failure& failure) {
        EXPECT_THAT(failure.what(), HasSubstr("larger than 16 MiB"));
    }
}

TEST(DataClassFileTest, AFileIsReadWholeWhateverItsName) {
    const Support::TemporaryFolder folder;
    const auto path = folder.path() / std::filesystem::path(u8"cl\u00E9 \u6F22.json");
    std::ofstream(path) << "\xEF\xBB\xBF"
                        << R"({"name":"n","id":"x","version":"1","fields":[]})" << '\n';
    EXPECT_EQ(readDataClassFile(argumentFor(path)).id, ORVEL_TEXT("x"));
}

}  // namespace
}  // namespace Orvel::Tool
