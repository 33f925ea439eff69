#include "events/guid.h"

#include <gtest/gtest.h>

#include <set>

#include "events/guid_source.h"

namespace {

using Orvel::WideString;
using Orvel::WideStringView;
using Orvel::Analytics::Events::generateGuidString;
using Orvel::Analytics::Events::isBracedGuid;

TEST(GenerateGuidString, HasItsForm) {
    for (int round = 0; round < 100; ++round) {
        const WideString guid = generateGuidString();
        ASSERT_EQ(guid.size(), 36U);
        for (std::size_t at = 0; at < guid.size(); ++at) {
            const bool isHyphen = at == 8 || at == 13 || at == 18 || at == 23;
            const WideStringView allowed =
                isHyphen ? ORVEL_TEXT("-") : ORVEL_TEXT("0123456789ABCDEF");
            EXPECT_NE(allowed.find(guid[at]), WideStringView::npos) << at;
        }
        EXPECT_EQ(guid[14], '4') << "the version of random GUIDs";
        EXPECT_NE(WideStringView(ORVEL_TEXT("89AB")).find(guid[19]), WideStringView::npos);
    }
}

TEST(GenerateGuidString, NeverGivesTheSameTextTwice) {
    std::set<WideString> guids;
    for (int round = 0; round < 1000; ++round) {
        guids.insert(generateGuidString());
    }
    EXPECT_EQ(guids.size(), 1000U);
}

TEST(IsBracedGuid, AcceptsTheBracedFormInEitherCase) {
    EXPECT_TRUE(isBracedGuid(ORVEL_TEXT("{00000000-0000-0000-0000-000000000000}")));
    EXPECT_TRUE(isBracedGuid(ORVEL_TEXT("{0f8fad5b-d9cb-469f-A165-70867728950E}")));
}

TEST(IsBracedGuid, RefusesEverythingElse) {
    for (const WideStringView text :
         {ORVEL_TEXT(""), ORVEL_TEXT("guid"), ORVEL_TEXT("0f8fad5b-d9cb-469f-a165-70867728950e"),
          ORVEL_TEXT("{0f8fad5b-d9cb-469f-a165-70867728950}"),
          ORVEL_TEXT("{0f8fad5b-d9cb-469f-a165-70867728950e0}"),
          ORVEL_TEXT("{0f8fad5b-d9cb-469f-a165-70867728950e} "),
          ORVEL_TEXT(" {0f8fad5b-d9cb-469f-a165-70867728950e}"),
          ORVEL_TEXT("{0f8fad5b-d9cb-469f-a165-70867728950e)"),
          ORVEL_TEXT("(0f8fad5b-d9cb-469f-a165-70867728950e}"),
          ORVEL_TEXT("{0f8fad5bxd9cb-469f-a165-70867728950e}"),
          ORVEL_TEXT("{0f8fad5b-d9cb-469f-a165-70867728950g}"),
          ORVEL_TEXT("{0f8fad5bd-9cb-469f-a165-70867728950e}"),
          ORVEL_TEXT("{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}")}) {
        EXPECT_FALSE(isBracedGuid(WideString(text))) << testing::PrintToString(WideString(text));
    }
}

}  // namespace
