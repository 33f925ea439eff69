/// The library's DLL comes, is used and goes, with what it kept of the platform.

#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <bit>
#include <cstdlib>
#include <string>

#include "support/stand_in_runtime/stand_in.h"

namespace {

using Orvel::StandIn::StandIn;

constexpr std::array kRuntimeClasses = {"AnalyticsInfo", "EasClientDeviceInformation", "JsonArray",
                                        "JsonObject", "JsonValue"};
constexpr const wchar_t* kLibrary = L"orvel-analytics.dll";
constexpr int kReleased = 3;

/// The part of an application that brings the library along.
class Plugin {
  public:
    Plugin() : module_(LoadLibraryW(L"unload_plugin.dll")) {}
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;
    ~Plugin() { unload(); }

    bool isLoaded() const { return module_ != nullptr; }
    bool use() const { return std::bit_cast<bool (*)()>(GetProcAddress(module_, "useLibrary"))(); }
    void unload() {
        if (module_ != nullptr) {
            FreeLibrary(module_);
            module_ = nullptr;
        }
    }

  private:
    HMODULE module_;
};

bool isLibraryLoaded() { return GetModuleHandleW(kLibrary) != nullptr; }

class Unload : public testing::Test {
  protected:
    std::uint32_t references() const {
        std::uint32_t sum = 0;
        for (const char* const runtimeClass : kRuntimeClasses) {
            sum += runtime.factoryReferences(runtimeClass);
        }
        return sum;
    }

    StandIn runtime;
};

TEST_F(Unload, LoadingAsksThePlatformForNothing) {
    const Plugin plugin;
    ASSERT_TRUE(plugin.isLoaded());
    EXPECT_TRUE(isLibraryLoaded());
    EXPECT_EQ(runtime.calls().size(), 0U);
}

TEST_F(Unload, ReleasesEveryFactory) {
    Plugin plugin;
    ASSERT_TRUE(plugin.isLoaded());
    ASSERT_TRUE(plugin.use());
    for (const char* const runtimeClass : kRuntimeClasses) {
        EXPECT_EQ(runtime.factoryReferences(runtimeClass), 1U) << runtimeClass;
    }
    plugin.unload();
    EXPECT_FALSE(isLibraryLoaded());
    EXPECT_EQ(references(), 0U);
    EXPECT_EQ(runtime.liveObjects(), 0);
    EXPECT_EQ(runtime.usesAfterRelease(), 0U);
}

TEST_F(Unload, TheLibraryCanComeBack) {
    for (int time = 1; time <= 3; ++time) {
        Plugin plugin;
        ASSERT_TRUE(plugin.isLoaded());
        EXPECT_TRUE(plugin.use());
        plugin.unload();
        EXPECT_FALSE(isLibraryLoaded());
        EXPECT_EQ(references(), 0U);
    }
    EXPECT_EQ(runtime.factories("JsonObject").size(), 3U);
}

TEST_F(Unload, AnUnusedLibraryHasNothingToRelease) {
    Plugin plugin;
    ASSERT_TRUE(plugin.isLoaded());
    plugin.unload();
    EXPECT_FALSE(isLibraryLoaded());
    EXPECT_EQ(runtime.calls().size(), 0U);
}

/// Uses the plugin on a thread that never comes back from its first new object: the library goes
/// away while it is there, and so does the thread.
void unloadWhileInUse(StandIn& runtime, Plugin& plugin) {
    runtime.runInside("JsonObject.ActivateInstance", [&] {
        plugin.unload();
        ExitThread(0);
    });
    const auto use = [](void* context) -> DWORD {
        static_cast<Plugin*>(context)->use();
        return 1;
    };
    const HANDLE thread = CreateThread(nullptr, 0, use, &plugin, 0, nullptr);
    ASSERT_NE(thread, nullptr);
    WaitForSingleObject(thread, INFINITE);
    DWORD exitCode = 1;
    GetExitCodeThread(thread, &exitCode);
    CloseHandle(thread);
    ASSERT_EQ(exitCode, 0U);
}

TEST_F(Unload, LeavesTheFactoryThatIsInUseAndReleasesTheOthers) {
    Plugin plugin;
    ASSERT_TRUE(plugin.isLoaded());
    ASSERT_TRUE(plugin.use());
    unloadWhileInUse(runtime, plugin);
    EXPECT_FALSE(isLibraryLoaded());
    EXPECT_EQ(runtime.factoryReferences("JsonObject"), 1U);
    EXPECT_EQ(references(), 1U);
    EXPECT_EQ(runtime.usesAfterRelease(), 0U);
}

/// Ends the process at once with `kReleased` when a factory is released.
void reportRelease(StandIn& runtime) {
    runtime.runInside("JsonObject.FactoryReleased",
                      [] { TerminateProcess(GetCurrentProcess(), kReleased); });
}

using UnloadDeathTest = Unload;

TEST_F(UnloadDeathTest, AReleaseIsNoticed) {
    EXPECT_EXIT(
        {
            Plugin plugin;
            plugin.use();
            reportRelease(runtime);
            plugin.unload();
        },
        testing::ExitedWithCode(kReleased), "");
}

TEST_F(UnloadDeathTest, TheEndOfTheProcessReleasesNothing) {
    EXPECT_EXIT(
        {
            const auto plugin = new Plugin;
            const bool isUsed = plugin->use();
            reportRelease(runtime);
            std::exit(isUsed && isLibraryLoaded() ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace
