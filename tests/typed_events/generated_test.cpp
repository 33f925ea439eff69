/// Generated classes and the real service: what is built is what is stored.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "3d-view.h"
#include "base.h"
#include "every_type.h"
#include "hostile.h"
#include "many_fields.h"
#include "namespace.h"
#include "nothing.h"
#include "orvel/analytics.h"
#include "support/service_process.h"

namespace {

using namespace corpus::Orvel;
using nlohmann::json;
using ::Orvel::Analytics::DataClass::BaseDataClass;
using ::Orvel::Analytics::Emitters::AnalyticsResult;
using ::Orvel::Analytics::TypedEvents::Value;
using ::Orvel::Support::Process;
using ::Orvel::Support::ServiceProcess;

// What every event must have is not to be left out.
static_assert(!std::is_default_constructible_v<EveryTypeEvent>);
static_assert(!std::is_default_constructible_v<EveryTypeEvent::Required>);
static_assert(std::is_default_constructible_v<BaseEvent>);
static_assert(std::is_default_constructible_v<ClassEvent>);

std::vector<json> jsonLines(const std::string& text) {
    std::vector<json> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(json::parse(line));
    }
    return lines;
}

json fileOf(const std::string& name) {
    std::ifstream in(std::string(ORVEL_DATA_CLASSES "/") + name);
    return json::parse(in);
}

class GeneratedClasses : public testing::Test {
  protected:
    GeneratedClasses() {
        service.start();
        service.useEndpoint();
    }

    /// Registers the class and sends the event.
    void report(BaseDataClass& dataClass, const ::Orvel::WideString& event) {
        ASSERT_EQ(session.RegisterDataClass(&dataClass), AnalyticsResult::Success);
        ASSERT_EQ(session.CollectEvent(&dataClass, event), AnalyticsResult::Success)
            << ::Orvel::toUtf8(event);
        ASSERT_EQ(session.SendEvents(), AnalyticsResult::Success) << ::Orvel::toUtf8(event);
    }

    /// The values of the only event that is stored, without those that the library gives it.
    json storedValues() {
        const auto events = jsonLines(service.run({"events", "--good", "--json"}).out);
        EXPECT_EQ(events.size(), 1U);
        json values = events.at(0).at("values");
        values.erase("DT");
        values.erase("V");
        return values;
    }

    ServiceProcess service{ORVEL_SERVICE_PROGRAM};
    AnalyticsSession session{ORVEL_TEXT("Typed"), ORVEL_TEXT("1.0")};
};

TEST_F(GeneratedClasses, AnEventOfEveryTypeIsStoredAsItWasBuilt) {
    EveryTypeDataClass dataClass;
    EveryTypeEvent event({.text = "first", .count = -7, .flag = true});
    event.setText("he said \"é 漢 📝\"")
        .setOtherText(ORVEL_TEXT("a\nb"))
        .setFree(std::string("\t\\/"))
        .setNational(::Orvel::WideString(ORVEL_TEXT("name")))
        .setOtherCount(2147483647)
        .setRatio(0.1)
        .setWhen("2026-01-31T12:00:00Z")
        .setDetails(Value::object({{"list", Value::array({1, "two", false})}}));
    report(dataClass, event.text());
    EXPECT_EQ(storedValues(), json::parse(R"json({
        "text": "he said \"é 漢 📝\"", "other_text": "a\nb", "free": "\t\\/",
        "national": "name", "count": -7, "other_count": 2147483647, "flag": true, "ratio": 0.1,
        "when": "2026-01-31T12:00:00Z", "details": {"list": [1, "two", false]}})json"));
}

TEST_F(GeneratedClasses, AnEventHasWhatWasSetAndNothingElse) {
    EveryTypeDataClass dataClass;
    report(dataClass, EveryTypeEvent({.text = "x", .count = 1, .flag = false}).text());
    EXPECT_EQ(storedValues(), json::parse(R"({"text":"x","count":1,"flag":false})"));
}

TEST_F(GeneratedClasses, HostileNamesComeThrough) {
    QuoteBackSlashU00E9U6F22U1F4DDEndDataClass dataClass;
    QuoteBackSlashU00E9U6F22U1F4DDEndEvent event({.int_ = "2",
                                                  .text = "4",
                                                  .values_2 = 6,
                                                  .required_2 = "8",
                                                  .version = 12,
                                                  .field = "14",
                                                  .field1st = "16",
                                                  .u00e9 = 18,
                                                  .aB = "22",
                                                  .aB_3 = 24,
                                                  .null = "26",
                                                  .eof = "28",
                                                  .field_5 = "32",
                                                  .field_7 = "34",
                                                  .u2028 = 36,
                                                  .u202e = "38"});
    event.setClass(0).setOperator("1").setThis(3).setValues("5").setRequired("7").setSet(9);
    event.setGetFields("10").setName("11").setValue("13").setField_2(15).setField1St("17");
    event.setU00c9("19").setU6f22U5B57("20").setU1f4dd(21).setAB_2("23").setAb("25").setErrno(27);
    event.setLinux("29").setField_3(30).setField_4("31").setField_6(33).setField_8("35");
    event.setU0085("37").setX(39).setField_9("40");
    report(dataClass, event.text());

    const json file = fileOf("hostile.json");
    const json values = storedValues();
    std::size_t checked = 0;
    for (std::size_t index = 0; index < file["fields"].size(); ++index) {
        const std::string id = file["fields"][index]["id"];
        if (values.contains(id)) {
            const json& value = values[id];
            EXPECT_EQ(value.is_string() ? value.get<std::string>() : value.dump(),
                      std::to_string(index))
                << id;
            ++checked;
        }
    }
    EXPECT_EQ(checked, 41U) << "all but DT, V and the last";
    EXPECT_EQ(values.size(), 41U);
}

