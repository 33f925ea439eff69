/// A failing status of the platform leaves every JSON operation as the error that stands for it.

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <optional>
#include <ostream>
#include <string>
#include <typeinfo>
#include <vector>

#include "json/json.h"
#include "json/windows/factory.h"
#include "orvel/analytics/hresult_error.h"
#include "windows/runtime_fixture.h"

namespace {

using namespace Orvel::Analytics;
using Json::Document;
using Orvel::TestSupport::OnStandIn;

struct Status {
    std::uint32_t value;
    const std::type_info& raised;
};

const std::vector<Status> kStatuses = {
    {0x80070005, typeid(hresult_access_denied)},
    {0x8001010E, typeid(hresult_wrong_thread)},
    {0x80004001, typeid(hresult_not_implemented)},
    {0x80070057, typeid(hresult_invalid_argument)},
    {0x8000000B, typeid(hresult_out_of_bounds)},
    {0x80004002, typeid(hresult_no_interface)},
    {0x80040111, typeid(hresult_class_not_available)},
    {0x8000000C, typeid(hresult_changed_state)},
    {0x8000000E, typeid(hresult_illegal_method_call)},
    {0x8000000D, typeid(hresult_illegal_state_change)},
    {0x80000018, typeid(hresult_illegal_delegate_assignment)},
    {0x800704C7, typeid(hresult_canceled)},
    {0x8007000E, typeid(std::bad_alloc)},
    {0x80004005, typeid(hresult_error)},
    {0x80040154, typeid(hresult_error)},
    {0x83750007, typeid(hresult_error)},
    {0xFFFFFFFF, typeid(hresult_error)},
};

/// The values that an operation works on. What is ready when it begins does not count as its call.
struct Ready {
    Document document;
    Json::Object object = document.parseObject(
        ORVEL_TEXT("{\"s\":\"text\",\"b\":true,\"o\":{},\"a\":[1],\"n\":null}"));
    Json::Array array = object.getNamedArray(ORVEL_TEXT("a"));
    Json::ObjectView view = object.getView();
    Json::Value value = document.stringValue(ORVEL_TEXT("value"));
};

struct Operation {
    const char* name;
    std::function<void(Ready&)> run;
};

void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.name; }

template <typename Result>
void drop(Result&& /*result*/) {}

const std::vector<Operation> kOperations = {
    {"newObject", [](Ready& r) { drop(r.document.newObject()); }},
    {"newArray", [](Ready& r) { drop(r.document.newArray()); }},
    {"parseObject", [](Ready& r) { drop(r.document.parseObject(ORVEL_TEXT("{\"a\":[1]}"))); }},
    {"stringValue", [](Ready& r) { drop(r.document.stringValue(ORVEL_TEXT("x"))); }},
    {"numberValue", [](Ready& r) { drop(r.document.numberValue(1)); }},
    {"serialisedObject",
     [](Ready& r) { drop(r.document.serialisedObject(ORVEL_TEXT("{\"a\":[1]}"))); }},
    {"setNamedValue", [](Ready& r) { r.object.setNamedValue(ORVEL_TEXT("x"), r.value); }},
    {"getNamedString", [](Ready& r) { drop(r.object.getNamedString(ORVEL_TEXT("s"))); }},
    {"getNamedBoolean", [](Ready& r) { drop(r.object.getNamedBoolean(ORVEL_TEXT("b"))); }},
    {"getNamedObject", [](Ready& r) { drop(r.object.getNamedObject(ORVEL_TEXT("o"))); }},
    {"getNamedArray", [](Ready& r) { drop(r.object.getNamedArray(ORVEL_TEXT("a"))); }},
    {"objectSize", [](Ready& r) { drop(r.object.size()); }},
    {"getView", [](Ready& r) { drop(r.object.getView()); }},
    {"hasKey", [](Ready& r) { drop(r.view.hasKey(ORVEL_TEXT("s"))); }},
    {"lookup", [](Ready& r) { drop(r.view.lookup(ORVEL_TEXT("s"))); }},
    {"append", [](Ready& r) { r.array.append(r.value); }},
    {"arraySize", [](Ready& r) { drop(r.array.size()); }},
    {"getAt", [](Ready& r) { drop(r.array.getAt(0)); }},
    {"stringify", [](Ready& r) { drop(r.object.stringify()); }},
};

class FailingRuntime : public OnStandIn, public testing::WithParamInterface<Operation> {
  protected:
    /// The calls that the operation makes from empty slots on.
    std::vector<std::string> callsOfTheOperation() {
        Ready ready;
        Json::releaseFactories();
        const auto before = runtime.calls().size();
        GetParam().run(ready);
        auto calls = runtime.calls();
        calls.erase(calls.begin(), calls.begin() + static_cast<std::ptrdiff_t>(before));
        return calls;
    }

