/// A platform that does not know the classes.

#include <gtest/gtest.h>

#include <string>

#include "events/device_info.h"
#include "json/json.h"
#include "orvel/analytics/hresult_error.h"
#include "support/raised_status.h"
#include "support/stand_in_runtime/class_names.h"
#include "windows/runtime_fixture.h"

namespace {

using Orvel::TestSupport::construct;
using Orvel::TestSupport::makeObject;
using Orvel::TestSupport::OnStandIn;
using Orvel::TestSupport::raisedStatus;

constexpr std::uint32_t kNotRegistered = 0x80040154;

/// Shows this process a registry of the machine without any class for as long as it lives.
class EmptyRegistry {
  public:
    EmptyRegistry() {
        HKEY classes = nullptr;
        RegCreateKeyW(HKEY_CURRENT_USER, kKey, &key_);
        RegCreateKeyW(key_, std::wstring(Orvel::StandIn::kClassesKey).c_str(), &classes);
        RegCloseKey(classes);
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, key_);
    }
    EmptyRegistry(const EmptyRegistry&) = delete;
    EmptyRegistry& operator=(const EmptyRegistry&) = delete;
    ~EmptyRegistry() {
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
        RegCloseKey(key_);
        RegDeleteTreeW(HKEY_CURRENT_USER, kKey);
    }

  private:
    static constexpr const wchar_t* kKey = L"Software\\Orvel Analytics Tests\\Empty Registry";
    HKEY key_ = nullptr;
};

void readVersion() { static_cast<void>(Orvel::Analytics::Events::deviceFamilyVersion()); }

class UnregisteredClass : public OnStandIn {};

TEST_F(UnregisteredClass, IsRaisedByWhateverNeedsIt) {
    const EmptyRegistry registry;
    EXPECT_EQ(raisedStatus(makeObject), kNotRegistered);
    EXPECT_EQ(raisedStatus(readVersion), kNotRegistered);
    EXPECT_EQ(raisedStatus(construct), kNotRegistered);
    EXPECT_EQ(runtime.calls().size(), 0U);
}

TEST_F(UnregisteredClass, IsFoundOnceItIsRegistered) {
    {
        const EmptyRegistry registry;
        ASSERT_EQ(raisedStatus(construct), kNotRegistered);
        ASSERT_EQ(raisedStatus(makeObject), kNotRegistered);
    }
    EXPECT_NO_THROW(construct());
    EXPECT_NO_THROW(makeObject());
}

TEST_F(UnregisteredClass, DoesNotDisturbTheOthers) {
    makeObject();
    const EmptyRegistry registry;
    Document document;
    EXPECT_EQ(raisedStatus([&] { static_cast<void>(document.newArray()); }), kNotRegistered);
    EXPECT_EQ(document.newObject().stringify(), L"{}");
}

}  // namespace
