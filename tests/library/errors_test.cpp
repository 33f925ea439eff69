/// Errors that leave the library are what they were thrown as: texts, classes of the library and
/// classes of the standard library, by their own type and by that of their bases.

#include <gtest/gtest.h>

#include <exception>
#include <new>
#include <stdexcept>
#include <string>

#include "orvel/analytics.h"
#include "orvel/analytics/testing/scripted_endpoint.h"
#include "support/data_classes.h"

namespace Orvel::TestSupport {
namespace {

using Analytics::hresult_error;
using Analytics::Testing::ScriptedEndpoint;

/// The text that constructing a session throws; empty when it throws none.
std::string refusal(const WideString& name, const WideString& version, const WideString& user) {
    try {
        const AnalyticsSession session(name, version, user);
    } catch (const char* message) {
        return message;
    }
    return {};
}

TEST(LibraryErrors, AConstructorThrowsTheTextItself) {
    EXPECT_EQ(refusal({}, ORVEL_TEXT("1"), {}), "App name cannot be null or empty");
    EXPECT_EQ(refusal(ORVEL_TEXT("a"), {}, {}), "App version cannot be null or empty");
    EXPECT_EQ(refusal(ORVEL_TEXT("a"), ORVEL_TEXT("1"), ORVEL_TEXT("x")), "UserID must be a GUID");
}

TEST(LibraryErrors, IllFormedTextIsAnInvalidArgument) {
    try {
        static_cast<void>(toWide("ab\xFF"));
        FAIL() << "nothing was thrown";
    } catch (const std::invalid_argument& error) {
        EXPECT_NE(std::string(error.what()).find('2'), std::string::npos) << "the offset";
    }
    EXPECT_THROW(static_cast<void>(toUtf8(WideString(1, 0xD800))), std::invalid_argument);
    EXPECT_THROW(static_cast<void>(toWide("\xFF")), std::logic_error);
    EXPECT_THROW(static_cast<void>(toWide("\xFF")), std::exception);
}

TEST(LibraryErrors, ALimitBeyondItsRangeIsAnOutOfRange) {
    AnalyticsSession session(ORVEL_TEXT("MyApp"), ORVEL_TEXT("1"));
    TestDataClass dataClass({field(ORVEL_TEXT("s"), ORVEL_TEXT("varchar(99999999999)"))});
    EXPECT_THROW(session.CollectEvent(&dataClass, ORVEL_TEXT("{\"s\":\"x\"}")), std::out_of_range);
}

TEST(LibraryErrors, ATextThatIsNoObjectIsAnErrorWithItsStatus) {
    try {
        static_cast<void>(ConsentObject::FromJson(ORVEL_TEXT("[]")));
        FAIL() << "nothing was thrown";
    } catch (const hresult_error& error) {
        EXPECT_EQ(static_cast<std::uint32_t>(error.code()), 0x83750007U);
        EXPECT_EQ(toWide(error.what()), error.message());
        EXPECT_NE(std::string(error.what()).find("(0x83750007)"), std::string::npos);
    }
    EXPECT_THROW(static_cast<void>(ConsentObject::FromJson({})), std::exception);
}

TEST(LibraryErrors, AMemberOfAnotherTypeIsAnErrorOfItsOwnClass) {
    ProcessingPermissions permissions;
    const WideString document = ORVEL_TEXT("{\"marketing\":1}");
    EXPECT_THROW(permissions.FromJson(document), Analytics::hresult_illegal_method_call);
    EXPECT_THROW(permissions.FromJson(document), hresult_error);
    EXPECT_THROW(permissions.FromJson(document), std::exception);
}

template <typename Error>
class ErrorThroughTheLibrary : public testing::Test {};

using EveryErrorClass =
    testing::Types<Analytics::hresult_access_denied, Analytics::hresult_wrong_thread,
                   Analytics::hresult_not_implemented, Analytics::hresult_invalid_argument,
                   Analytics::hresult_out_of_bounds, Analytics::hresult_no_interface,
                   Analytics::hresult_class_not_available, Analytics::hresult_changed_state,
                   Analytics::hresult_illegal_method_call, Analytics::hresult_illegal_state_change,
                   Analytics::hresult_illegal_delegate_assignment, Analytics::hresult_canceled>;
TYPED_TEST_SUITE(ErrorThroughTheLibrary, EveryErrorClass);

/// From the application's own code, through the RPC client and the library, and back.
TYPED_TEST(ErrorThroughTheLibrary, KeepsItsClassAndItsStatus) {
    ScriptedEndpoint script;
    script.onClient = [] { throw TypeParam("made to fail"); };
    AnalyticsSession session(ORVEL_TEXT("MyApp"), ORVEL_TEXT("1"));
    EXPECT_THROW(session.SendEvents(), TypeParam);
    EXPECT_THROW(session.SendEvents(), hresult_error);
    EXPECT_THROW(session.SendEvents(), std::exception);
    try {
        session.SendEvents();
    } catch (const hresult_error& error) {
        EXPECT_EQ(static_cast<std::uint32_t>(error.code()), TypeParam::kStatus);
        EXPECT_TRUE(error.message().starts_with(ORVEL_TEXT("made to fail")));
    }
}

TEST(LibraryErrors, OtherErrorsPassThroughTheLibraryToo) {
    ScriptedEndpoint script;
    AnalyticsSession session(ORVEL_TEXT("MyApp"), ORVEL_TEXT("1"));
    script.onClient = [] { throw std::bad_alloc(); };
    EXPECT_THROW(session.SendEvents(), std::bad_alloc);
    script.onClient = [] { throw 7; };
    EXPECT_THROW(session.SendEvents(), int);
    script.onClient = nullptr;
    EXPECT_EQ(static_cast<int>(session.SendEvents()), 0) << "the session is still good";
}

TEST(LibraryErrors, AnErrorOfTheDataClassLeavesTheOperation) {
    class Failing final : public Analytics::DataClass::BaseDataClass {
      public:
        void reservedOperation() override {}
        std::list<Analytics::DataClass::DataClassFieldInfo> getFields() override {
            throw std::runtime_error("no fields today");
        }
    } dataClass;
    AnalyticsSession session(ORVEL_TEXT("MyApp"), ORVEL_TEXT("1"));
    try {
        session.RegisterDataClass(&dataClass);
        FAIL() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "no fields today");
    }
}

TEST(LibraryErrors, AnErrorCanBeKeptAndThrownAgain) {
    std::exception_ptr kept;
    try {
        static_cast<void>(ConsentObject::FromJson(ORVEL_TEXT("{}")));
    } catch (...) {
        kept = std::current_exception();
    }
    ASSERT_NE(kept, nullptr);
    EXPECT_THROW(std::rethrow_exception(kept), hresult_error);
}

}  // namespace
}  // namespace Orvel::TestSupport
