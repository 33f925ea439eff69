#include "dataclass/registration.h"

#include <gtest/gtest.h>

#include "support/data_classes.h"

namespace {

using Orvel::WideString;
using Orvel::Analytics::DataClass::registrationDocument;
using Orvel::TestSupport::field;
using Orvel::TestSupport::TestDataClass;

TEST(RegistrationDocument, HoldsTheClassAndItsFieldsInOrder) {
    TestDataClass dataClass({field(ORVEL_TEXT("b"), ORVEL_TEXT("integer"), ORVEL_TEXT("false")),
                             field(ORVEL_TEXT("a"), ORVEL_TEXT("varchar(32)"))});
    EXPECT_EQ(registrationDocument(dataClass),
              ORVEL_TEXT("{\"name\":\"Event\",\"id\":\"Evt\",\"version\":\"1.0\",\"fields\":["
                         "{\"id\":\"b\",\"name\":\"b name\",\"nullable\":\"false\","
                         "\"type\":\"integer\"},"
                         "{\"id\":\"a\",\"name\":\"a name\",\"nullable\":\"true\","
                         "\"type\":\"varchar(32)\"}]}"));
    EXPECT_EQ(dataClass.timesAsked, 1);
}

TEST(RegistrationDocument, HasAnEmptyArrayForAClassWithoutFields) {
    TestDataClass dataClass({});
    EXPECT_EQ(registrationDocument(dataClass),
              ORVEL_TEXT("{\"name\":\"Event\",\"id\":\"Evt\",\"version\":\"1.0\",\"fields\":[]}"));
}

TEST(RegistrationDocument, WritesEmptyTextsAsStrings) {
    TestDataClass dataClass({field({}, {}, {})}, {}, {});
    dataClass.name.clear();
    dataClass.fields.front().name.clear();
    EXPECT_EQ(registrationDocument(dataClass),
              ORVEL_TEXT("{\"name\":\"\",\"id\":\"\",\"version\":\"\",\"fields\":["
                         "{\"id\":\"\",\"name\":\"\",\"nullable\":\"\",\"type\":\"\"}]}"));
}

TEST(RegistrationDocument, NeverTurnsNullableIntoABoolean) {
    TestDataClass dataClass(
        {field(ORVEL_TEXT("a"), ORVEL_TEXT("integer"), ORVEL_TEXT("whatever \"it\" is"))});
    EXPECT_NE(
        registrationDocument(dataClass).find(ORVEL_TEXT("\"nullable\":\"whatever \\\"it\\\" is\"")),
        WideString::npos);
}

TEST(RegistrationDocument, KeepsFieldsOfTheSameIdentifierApart) {
    TestDataClass dataClass({field(ORVEL_TEXT("a"), ORVEL_TEXT("integer")),
                             field(ORVEL_TEXT("a"), ORVEL_TEXT("varchar(5)"))});
    const WideString document = registrationDocument(dataClass);
    const std::size_t first = document.find(ORVEL_TEXT("\"type\":\"integer\""));
    const std::size_t second = document.find(ORVEL_TEXT("\"type\":\"varchar(5)\""));
    EXPECT_NE(second, WideString::npos);
    EXPECT_LT(first, second);
}

}  // namespace
