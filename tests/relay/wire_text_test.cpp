#include "relay/wire/wire_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "relay/wire/frame.h"
#include "tests/relay/frame_bytes.h"

namespace Orvel::Relay::Wire {
namespace {

// Lone surrogates, U+0000 and a pair.
const WideString kOddText(ORVEL_RELAY_TEXT("a\xD800\x0000\xDFFFz\xD83D\xDE00"), 7);

constexpr std::size_t kKibibyte = 1024;

std::string asString(std::span<const std::byte> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::span<const std::byte> asBytes(const std::string& text) {
    return std::as_bytes(std::span(text.data(), text.size()));
}

TEST(WireText, AnyTextTravelsAsLittleEndianCodeUnits) {
    EXPECT_EQ(asString(OutgoingText(kOddText).bytes()), Testing::wireBytes(kOddText));
    EXPECT_TRUE(OutgoingText(ORVEL_RELAY_TEXT("")).bytes().empty());
}

TEST(WireText, ATextThatComesByteByByteIsWholeInTheEnd) {
    const std::string bytes = Testing::wireBytes(kOddText);
    IncomingText text(bytes.size());
    for (const char byte : bytes) {
        ASSERT_FALSE(text.complete());
        text.room()[0] = static_cast<std::byte>(byte);
        text.arrived(1);
    }
    ASSERT_TRUE(text.complete());
    EXPECT_TRUE(text.room().empty());
    EXPECT_EQ(std::move(text).finish(), kOddText);
}

TEST(WireText, ATextTakesNoMoreThanItsOwnBytes) {
    const std::string bytes = Testing::wireBytes(ORVEL_RELAY_TEXT("abc")) + "next frame";
    IncomingText text(6);
    EXPECT_EQ(text.take(asBytes(bytes)), 6u);
    EXPECT_TRUE(text.complete());
    EXPECT_EQ(std::move(text).finish(), ORVEL_RELAY_TEXT("abc"));
}

TEST(WireText, AnEmptyTextIsCompleteAtOnce) {
    IncomingText text(0);
    EXPECT_TRUE(text.complete());
    EXPECT_EQ(text.take(asBytes("next")), 0u);
    EXPECT_EQ(std::move(text).finish(), ORVEL_RELAY_TEXT(""));
}

TEST(WireText, AClaimAloneCostsNoMemory) {
    IncomingText text(kLargestBody);
    EXPECT_LE(text.room().size(), 64 * kKibibyte);
}

TEST(WireText, MemoryStaysWithinTheDoubleOfWhatHasArrived) {
    IncomingText text(kLargestBody);
    std::size_t arrived = 0;
    while (arrived < 8 * kKibibyte * kKibibyte) {
        const std::size_t room = text.room().size();
        ASSERT_GT(room, 0u);
        ASSERT_LE(room, std::max<std::size_t>(arrived, 64 * kKibibyte));
        const std::size_t count = std::min<std::size_t>(room, 10'001);
        text.arrived(count);
        arrived += count;
    }
}

}  // namespace
}  // namespace Orvel::Relay::Wire
