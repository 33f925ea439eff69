/// The cache of the activation factories: what is asked for, what is kept, what is released when.

#include "json/windows/factory.h"

#include <gmock/gmock.h>

#include <barrier>
#include <string>
#include <thread>
#include <vector>

#include "events/device_info.h"
#include "json/json.h"
#include "support/raised_status.h"
#include "windows/runtime_fixture.h"

namespace {

using Orvel::Analytics::Json::Document;
using Orvel::Analytics::Json::releaseFactories;
using Orvel::StandIn::Factory;
using Orvel::TestSupport::kRuntimeClasses;
using Orvel::TestSupport::makeObject;
using Orvel::TestSupport::OnStandIn;
using Orvel::TestSupport::raisedStatus;
using testing::Each;
using testing::ElementsAre;
using testing::SizeIs;

constexpr std::uint32_t kNotInitialised = 0x800401F0;

MATCHER_P2(IsFactory, calls, references, "") {
    return arg.calls == static_cast<std::uint32_t>(calls) &&
           arg.references == static_cast<std::uint32_t>(references);
}

void makeArray() {
    Document document;
    static_cast<void>(document.newArray());
}

/// Uses every class of the platform that the library knows.
void useAllClasses() {
    Document document;
    static_cast<void>(document.newObject());
    static_cast<void>(document.newArray());
    static_cast<void>(document.numberValue(1));
    static_cast<void>(Orvel::Analytics::Events::deviceFamilyVersion());
    static_cast<void>(Orvel::Analytics::Events::operatingSystemName());
}

void onAnotherThread(void (*work)()) { std::thread(work).join(); }

class FactoryCache : public OnStandIn {
  protected:
    std::vector<Factory> objectFactories() const { return runtime.factories("JsonObject"); }
};

TEST_F(FactoryCache, AsksForTheFactoryOfAClassOnce) {
    makeObject();
    makeObject();
    onAnotherThread(makeObject);
    EXPECT_THAT(objectFactories(), ElementsAre(IsFactory(3, 1)));
}

TEST_F(FactoryCache, SharesOneFactoryBetweenActivationAndStatics) {
    makeObject();
    Document document;
    static_cast<void>(document.parseObject(ORVEL_TEXT("{}")));
    EXPECT_THAT(objectFactories(), ElementsAre(IsFactory(2, 1)));
}

TEST_F(FactoryCache, KeepsOneFactoryForEachClass) {
    useAllClasses();
    useAllClasses();
    for (const char* const runtimeClass : kRuntimeClasses) {
        EXPECT_THAT(runtime.factories(runtimeClass), ElementsAre(IsFactory(2, 1))) << runtimeClass;
    }
}

TEST_F(FactoryCache, AsksForNoClassBeforeItIsNeeded) {
    makeArray();
    EXPECT_THAT(runtime.factories("JsonArray"), SizeIs(1));
    EXPECT_THAT(objectFactories(), SizeIs(0));
    EXPECT_THAT(runtime.factories("JsonValue"), SizeIs(0));
}

TEST_F(FactoryCache, UsesAFactoryThatIsNotAgileForOneCallOnly) {
    runtime.setAgile("JsonObject", false);
    makeObject();
    makeObject();
    EXPECT_THAT(objectFactories(), ElementsAre(IsFactory(1, 0), IsFactory(1, 0)));
}

TEST_F(FactoryCache, KeepsTheFirstAgileFactory) {
    runtime.setAgile("JsonObject", false);
    makeObject();
    runtime.setAgile("JsonObject", true);
    makeObject();
    makeObject();
    EXPECT_THAT(objectFactories(), ElementsAre(IsFactory(1, 0), IsFactory(2, 1)));
}

TEST_F(FactoryCache, TakesAnyFailureToTellForNotAgile) {
    runtime.fail("IAgileObject.QueryInterface", 0x80070005, 1, 1);
    makeObject();
    EXPECT_THAT(objectFactories(), ElementsAre(IsFactory(1, 0)));
}

TEST_F(FactoryCache, AsksAgainWhenTheRuntimeIsNotInitialised) {
    runtime.fail("JsonObject.Factory", kNotInitialised, 1, 1);
    makeObject();
    EXPECT_EQ(runtime.count("JsonObject.Factory"), 2U);
    EXPECT_THAT(objectFactories(), ElementsAre(IsFactory(1, 1)));
}

TEST_F(FactoryCache, RaisesTheSecondFailureToInitialise) {
    runtime.fail("JsonObject.Factory", kNotInitialised);
    EXPECT_EQ(raisedStatus(makeObject), kNotInitialised);
    EXPECT_EQ(runtime.count("JsonObject.Factory"), 2U);
}

TEST_F(FactoryCache, RaisesWhatTheSecondRequestGives) {
    runtime.fail("JsonObject.Factory", kNotInitialised, 1, 1);
    runtime.runInside("JsonObject.Factory",
                      [this] { runtime.fail("JsonObject.Factory", 0x80070005, 1, 1); });
    EXPECT_EQ(raisedStatus(makeObject), 0x80070005U);
    EXPECT_EQ(runtime.count("JsonObject.Factory"), 2U);
}

TEST_F(FactoryCache, RaisesEveryOtherFailureWithoutAskingAgain) {
    for (const std::uint32_t status :
         {0x80004005U, 0x80040154U, 0x80040111U, 0x80070005U, 0x800401F1U, 0x8001010EU}) {
        const auto before = runtime.count("JsonObject.Factory");
        runtime.fail("JsonObject.Factory", status, 1, 1);
        EXPECT_EQ(raisedStatus(makeObject), status);
        EXPECT_EQ(runtime.count("JsonObject.Factory"), before + 1);
    }
    makeObject();
    EXPECT_THAT(objectFactories(), ElementsAre(IsFactory(1, 1)));
}

TEST_F(FactoryCache, AFailedActivationLeavesTheFactoryKept) {
    runtime.fail("JsonObject.ActivateInstance", 0x80004005, 1, 1);
    EXPECT_EQ(raisedStatus(makeObject), 0x80004005U);
    makeObject();
    EXPECT_THAT(objectFactories(), ElementsAre(IsFactory(2, 1)));
}

TEST_F(FactoryCache, OfTwoThreadsThatAskAtOnceTheFirstToStoreWins) {
    runtime.runInside("JsonObject.Factory", [] { onAnotherThread(makeObject); });
    makeObject();
    // The other thread's factory was made first and is kept; this thread used its own once.
    EXPECT_THAT(objectFactories(), ElementsAre(IsFactory(1, 1), IsFactory(1, 0)));
    makeObject();
    EXPECT_THAT(objectFactories(), ElementsAre(IsFactory(2, 1), IsFactory(1, 0)));
}

TEST_F(FactoryCache, KeepsOneOfTheFactoriesThatManyThreadsAskFor) {
    constexpr int kThreads = 8;
    std::barrier start(kThreads);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&] {
            start.arrive_and_wait();
            makeObject();
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::uint32_t calls = 0;
    for (const Factory& factory : objectFactories()) {
        calls += factory.calls;
    }
    EXPECT_EQ(calls, static_cast<std::uint32_t>(kThreads));
    EXPECT_EQ(runtime.factoryReferences("JsonObject"), 1U);
}

TEST_F(FactoryCache, ReleasesEveryFactory) {
    useAllClasses();
    releaseFactories();
    expectNothingLeft();
}

TEST_F(FactoryCache, HasNothingToReleaseBeforeTheFirstUse) {
    releaseFactories();
    expectNothingLeft();
}

TEST_F(FactoryCache, AsksAnewAfterTheRelease) {
    useAllClasses();
    releaseFactories();
    useAllClasses();
    for (const char* const runtimeClass : kRuntimeClasses) {
        EXPECT_THAT(runtime.factories(runtimeClass), ElementsAre(IsFactory(1, 0), IsFactory(1, 1)))
            << runtimeClass;
    }
    releaseFactories();
    expectNothingLeft();
}

TEST_F(FactoryCache, LeavesAFactoryThatIsInUseKeptWhileTheOthersAreReleased) {
    makeArray();
    runtime.runInside("JsonObject.ActivateInstance", [] { onAnotherThread(releaseFactories); });
    makeObject();
    EXPECT_EQ(runtime.factoryReferences("JsonArray"), 0U);
    EXPECT_THAT(objectFactories(), ElementsAre(IsFactory(1, 1)));
    makeObject();
    EXPECT_THAT(objectFactories(), ElementsAre(IsFactory(2, 1)));
    releaseFactories();
    expectNothingLeft();
}

TEST_F(FactoryCache, LeavesAFactoryKeptWhoseStaticsAreBeingAskedFor) {
    makeObject();
    runtime.runInside("IJsonObjectStatics.QueryInterface",
                      [] { onAnotherThread(releaseFactories); });
    Document document;
    EXPECT_EQ(document.parseObject(ORVEL_TEXT("{\"a\":1}")).size(), 1U);
    EXPECT_THAT(objectFactories(), ElementsAre(IsFactory(2, 1)));
}

TEST_F(FactoryCache, AReleaseDuringAParseDoesNotDisturbIt) {
    runtime.runInside("IJsonObjectStatics.Parse", [] { onAnotherThread(releaseFactories); });
    Document document;
    EXPECT_EQ(document.parseObject(ORVEL_TEXT("{\"a\":1}")).size(), 1U);
    releaseFactories();
    EXPECT_EQ(runtime.factoryReferences("JsonObject"), 0U);
}

TEST_F(FactoryCache, KeepsWhatArrivesAfterARelease) {
    runtime.runInside("JsonObject.Factory", [] { onAnotherThread(releaseFactories); });
    makeObject();
    EXPECT_THAT(objectFactories(), ElementsAre(IsFactory(1, 1)));
}

TEST_F(FactoryCache, CanBeFilledWhileItIsReleased) {
    useAllClasses();
    runtime.runInside("JsonObject.FactoryReleased", [] { onAnotherThread(useAllClasses); });
    releaseFactories();
    // Every class works, and nothing fell out of the list of what is to be released.
    useAllClasses();
    releaseFactories();
    expectNothingLeft();
}

}  // namespace