TEST_F(GeneratedClasses, TheDataClassIsRegisteredAsItsFileHasIt) {
    QuoteBackSlashU00E9U6F22U1F4DDEndDataClass dataClass;
    ASSERT_EQ(session.RegisterDataClass(&dataClass), AnalyticsResult::Success);
    const json file = fileOf("hostile.json");
    EXPECT_EQ(::Orvel::toUtf8(dataClass.name), file["name"]);
    EXPECT_EQ(::Orvel::toUtf8(dataClass.id), file["id"]);
    EXPECT_EQ(::Orvel::toUtf8(dataClass.version), file["version"]);
    std::size_t index = 0;
    for (const auto& field : dataClass.getFields()) {
        const json& expected = file["fields"].at(index++);
        EXPECT_EQ(::Orvel::toUtf8(field.id), expected["id"]);
        EXPECT_EQ(::Orvel::toUtf8(field.name), expected["name"]);
        EXPECT_EQ(::Orvel::toUtf8(field.type), expected["type"]);
        EXPECT_EQ(::Orvel::toUtf8(field.nullable), expected["nullable"]);
    }
    EXPECT_EQ(index, file["fields"].size());
}

TEST_F(GeneratedClasses, FieldsThatTheLibraryFillsNeedNoValue) {
    NamespaceDataClass dataClass;
    report(dataClass, NamespaceEvent({.namespace_ = "here"}).text());
    EXPECT_EQ(storedValues(), json::parse(R"({"namespace":"here"})"));
}

TEST_F(GeneratedClasses, ManyFieldsAreAllSet) {
    ManyFieldsDataClass dataClass;
    EXPECT_EQ(dataClass.getFields().size(), 100U);
    ManyFieldsEvent event;
    event.setF5("first").setF99("last");
    report(dataClass, event.text());
    EXPECT_EQ(storedValues(), json::parse(R"({"f5":"first","f99":"last"})"));
}

TEST_F(GeneratedClasses, NamesOfTheLibraryAndOfNumbersAreNamesLikeOthers) {
    BaseDataClass* base = nullptr;
    corpus::Orvel::BaseDataClass dataClass;
    base = &dataClass;
    report(*base, BaseEvent().setOrvel(1).setStd(2).text());
    EXPECT_EQ(storedValues(), json::parse(R"({"Orvel":1,"std":2})"));
    Class3DViewDataClass view;
    EXPECT_EQ(session.CollectEvent(&view, Class3DViewEvent({.field1st = 1}).text()),
              AnalyticsResult::Success);
}

TEST_F(GeneratedClasses, AnEventWithoutValuesIsTheLibrarysToJudge) {
    ClassDataClass dataClass;
    EXPECT_TRUE(dataClass.getFields().empty());
    EXPECT_EQ(::Orvel::toUtf8(ClassEvent().text()), "{}");
    EXPECT_EQ(session.CollectEvent(&dataClass, ClassEvent().text()),
              AnalyticsResult::MalformedJson);
}

TEST_F(GeneratedClasses, ATextOfTheRightTypeMayStillBeTooLong) {
    EveryTypeDataClass dataClass;
    EveryTypeEvent event({.text = "x", .count = 1, .flag = false});
    event.setOtherText(std::string("sixsix"));
    EXPECT_EQ(session.CollectEvent(&dataClass, event.text()), AnalyticsResult::FieldValueTooLong);
}

TEST_F(GeneratedClasses, TheProgramOfThePageStoresItsEvent) {
    const Process::Output program = ::Orvel::Support::runProgram(ORVEL_PAGE_PROGRAM, {});
    EXPECT_EQ(program.status, 0) << program.error;
    EXPECT_EQ(program.out + program.error, "");
    EXPECT_EQ(storedValues(), json::parse(R"json({
        "action": "save", "duration_ms": 12, "document": "Résumé \"final\".odt",
        "options": {"theme": "dark", "zoom": 1.25, "panels": ["files", 3]}})json"));
}

}  // namespace
