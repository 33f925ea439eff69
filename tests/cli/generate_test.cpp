#include "cli/generate.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "cli/cpp_text.h"
#include "cli/output_file.h"
#include "cli/tool_fixture.h"

namespace Orvel::Tool {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class GenerateTest : public ToolTest {
  protected:
    ToolRun generate(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(),
                         {"generate", "--output", argumentFor(output()), "--data-class"});
        return run(std::move(arguments));
    }

    std::filesystem::path output() const { return folder.path() / "made" / "here"; }

    std::string read(const std::string& name) const {
        std::ifstream in(output() / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    /// The names of what the output folder holds.
    std::vector<std::string> files() const {
        std::vector<std::string> names;
        if (std::filesystem::exists(output())) {
            for (const auto& entry : std::filesystem::directory_iterator(output())) {
                names.push_back(entry.path().filename().string());
            }
        }
        std::sort(names.begin(), names.end());
        return names;
    }
};

/// A data class with these fields.
std::string classWith(const std::string& id, const std::string& fields) {
    return R"({"name":"n","id":")" + id + R"(","version":"1","fields":[)" + fields + "]}";
}

std::string fieldOf(const std::string& id, const std::string& type) {
    return R"({"id":")" + id + R"(","name":"","nullable":"true","type":")" + type + "\"}";
}

TEST_F(GenerateTest, WritesAHeaderAndASourceAndSaysSo) {
    const ToolRun result = generate({write("some.json", kDataClass)});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "wrote " + nameOf(output() / "some.h") + "\nwrote " +
                              nameOf(output() / "some.cpp") + "\n");
    EXPECT_THAT(files(), testing::ElementsAre("some.cpp", "some.h")) << "and no draft";
    EXPECT_THAT(read("some.h"), AllOf(HasSubstr("class ClsDataClass final"),
                                      HasSubstr("ClsEvent& setText(const ::Orvel::Analytics::"
                                                "TypedEvents::Text<5>& value);"),
                                      Not(HasSubstr("namespace"))));
    EXPECT_THAT(read("some.cpp"), HasSubstr("#include \"some.h\""));
}

TEST_F(GenerateTest, AFileThatWouldNotChangeIsNotTouched) {
    const std::string first = write("first.json", classWith("a", ""));
    const std::string second = write("second.json", classWith("b", fieldOf("x", "integer")));
    ASSERT_EQ(generate({first, second}).status, 0);
    for (const std::string& name : files()) {
        const auto path = output() / name;
        const auto earlier = std::filesystem::last_write_time(path) - std::chrono::hours(24);
        std::filesystem::last_write_time(path, earlier);
    }
    const auto firstWas = std::filesystem::last_write_time(output() / "first.h");
    const auto secondWas = std::filesystem::last_write_time(output() / "second.h");
    write("second.json", classWith("b", fieldOf("y", "integer")));
    const ToolRun result = generate({first, second});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(result.out, AllOf(HasSubstr("unchanged " + nameOf(output() / "first.h")),
                                  HasSubstr("unchanged " + nameOf(output() / "first.cpp")),
                                  HasSubstr("wrote " + nameOf(output() / "second.h")),
                                  HasSubstr("wrote " + nameOf(output() / "second.cpp"))));
    EXPECT_EQ(std::filesystem::last_write_time(output() / "first.h"), firstWas);
    EXPECT_NE(std::filesystem::last_write_time(output() / "second.h"), secondWas);
}

TEST_F(GenerateTest, NothingIsWrittenWhenOneFileCannotBeUsed) {
    const ToolRun result =
        generate({write("good.json", kDataClass), write("bad.json", "{\"name\":\n 1}")});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.out, IsEmpty());
    EXPECT_THAT(files(), IsEmpty());
}

TEST_F(GenerateTest, WhatNoCodeCanBeMadeOfIsToldWithItsPlace) {
    const std::string twice = fieldOf("a", "t") + ",\n  " + fieldOf("a", "t");
    EXPECT_THAT(generate({write("twice.json", classWith("c", twice))}).err,
                HasSubstr("twice.json:2:3: fields[1]: the id \"a\" stands in an earlier field"));
    EXPECT_THAT(
        generate({write("huge.json", classWith("c", fieldOf("a", "varchar(2147483648)")))}).err,
        HasSubstr("huge.json:1:46: fields[0]: the length in the type \"varchar(2147483648)\" is "
                  "not within 32 bits"));
}

TEST_F(GenerateTest, TwoFilesMustNotBecomeOne) {
    std::filesystem::create_directories(folder.path() / "other");
    const std::string first = write("same.json", classWith("a", ""));
    EXPECT_THAT(generate({first, write("other/same.json", classWith("b", ""))}).err,
                HasSubstr("the header \"same.h\" is that of"));
    EXPECT_THAT(generate({first, write("else.json", classWith("-a-", ""))}).err,
                HasSubstr("the class \"AEvent\" is that of"));
}

