#include "cli/data_class_file.h"

#include <gmock/gmock.h>

#include <fstream>

#include "cli/failure.h"
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
    EXPECT_EQ(dataClass.name, u"名");
    EXPECT_EQ(dataClass.id, u"x");
    EXPECT_EQ(dataClass.version, u"1.0");
    const auto fields = dataClass.getFields();
    ASSERT_EQ(fields.size(), 2U);
    EXPECT_EQ(fields.front().id, u"a");
    EXPECT_EQ(fields.front().name, u"A é");
    EXPECT_EQ(fields.front().nullable, u"False");
    EXPECT_EQ(fields.front().type, u"integer");
    EXPECT_EQ(fields.back().id, u"b");
    EXPECT_EQ(fields.back().nullable, u"");
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
    EXPECT_THAT(failure((folder.path() / "none").string()), HasSubstr("No such file"));
    EXPECT_THAT(failure(folder.path().string()), HasSubstr("Is a directory"));
}

TEST(DataClassFileTest, AFileWithoutEndIsRefusedBeforeItFillsTheMemory) {
    try {
        static_cast<void>(readDataClassFile("/dev/zero"));
        FAIL() << "accepted";
    } catch (const Failure& failure) {
        EXPECT_THAT(failure.what(), HasSubstr("larger than 16 MiB"));
    }
}

TEST(DataClassFileTest, AFileIsReadWhole) {
    const Support::TemporaryFolder folder;
    const std::string path = (folder.path() / "class.json").string();
    std::ofstream(path) << "\xEF\xBB\xBF"
                        << R"({"name":"n","id":"x","version":"1","fields":[]})" << '\n';
    EXPECT_EQ(readDataClassFile(path).id, u"x");
}

}  // namespace
}  // namespace Orvel::Tool
