/// The interface ids that the library declares, against two other sources: the rule by which the
/// platform makes the ids of its generic interfaces, and the platform's own headers.

#include <initguid.h>
#include <windows.h>
// The ids are to be defined here, before anything else declares them.

#include <activation.h>
#include <bcrypt.h>
#include <gtest/gtest.h>
#include <objbase.h>
#include <windows.security.exchangeactivesyncprovisioning.h>
#include <windows.system.profile.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#undef GetObject
#include "json/windows/abi.h"

namespace {

namespace Abi = Orvel::Analytics::Json::Abi;

std::string textOf(const GUID& id) {
    std::array<char, 37> text;
    std::snprintf(text.data(), text.size(), "%08lx-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x",
                  id.Data1, id.Data2, id.Data3, id.Data4[0], id.Data4[1], id.Data4[2], id.Data4[3],
                  id.Data4[4], id.Data4[5], id.Data4[6], id.Data4[7]);
    return text.data();
}

std::array<unsigned char, 20> sha1(std::vector<unsigned char> input) {
    BCRYPT_ALG_HANDLE algorithm = nullptr;
    std::array<unsigned char, 20> digest{};
    EXPECT_EQ(BCryptOpenAlgorithmProvider(&algorithm, BCRYPT_SHA1_ALGORITHM, nullptr, 0), 0);
    EXPECT_EQ(BCryptHash(algorithm, nullptr, 0, input.data(), static_cast<ULONG>(input.size()),
                         digest.data(), static_cast<ULONG>(digest.size())),
              0);
    BCryptCloseAlgorithmProvider(algorithm, 0);
    return digest;
}

/// The id, as text, of a generic interface of these arguments: a name-based UUID of version 5 over
/// the platform's namespace and the signature of the instance.
std::string idOf(const std::string& genericId, const std::string& arguments) {
    std::vector<unsigned char> input = {0x11, 0xf4, 0x7a, 0xd5, 0x7b, 0x73, 0x42, 0xc0,
                                        0xab, 0xae, 0x87, 0x8b, 0x1e, 0x16, 0xad, 0xee};
    const std::string signature = "pinterface({" + genericId + "};" + arguments + ")";
    input.insert(input.end(), signature.begin(), signature.end());
    auto digest = sha1(std::move(input));
    digest[6] = static_cast<unsigned char>((digest[6] & 0x0FU) | 0x50U);
    digest[8] = static_cast<unsigned char>((digest[8] & 0x3FU) | 0x80U);
    std::string text;
    for (std::size_t byte = 0; byte < 16; ++byte) {
        std::array<char, 3> digits;
        std::snprintf(digits.data(), digits.size(), "%02x", digest[byte]);
        text += (byte == 4 || byte == 6 || byte == 8 || byte == 10) ? "-" : "";
        text += digits.data();
    }
    return text;
}

constexpr const char* kMap = "3c2925fe-8519-45c1-aa79-197b6718c1c1";
constexpr const char* kMapView = "e480ce40-a338-4ada-adcf-272272e48cb9";
constexpr const char* kVector = "913337e9-11a1-4345-a3a2-4e7f956e222d";

TEST(InterfaceIds, TheRuleGivesIdsThatAreKnown) {
    EXPECT_EQ(idOf(kVector, "string"), "98b9acc1-4b56-532e-ac73-03d5291cca90");
    EXPECT_EQ(idOf(kMap, "string;string"), "f6d1f700-49c2-52ae-8154-826f9908773c");
}

TEST(InterfaceIds, OfTheGenericInterfacesFollowFromTheRule) {
    const std::string value = "{" + textOf(Abi::JsonValue::kId) + "}";
    EXPECT_EQ(textOf(Abi::JsonMap::kId), idOf(kMap, "string;" + value));
    EXPECT_EQ(textOf(Abi::JsonMapView::kId), idOf(kMapView, "string;" + value));
    EXPECT_EQ(textOf(Abi::JsonVector::kId), idOf(kVector, value));
}

TEST(InterfaceIds, AreThoseOfThePlatformsHeaders) {
    EXPECT_EQ(textOf(Abi::ActivationFactory::kId), textOf(IID_IActivationFactory));
    EXPECT_EQ(textOf(Abi::AgileObject::kId), textOf(IID_IAgileObject));
    EXPECT_EQ(textOf(Abi::AnalyticsInfoStatics::kId),
              textOf(IID___x_ABI_CWindows_CSystem_CProfile_CIAnalyticsInfoStatics));
    EXPECT_EQ(textOf(Abi::AnalyticsVersionInfo::kId),
              textOf(IID___x_ABI_CWindows_CSystem_CProfile_CIAnalyticsVersionInfo));
    EXPECT_EQ(
        textOf(Abi::EasClientDeviceInformation::kId),
        textOf(
            IID___x_ABI_CWindows_CSecurity_CExchangeActiveSyncProvisioning_CIEasClientDeviceInformation));
}

}  // namespace