    /// What the operation raises when its call at `index` gives `status`; null when nothing.
    const std::type_info* raisedAt(std::uint32_t index, std::uint32_t status) {
        Ready ready;
        Json::releaseFactories();
        runtime.failAt(index, status);
        try {
            GetParam().run(ready);
        } catch (const hresult_error& error) {
            EXPECT_EQ(static_cast<std::uint32_t>(error.code()), status);
            return &typeid(error);
        } catch (const std::exception& error) {
            return &typeid(error);
        }
        return nullptr;
    }
};

INSTANTIATE_TEST_SUITE_P(, FailingRuntime, testing::ValuesIn(kOperations),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_P(FailingRuntime, RaisesTheStatusOfEveryCallAndLeavesNothingBehind) {
    const auto calls = callsOfTheOperation();
    ASSERT_FALSE(calls.empty());
    for (std::uint32_t index = 0; index < calls.size(); ++index) {
        for (const Status& status : kStatuses) {
            const std::type_info* const raised = raisedAt(index, status.value);
            if (calls[index] == "IAgileObject.QueryInterface") {
                // No failure: the factory is not kept.
                EXPECT_EQ(raised, nullptr);
            } else {
                ASSERT_NE(raised, nullptr) << calls[index];
                EXPECT_EQ(*raised, status.raised) << calls[index] << std::hex << status.value;
            }
            Json::releaseFactories();
            expectNothingLeft();
        }
    }
}

TEST_P(FailingRuntime, WorksAgainAfterAFailure) {
    for (std::uint32_t index = 0; index < callsOfTheOperation().size(); ++index) {
        raisedAt(index, 0x80004005);
        Ready ready;
        EXPECT_NO_THROW(GetParam().run(ready));
    }
}

class FailingRead : public OnStandIn {};

TEST_F(FailingRead, TellsWhichCallFailed) {
    Document document;
    runtime.fail("JsonObject.ActivateInstance", 0x80004005);
    try {
        drop(document.newObject());
        FAIL() << "nothing was raised";
    } catch (const hresult_error& error) {
        EXPECT_NE(std::string(error.what()).find("ActivateInstance"), std::string::npos);
        EXPECT_NE(std::string(error.what()).find("0x80004005"), std::string::npos);
    }
}

TEST_F(FailingRead, NamesTheClassWhoseFactoryIsMissing) {
    Document document;
    runtime.fail("JsonObject.Factory", 0x80040154);
    try {
        drop(document.newObject());
        FAIL() << "nothing was raised";
    } catch (const hresult_error& error) {
        EXPECT_NE(std::string(error.what()).find("Windows.Data.Json.JsonObject"),
                  std::string::npos);
    }
}

TEST_F(FailingRead, AWrongMemberLeavesNothingBehind) {
    {
        Document document;
        const auto object = document.parseObject(ORVEL_TEXT("{\"n\":1}"));
        EXPECT_THROW(drop(object.getNamedString(ORVEL_TEXT("n"))), hresult_illegal_method_call);
        EXPECT_THROW(drop(object.getNamedObject(ORVEL_TEXT("n"))), hresult_illegal_method_call);
        EXPECT_THROW(drop(object.getNamedArray(ORVEL_TEXT("x"))), hresult_error);
        EXPECT_THROW(drop(document.parseObject(ORVEL_TEXT("{\"a\":{\"b\":["))), hresult_error);
    }
    Json::releaseFactories();
    expectNothingLeft();
}

TEST_F(FailingRead, ANullWithoutAValueObjectIsNothing) {
    runtime.setNullLookupYieldsNothing();
    Ready ready;
    EXPECT_FALSE(ready.view.lookup(ORVEL_TEXT("n")));
    EXPECT_TRUE(ready.view.hasKey(ORVEL_TEXT("n")));
    EXPECT_TRUE(ready.view.lookup(ORVEL_TEXT("s")));
}

TEST_F(FailingRead, TextThatNoPlatformNeedsToJudgeDoesNotReachIt) {
    Document document;
    for (const Orvel::WideString& text :
         {Orvel::WideString(1, 0xFEFF) + ORVEL_TEXT("{}"),
          ORVEL_TEXT("{\"a\":\"") + Orvel::WideString(1, 0xD800) + ORVEL_TEXT("\"}")}) {
        EXPECT_THROW(drop(document.parseObject(text)), hresult_error);
    }
    EXPECT_EQ(runtime.count("IJsonObjectStatics.Parse"), 0U);
}

}  // namespace