TEST_F(GenerateTest, TheNamespaceIsThatOfTheCommandLine) {
    const std::string file = write("some.json", kDataClass);
    ASSERT_EQ(generate({file, "--namespace", "my_app::events"}).status, 0);
    EXPECT_THAT(read("some.h"), HasSubstr("namespace my_app::events {"));
    for (const char* name : {"a::", "::a", "1a", "a b", "a:b", "class", "a::int", "std", "_a",
                             "a__b", "a-b", "\xC3\xA9"}) {
        const ToolRun result = generate({file, std::string("--namespace=") + name});
        EXPECT_EQ(result.status, 2) << name;
    }
}

TEST_F(GenerateTest, AFolderThatCannotBeThereIsWrongUsage) {
    const std::string file = write("some.json", kDataClass);
    const ToolRun result = run({"generate", "--data-class", file, "--output", file});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr("is no folder"));
}

TEST_F(GenerateTest, AFileThatCannotBeWrittenIsAFailureWithoutTraces) {
    const std::string file = write("some.json", kDataClass);
    std::filesystem::create_directories(output() / "some.h" / "in the way");
    const ToolRun result = generate({file});
    EXPECT_EQ(result.status, 4);
    EXPECT_THAT(result.err, HasSubstr("some.h: cannot be written: "));
    EXPECT_THAT(files(), testing::ElementsAre("some.h")) << "and no draft";
}

TEST_F(GenerateTest, TheGeneratedFilesAreAsciiWhateverTheDataClassHolds) {
    const std::string file = write("some.json",
                                   "{\"name\":\"\xC3\xA9 \\n\\u202e\",\"id\":\"\xF0\x9F\x93\x9D\","
                                   "\"version\":\"\\u0000\",\"fields\":[]}");
    ASSERT_EQ(generate({file}).status, 0);
    for (const std::string& content : {read("some.h"), read("some.cpp")}) {
        EXPECT_TRUE(std::all_of(content.begin(), content.end(), [](char letter) {
            return letter == '\n' || (letter >= ' ' && letter <= '~');
        })) << content;
    }
    EXPECT_THAT(read("some.cpp"), HasSubstr("ORVEL_TEXT(\"\\U0001F4DD\")"));
}

TEST(CppText, ALiteralHoldsNothingThatASourceWouldMisread) {
    EXPECT_EQ(cppLiteral(ORVEL_TEXT("a\"b\\c\?\?/")), R"("a\"b\\c\?\?/")");
    EXPECT_EQ(cppLiteral(ORVEL_TEXT("\n\x7f"
                                    "1")),
              R"("\012\1771")");
    EXPECT_EQ(cppLiteral(WideString(1, WideChar{0})), R"("\000")");
    EXPECT_EQ(cppLiteral(ORVEL_TEXT("é📝")), R"("\u00E9\U0001F4DD")");
    EXPECT_EQ(cppLiteral(ORVEL_TEXT("")), R"("")");
}

TEST(CppText, NamesAreMadeOfWords) {
    EXPECT_EQ(camelName(ORVEL_TEXT("duration_ms"), "field"), "durationMs");
    EXPECT_EQ(camelName(ORVEL_TEXT("Some name here"), "field"), "someNameHere");
    EXPECT_EQ(camelName(ORVEL_TEXT("alreadyCamel"), "field"), "alreadyCamel");
    EXPECT_EQ(camelName(ORVEL_TEXT("ID"), "field"), "id");
    EXPECT_EQ(camelName(ORVEL_TEXT("clé d'accès"), "field"), "clU00E9DAccU00E8S");
    EXPECT_EQ(camelName(ORVEL_TEXT("📝"), "field"), "u1f4dd");
    EXPECT_EQ(camelName(ORVEL_TEXT(""), "field"), "field");
    EXPECT_EQ(camelName(ORVEL_TEXT("-/?"), "field"), "field");
    EXPECT_EQ(camelName(ORVEL_TEXT("3d"), "field"), "field3d");
    EXPECT_EQ(camelName(WideString(1000, ORVEL_TEXT('x')), "field").size(), 100U);
    EXPECT_EQ(capitalised("name"), "Name");
}

TEST(CppText, EqualNamesAreNumbered) {
    DifferentNames names;
    EXPECT_EQ(names.give("a"), "a");
    EXPECT_EQ(names.give("a"), "a_2");
    EXPECT_EQ(names.give("b"), "b");
    EXPECT_EQ(names.give("a"), "a_3");
}

}  // namespace
}  // namespace Orvel::Tool
