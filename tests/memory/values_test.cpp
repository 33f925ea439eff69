/// Memory runs out in the public value classes and conversions.

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "memory/exhaustion.h"
#include "orvel/analytics.h"
#include "support/consent_documents.h"
#include "support/data_classes.h"

namespace Orvel::TestSupport {
namespace {

using Analytics::hresult_error;
using Analytics::DataClass::DataClassFieldInfo;
using Analytics::Session::AppSession;
using Answer = ProcessingPermissions::ProcessingPermissionValue;

const WideString kOld = ORVEL_TEXT("the old text of a member");
const WideString kNew = ORVEL_TEXT("the new text of a member, which is longer than the old one");

/// A source, a target and what is made.
template <typename Value>
struct Values {
    Value from;
    Value to;
    std::optional<Value> made;
};

/// Copies a value whose texts are all new, and assigns it to one whose texts are all old.
/// @param texts calls a function with each of the value's texts.
template <typename Value, typename Texts>
void copyWithoutMemory(const std::string& name, const Value& value, const Texts& texts) {
    const auto makeValues = [&] {
        auto values = std::make_unique<Values<Value>>(Values<Value>{value, value, {}});
        texts(values->from, [](WideString& text) { text = kNew; });
        texts(values->to, [](WideString& text) { text = kOld; });
        return values;
    };
    Exhaustion(name + ", copied")
        .run(
            makeValues, [](auto& values) { values.made.emplace(values.from); },
            [&](auto& values, bool raised) {
                EXPECT_EQ(values.made.has_value(), !raised);
                if (values.made) {
                    texts(*values.made, [](const WideString& text) { EXPECT_EQ(text, kNew); });
                }
            });
    Exhaustion(name + ", copied over another one")
        .run(
            makeValues, [](auto& values) { values.to = values.from; },
            [&](auto& values, bool raised) {
                texts(values.to, [raised](const WideString& text) {
                    EXPECT_TRUE(text == kNew || (raised && text == kOld));
                });
            });
    const auto values = makeValues();
    withoutMemory([&] {
        Value moved(std::move(values->from));
        values->to = std::move(moved);
    });
    texts(values->to, [](const WideString& text) { EXPECT_EQ(text, kNew); });
}

/// A text to be read, and what is read into.
template <typename Record>
struct Reading {
    WideString text;
    Record record;
};

template <typename Record, typename Operate, typename Judge>
void readWithoutMemory(const std::string& name, const nlohmann::json& document,
                       const Operate& operate, const Judge& judge) {
    Exhaustion(name + "::FromJson")
        .run(
            [&] {
                return std::make_unique<Reading<Record>>(
                    Reading<Record>{toWide(document.dump()), {}});
            },
            [&](Reading<Record>& reading) { operate(reading.record, reading.text); },
            [&](Reading<Record>& reading, bool raised) { judge(reading.record, raised); });
}

TEST(ValuesWithoutMemory, AnAppSessionIsCopiedTextByText) {
    copyWithoutMemory("AppSession", AppSession(), [](auto& value, const auto& visit) {
        for (auto* text :
             {&value.appName, &value.appVersion, &value.versionTag, &value.sessionId, &value.userId,
              &value.deviceId, &value.environment, &value.appSessionInitiated}) {
            visit(*text);
        }
    });
}

TEST(ValuesWithoutMemory, AFieldIsCopiedTextByText) {
    copyWithoutMemory("DataClassFieldInfo", field({}, {}), [](auto& value, const auto& visit) {
        for (auto* text : {&value.name, &value.id, &value.type, &value.nullable}) {
            visit(*text);
        }
    });
}

TEST(ValuesWithoutMemory, ADataClassIsCopiedTextByText) {
    copyWithoutMemory("BaseDataClass", TestDataClass({}), [](auto& value, const auto& visit) {
        for (auto* text : {&value.name, &value.id, &value.version}) {
            visit(*text);
        }
    });
}

TEST(ValuesWithoutMemory, AConsentIsCopiedTextByText) {
    copyWithoutMemory("ConsentObject", ConsentObject(), [](auto& value, const auto& visit) {
        for (auto* text :
             {&value.deviceSerialNumber, &value.timestamp, &value.countryCode, &value.tenant,
              &value.consentSource, &value.privacyDocuments.privacyUrl,
              &value.privacyDocuments.warrantyUrl, &value.privacyDocuments.telemetryUrl}) {
            visit(*text);
        }
    });
}

TEST(ValuesWithoutMemory, RecordsAreReadOrTheShortageIsRaised) {
    readWithoutMemory<ConsentObject>(
        "ConsentObject", consentDocument(),
        [](auto& record, const WideString& text) { record = ConsentObject::FromJson(text); },
        [](const auto& record, bool raised) { EXPECT_EQ(record.tenant.empty(), raised); });
    readWithoutMemory<PrivacyDocuments>(
        "PrivacyDocuments", privacyDocument(),
        [](auto& record, const WideString& text) { record.FromJson(text); },
        [](const auto& record, bool raised) {
            EXPECT_TRUE(raised || !record.telemetryUrl.empty());
        });
    readWithoutMemory<ProcessingPermissions>(
        "ProcessingPermissions", permissionsDocument("Accepted", "Accepted", "Accepted"),
        [](auto& record, const WideString& text) { record.FromJson(text); },
        [](const auto& record, bool raised) {
            EXPECT_TRUE(raised || record.support == Answer::Accepted);
        });
}

TEST(ValuesWithoutMemory, TextsAreMadeOrTheShortageIsRaised) {
    const std::string narrow(10'000, 'x');
    const WideString wide(10'000, 'x');
    const auto nothing = [] { return std::make_unique<WideString>(); };
    const auto isThere = [](const WideString& made, bool raised) {
        EXPECT_EQ(made.empty(), raised);
    };
    Exhaustion("toWide").run(
        nothing, [&](WideString& made) { made = toWide(narrow); }, isThere);
    Exhaustion("toUtf8").run(
        [] { return std::make_unique<std::string>(); },
        [&](std::string& made) { made = toUtf8(wide); },
        [](const std::string& made, bool raised) { EXPECT_EQ(made.empty(), raised); });
    Exhaustion("ProcessingPermissions::ToJson")
        .run(
            nothing, [](WideString& made) { made = ProcessingPermissions().ToJson(); }, isThere);
    const hresult_error error(-1, narrow);
    Exhaustion("hresult_error::message")
        .run(
            nothing, [&](WideString& made) { made = error.message(); }, isThere);
}

TEST(ValuesWithoutMemory, AnErrorIsCaughtByValueWithoutAny) {
    const hresult_error error(-1, "an error's message of more than a few letters");
    withoutMemory([&] {
        const hresult_error copy(error);
        EXPECT_STREQ(copy.what(), error.what());
    });
}

}  // namespace
}  // namespace Orvel::TestSupport
