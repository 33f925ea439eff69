#include "relay/wire/frame.h"

#include <gtest/gtest.h>

#include "tests/relay/frame_bytes.h"

namespace Orvel::Relay::Wire {
namespace {

using namespace Testing;

std::optional<FrameHeader> decodeBytes(const std::string& bytes) {
    return decode(reinterpret_cast<const std::byte*>(bytes.data()));
}

const FrameHeader kCommandHeader{FrameType::kCommand, 7, 5, 4, 1024};

TEST(Frame, HeaderIsLittleEndianInTheDocumentedOrder) {
    const FrameHeader header{FrameType::kCommand, 0x01020304, 0x11121314, 0x1222, 0x21222324};
    const std::string expected(
        "ORVL"
        "\x01"
        "\x03"
        "\x20\x00"
        "\x04\x03\x02\x01"
        "\x14\x13\x12\x11"
        "\x22\x12\x00\x00"
        "\x00\x00\x00\x00"
        "\x24\x23\x22\x21\x00\x00\x00\x00",
        32);
    EXPECT_EQ(headerBytes(header), expected);
}

TEST(Frame, EveryTypeIsReadAsItWasWritten) {
    for (const FrameHeader& header : {
             FrameHeader{FrameType::kHello, 0, 0, 0, kLargestGreeting},
             FrameHeader{FrameType::kWelcome, 0, kLargestBody, 0, 0},
             FrameHeader{FrameType::kCommand, 1, UINT32_MAX, kLargestTarget, kLargestBody},
             FrameHeader{FrameType::kReply, UINT32_MAX, 0, 0, kLargestBody},
             FrameHeader{FrameType::kError, 3, 1728, 0, 0},
             FrameHeader{FrameType::kProgress, 4, 0, 0, 0},
         }) {
        EXPECT_EQ(decodeBytes(headerBytes(header)), header);
    }
}

TEST(Frame, AnyOtherMagicVersionLengthTypeOrFlagIsRefused) {
    const std::string good = headerBytes(kCommandHeader);
    ASSERT_TRUE(decodeBytes(good));
    for (const std::size_t magicByte : {0u, 1u, 2u, 3u}) {
        EXPECT_FALSE(decodeBytes(with(good, magicByte, 'x'))) << magicByte;
    }
    EXPECT_FALSE(decodeBytes(with(good, 4, 0)));
    EXPECT_FALSE(decodeBytes(with(good, 4, 2)));
    EXPECT_FALSE(decodeBytes(with(good, 5, 0)));
    EXPECT_FALSE(decodeBytes(with(good, 5, 7)));
    EXPECT_FALSE(decodeBytes(with(good, 5, 255)));
    EXPECT_FALSE(decodeBytes(with(good, 6, 31)));
    EXPECT_FALSE(decodeBytes(with(good, 7, 1)));
    for (const std::size_t flagByte : {20u, 21u, 22u, 23u}) {
        EXPECT_FALSE(decodeBytes(with(good, flagByte, 1))) << flagByte;
    }
}

TEST(Frame, OddAndOversizedLengthsAreRefused) {
    const auto refused = [](std::uint32_t target, std::uint64_t body) {
        return !decodeBytes(headerBytes({FrameType::kCommand, 1, 0, target, body}));
    };
    EXPECT_FALSE(refused(kLargestTarget, kLargestBody));
    EXPECT_TRUE(refused(1, 0));
    EXPECT_TRUE(refused(0, 1));
    EXPECT_TRUE(refused(kLargestTarget + 2, 0));
    EXPECT_TRUE(refused(0, kLargestBody + 2ull));
    EXPECT_TRUE(refused(UINT32_MAX - 1, 0));
    EXPECT_TRUE(refused(0, UINT64_MAX - 1));
    EXPECT_TRUE(refused(0, std::uint64_t{1} << 32));
}

TEST(Frame, WhatATypeCannotHoldIsRefused) {
    const auto refused = [](const FrameHeader& header) {
        return !decodeBytes(headerBytes(header));
    };
    EXPECT_TRUE(refused({FrameType::kHello, 1, 0, 0, 0}));
    EXPECT_TRUE(refused({FrameType::kHello, 0, 1, 0, 0}));
    EXPECT_TRUE(refused({FrameType::kHello, 0, 0, 2, 0}));
    EXPECT_TRUE(refused({FrameType::kHello, 0, 0, 0, kLargestGreeting + 2}));
    EXPECT_TRUE(refused({FrameType::kWelcome, 1, 0, 0, 0}));
    EXPECT_TRUE(refused({FrameType::kWelcome, 0, kLargestBody + 1, 0, 0}));
    EXPECT_TRUE(refused({FrameType::kWelcome, 0, 0, 2, 0}));
    EXPECT_TRUE(refused({FrameType::kWelcome, 0, 0, 0, 2}));
    EXPECT_TRUE(refused({FrameType::kCommand, 0, 0, 0, 0}));
    EXPECT_TRUE(refused({FrameType::kReply, 0, 0, 0, 0}));
    EXPECT_TRUE(refused({FrameType::kReply, 1, 1, 0, 0}));
    EXPECT_TRUE(refused({FrameType::kReply, 1, 0, 2, 0}));
    EXPECT_TRUE(refused({FrameType::kError, 1, 0, 0, 0}));
    EXPECT_TRUE(refused({FrameType::kError, 1, 5, 2, 0}));
    EXPECT_TRUE(refused({FrameType::kError, 1, 5, 0, 2}));
    EXPECT_TRUE(refused({FrameType::kProgress, 1, 1, 0, 0}));
    EXPECT_TRUE(refused({FrameType::kProgress, 1, 0, 2, 0}));
    EXPECT_TRUE(refused({FrameType::kProgress, 1, 0, 0, 2}));
}

TEST(Frame, CommandsAreNumberedWithoutTheGreetingsNumber) {
    EXPECT_EQ(idAfter(kGreetingId), 1u);
    EXPECT_EQ(idAfter(1), 2u);
    EXPECT_EQ(idAfter(UINT32_MAX), 1u);
}

}  // namespace
}  // namespace Orvel::Relay::Wire
