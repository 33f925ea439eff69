/// Threads in every kind of apartment and in none. Each test needs a process that has no apartment
/// yet, so each is run by itself.

#include <gtest/gtest.h>
#include <roapi.h>
#include <winstring.h>

#include <optional>
#include <thread>

#include "json/json.h"
#include "json/windows/abi.h"
#include "json/windows/factory.h"
#include "support/stand_in_runtime/stand_in.h"

namespace {

using Orvel::Analytics::Json::Document;
using Orvel::StandIn::StandIn;

/// What the runtime itself tells a thread that asks for a factory.
HRESULT askForFactory() {
    constexpr std::wstring_view kName = L"Windows.Data.Json.JsonArray";
    HSTRING_HEADER header;
    HSTRING name = nullptr;
    WindowsCreateStringReference(kName.data(), static_cast<UINT32>(kName.size()), &header, &name);
    IActivationFactory* factory = nullptr;
    const HRESULT status =
        RoGetActivationFactory(name, Orvel::Analytics::Json::Abi::ActivationFactory::kId,
                               reinterpret_cast<void**>(&factory));
    if (SUCCEEDED(status)) {
        factory->Release();
    }
    return status;
}

/// Whether the library works on this thread.
bool canBuildADocument() {
    Document document;
    auto object = document.newObject();
    object.setNamedValue(L"a", document.numberValue(1));
    return object.stringify() == L"{\"a\":1}";
}

/// Runs `work` on a thread of its own, in an apartment of `type` if there is one.
template <typename Work>
void onThread(std::optional<RO_INIT_TYPE> type, Work work) {
    std::thread([&] {
        if (type) {
            ASSERT_EQ(RoInitialize(*type), S_OK);
        }
        work();
        if (type) {
            RoUninitialize();
        }
    }).join();
}

class Apartment : public testing::Test {
  protected:
    void TearDown() override {
        Orvel::Analytics::Json::releaseFactories();
        EXPECT_EQ(runtime.liveObjects(), 0);
        EXPECT_EQ(runtime.usesAfterRelease(), 0U);
        EXPECT_EQ(runtime.factoryReferences("JsonObject"), 0U);
        EXPECT_EQ(runtime.factoryReferences("JsonValue"), 0U);
    }

    StandIn runtime;
};

TEST_F(Apartment, AThreadWithoutOneCanUseTheLibrary) {
    onThread({}, [] { ASSERT_EQ(askForFactory(), CO_E_NOTINITIALIZED); });
    onThread({}, [] { EXPECT_TRUE(canBuildADocument()); });
    onThread({}, [] { EXPECT_TRUE(canBuildADocument()); });
    EXPECT_EQ(runtime.factories("JsonObject").size(), 1U);
}

TEST_F(Apartment, TheFirstUseMakesOneForTheWholeProcessAndItsLife) {
    onThread({}, [] { ASSERT_EQ(askForFactory(), CO_E_NOTINITIALIZED); });
    onThread({}, [] { EXPECT_TRUE(canBuildADocument()); });
    onThread({}, [] { EXPECT_EQ(askForFactory(), S_OK); });
}

TEST_F(Apartment, AFactoryOutlivesTheApartmentItWasAskedForIn) {
    onThread(RO_INIT_MULTITHREADED, [] { EXPECT_TRUE(canBuildADocument()); });
    onThread({}, [] { ASSERT_EQ(askForFactory(), CO_E_NOTINITIALIZED); });
    onThread({}, [] { EXPECT_TRUE(canBuildADocument()); });
    EXPECT_EQ(runtime.factories("JsonObject").size(), 1U);
}

TEST_F(Apartment, EveryKindSharesTheFactories) {
    onThread(RO_INIT_SINGLETHREADED, [] { EXPECT_TRUE(canBuildADocument()); });
    onThread(RO_INIT_MULTITHREADED, [] { EXPECT_TRUE(canBuildADocument()); });
    onThread({}, [] { EXPECT_TRUE(canBuildADocument()); });
    EXPECT_EQ(runtime.factories("JsonObject").size(), 1U);
    EXPECT_EQ(runtime.factories("JsonValue").size(), 1U);
}

}  // namespace
