#include "orvel/analytics/hresult_error.h"

#include <gtest/gtest.h>

#include <new>
#include <string>

#include "json/raise.h"

namespace {

using namespace Orvel::Analytics;

template <typename Error>
void expectRaisedAs(std::uint32_t status) {
    try {
        Json::raise(status, "It failed");
        FAIL() << "nothing was raised";
    } catch (const Error& error) {
        EXPECT_EQ(typeid(error), typeid(Error));
        EXPECT_EQ(static_cast<std::uint32_t>(error.code()), status);
    }
}

TEST(HresultError, WellKnownStatusesAreRaisedAsTheirSubclasses) {
    expectRaisedAs<hresult_access_denied>(0x80070005);
    expectRaisedAs<hresult_wrong_thread>(0x8001010E);
    expectRaisedAs<hresult_not_implemented>(0x80004001);
    expectRaisedAs<hresult_invalid_argument>(0x80070057);
    expectRaisedAs<hresult_out_of_bounds>(0x8000000B);
    expectRaisedAs<hresult_no_interface>(0x80004002);
    expectRaisedAs<hresult_class_not_available>(0x80040111);
    expectRaisedAs<hresult_changed_state>(0x8000000C);
    expectRaisedAs<hresult_illegal_method_call>(0x8000000E);
    expectRaisedAs<hresult_illegal_state_change>(0x8000000D);
    expectRaisedAs<hresult_illegal_delegate_assignment>(0x80000018);
    expectRaisedAs<hresult_canceled>(0x800704C7);
}

TEST(HresultError, EveryOtherStatusIsRaisedAsTheBaseClass) {
    expectRaisedAs<hresult_error>(0x83750009);
    expectRaisedAs<hresult_error>(0x80004005);
    expectRaisedAs<hresult_error>(0x80040154);
}

TEST(HresultError, OutOfMemoryIsRaisedAsTheStandardError) {
    EXPECT_THROW(Json::raise(0x8007000E, ""), std::bad_alloc);
}

TEST(HresultError, CarriesItsWordsAndStatus) {
    const hresult_error error(static_cast<std::int32_t>(0x83750009), "No member \u00e9");
    EXPECT_EQ(error.message(), ORVEL_TEXT("No member \u00e9 (0x83750009)"));
    EXPECT_EQ(std::string(error.what()), "No member \u00e9 (0x83750009)");
}

TEST(HresultError, IsSeenByAHandlerOfStandardExceptions) {
    EXPECT_THROW(Json::raise(0x8000000B, ""), std::exception);
}

}  // namespace
