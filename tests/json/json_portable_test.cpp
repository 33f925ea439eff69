/// What the portable backend promises beyond the platform's.

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "json/json.h"
#include "json/portable/arena.h"
#include "json/raise.h"
#include "orvel/analytics/hresult_error.h"
#include "parsing.h"
#include "support/raised_status.h"

namespace {

using Orvel::WideString;
using Orvel::WideStringView;
using Orvel::TestSupport::raisedStatus;
using testing::PrintToString;
using namespace Orvel::Analytics::Json;

TEST(PortableJson, RefusesMalformedNumbers) {
    for (const WideStringView text :
         {ORVEL_TEXT("{\"a\":01}"), ORVEL_TEXT("{\"a\":1.}"), ORVEL_TEXT("{\"a\":.5}"),
          ORVEL_TEXT("{\"a\":+1}"), ORVEL_TEXT("{\"a\":0x10}")}) {
        EXPECT_EQ(parseStatus(text), Status::kInvalidJsonString) << PrintToString(WideString(text));
    }
}

TEST(PortableJson, ReadsAnArrayInOneWalk) {
    // So many that a walk from the beginning for each of them would take hours.
    constexpr std::uint32_t kElements = 1'000'000;
    WideString text = ORVEL_TEXT("{\"a\":[");
    for (std::uint32_t index = 1; index < kElements; ++index) {
        text += ORVEL_TEXT("0,");
    }
    text += ORVEL_TEXT("1]}");
    Document document;
    const Array array = document.parseObject(text).getNamedArray(ORVEL_TEXT("a"));
    ASSERT_EQ(array.size(), kElements);
    std::size_t units = 0;
    for (std::uint32_t index = 0; index < kElements; ++index) {
        units += array.getAt(index).serialisedLength();
    }
    EXPECT_EQ(units, kElements);
    EXPECT_EQ(array.getAt(kElements - 1).stringify(), ORVEL_TEXT("1"));
}

TEST(PortableJson, RefusesComments) {
    for (const WideStringView text :
         {ORVEL_TEXT("/**/{}"), ORVEL_TEXT("{}//"), ORVEL_TEXT("{\"a\"/**/:1}")}) {
        EXPECT_EQ(parseStatus(text), Status::kInvalidJsonString) << PrintToString(WideString(text));
    }
}

TEST(PortableJson, RefusesEscapedUnpairedSurrogates) {
    for (const WideStringView text :
         {ORVEL_TEXT("{\"a\":\"\\ud83d\"}"), ORVEL_TEXT("{\"a\":\"\\ude00\"}"),
          ORVEL_TEXT("{\"a\":\"\\ud83d\\u0041\"}")}) {
        EXPECT_EQ(parseStatus(text), Status::kInvalidJsonString) << PrintToString(WideString(text));
    }
    EXPECT_EQ(reserialised(ORVEL_TEXT("{\"a\":\"\\ud83d\\ude00\"}")),
              ORVEL_TEXT("{\"a\":\"\U0001F600\"}"));
}

TEST(PortableJson, AcceptsEveryWayToWriteZero) {
    const WideString longZero = ORVEL_TEXT("0.") + WideString(400, '0');
    for (const WideString& number :
         {WideString(ORVEL_TEXT("0e-9999")), WideString(ORVEL_TEXT("0.0E+9999")), longZero}) {
        EXPECT_EQ(parseStatus(ORVEL_TEXT("{\"a\":") + number + ORVEL_TEXT("}")), 0U)
            << PrintToString(number);
    }
}

TEST(PortableJson, RefusesNestingBeyond1024) {
    EXPECT_EQ(parseStatus(nested(1024)), 0U);
    EXPECT_EQ(parseStatus(nested(1025)), Status::kImplementationLimit);
    EXPECT_EQ(parseStatus(nested(100'000)), Status::kImplementationLimit);
}

TEST(PortableJson, LeavesAMemberInItsPlaceWhenItsNameComesAgain) {
    EXPECT_EQ(reserialised(ORVEL_TEXT("{\"a\":1,\"b\":2,\"a\":3}")),
              ORVEL_TEXT("{\"a\":3,\"b\":2}"));
}

TEST(PortableJson, TakesANullForAMemberOfAnotherType) {
    Document document;
    const Object object = document.parseObject(ORVEL_TEXT("{\"z\":null}"));
    const WideStringView z = ORVEL_TEXT("z");
    EXPECT_EQ(raisedStatus([&] { static_cast<void>(object.getNamedString(z)); }),
              Status::kIllegalMethodCall);
    EXPECT_EQ(raisedStatus([&] { static_cast<void>(object.getNamedBoolean(z)); }),
              Status::kIllegalMethodCall);
    EXPECT_EQ(raisedStatus([&] { static_cast<void>(object.getNamedObject(z)); }),
              Status::kIllegalMethodCall);
    EXPECT_EQ(raisedStatus([&] { static_cast<void>(object.getNamedArray(z)); }),
              Status::kIllegalMethodCall);
}

TEST(PortableJson, TakesAnyTextForAName) {
    const WideString name = WideString(1, 0) + ORVEL_TEXT("\u2028\uFFFF");
    Document document;
    Object object = document.parseObject(ORVEL_TEXT("{\"\":2,\"a\":1}"));
    object.setNamedValue(name, document.stringValue(ORVEL_TEXT("x")));
    const ObjectView view = object.getView();
    EXPECT_TRUE(view.hasKey(ORVEL_TEXT("")));
    EXPECT_FALSE(view.hasKey(ORVEL_TEXT("A"))) << "the case of names tells them apart";
    EXPECT_FALSE(view.hasKey(WideString(1, 0xD800)));
    Document again;
    EXPECT_EQ(again.parseObject(object.stringify()).getNamedString(name), ORVEL_TEXT("x"));
}

TEST(PortableJson, KeepsNumbersAsWritten) {
    const WideString text =
        ORVEL_TEXT("{\"a\":1.50,\"b\":1e10,\"c\":-0,\"d\":12345678901234567890123,\"e\":1E+2}");
    EXPECT_EQ(reserialised(text), text);
}

TEST(PortableJson, KeepsTheOrderOfMembers) {
    const WideString text = ORVEL_TEXT("{\"z\":1,\"a\":2,\"m\":{\"y\":1,\"b\":2}}");
    EXPECT_EQ(reserialised(text), text);
}

TEST(PortableJson, KeepsUnpairedSurrogatesOfAStringValue) {
    const WideString text =
        WideString(1, 0xD800) + ORVEL_TEXT("a") + WideString(2, 0xDFFF) + WideString(1, 0xD83D);
    Document document;
    Object object = document.newObject();
    object.setNamedValue(text, document.stringValue(text));
    EXPECT_EQ(object.getNamedString(text), text);
    EXPECT_EQ(object.stringify(),
              ORVEL_TEXT("{\"") + text + ORVEL_TEXT("\":\"") + text + ORVEL_TEXT("\"}"));
}

TEST(PortableJson, WritesDoublesInTheirShortestForm) {
    Document document;
    EXPECT_EQ(document.numberValue(0.1).stringify(), ORVEL_TEXT("0.1"));
    EXPECT_EQ(document.numberValue(1e300).stringify(), ORVEL_TEXT("1e+300"));
}

TEST(PortableJson, RefusesToWriteWhatIsNoFiniteNumber) {
    Document document;
    for (const double number :
         {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
          std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_THROW(static_cast<void>(document.numberValue(number)),
                     Orvel::Analytics::hresult_invalid_argument);
    }
}

TEST(PortableJson, EscapesControlCharactersInTheShortestForm) {
    WideString controls;
    for (Orvel::WideChar unit = 0; unit < 0x20; ++unit) {
        controls += unit;
    }
    Document document;
    EXPECT_EQ(document.stringValue(controls + ORVEL_TEXT("/\u007F")).stringify(),
              ORVEL_TEXT("\"\\u0000\\u0001\\u0002\\u0003\\u0004\\u0005\\u0006\\u0007\\b\\t\\n"
                         "\\u000B\\f\\r\\u000E\\u000F\\u0010\\u0011\\u0012\\u0013\\u0014\\u0015"
                         "\\u0016\\u0017\\u0018\\u0019\\u001A\\u001B\\u001C\\u001D\\u001E\\u001F"
                         "/\u007F\""));
}

TEST(PortableJson, EscapesWhereverItMust) {
    for (std::size_t length = 0; length < 70; ++length) {
        for (std::size_t at = 0; at <= length; ++at) {
            const WideString before(at, 'a');
            const WideString after(length - at, 'b');
            Document document;
            const auto serialised = [&](const WideString& character) {
                return document.stringValue(before + character + after).stringify();
            };
            const auto expected = [&](const WideString& escaped) {
                return ORVEL_TEXT("\"") + before + escaped + after + ORVEL_TEXT("\"");
            };
            ASSERT_EQ(serialised(ORVEL_TEXT("\"")), expected(ORVEL_TEXT("\\\"")));
            ASSERT_EQ(serialised(ORVEL_TEXT("\x1f")), expected(ORVEL_TEXT("\\u001F")));
            ASSERT_EQ(serialised(ORVEL_TEXT("\x7f")), expected(ORVEL_TEXT("\x7f")));
            ASSERT_EQ(serialised(ORVEL_TEXT("\U0001F600")), expected(ORVEL_TEXT("\U0001F600")));
        }
    }
}

TEST(PortableJson, SerialisesTextsOfAnyLength) {
    for (std::size_t length = 1000; length < 1050; ++length) {
        Document document;
        const WideString text = WideString(length, 'x') + ORVEL_TEXT("\n\u6f22");
        Array array = document.newArray();
        array.append(document.stringValue(text));
        array.append(document.stringValue(WideString(5 * length, 'y')));
        ASSERT_EQ(array.stringify(), ORVEL_TEXT("[\"") + WideString(length, 'x') +
                                         ORVEL_TEXT("\\n\u6f22\",\"") +
                                         WideString(5 * length, 'y') + ORVEL_TEXT("\"]"));
    }
}

TEST(PortableJson, SerialisesDeeperThanItParses) {
    const WideString deep = nested(1024);
    Document document;
    const Object parsed = document.parseObject(deep);
    Object outer = document.newObject();
    outer.setNamedValue(ORVEL_TEXT("o"), parsed);
    EXPECT_EQ(outer.stringify(), ORVEL_TEXT("{\"o\":") + deep + ORVEL_TEXT("}"));
}

TEST(PortableJson, ReadsManySmallObjectsAfterALargeOneWithoutDelay) {
    std::string text = "{\"large\":{";
    for (int name = 0; name < 300'000; ++name) {
        text += '"' + std::to_string(name) + "\":0,";
    }
    text.back() = '}';
    text += ",\"small\":[";
    for (int object = 0; object < 300'000; ++object) {
        text += "{\"a\":0},";
    }
    text.back() = ']';
    const WideString wide = Orvel::toWide(text + "}");
    EXPECT_EQ(reserialised(wide), wide);
}

TEST(Arena, HandsOutAlignedMemoryOfAnySize) {
    Arena arena;
    for (const std::size_t size : {1U, 7U, 4000U, 100U, 1'000'000U, 16U}) {
        char* const block = arena.allocate(size);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignof(std::max_align_t), 0U);
        std::fill(block, block + size, 'x');
    }
}

TEST(Arena, GrowsTheLastBlockInPlaceAndMovesAnyOther) {
    Arena arena;
    const yyjson_alc allocator = arena.allocator();
    auto* const first = static_cast<char*>(allocator.malloc(allocator.ctx, 16));
    first[0] = 'x';
    EXPECT_EQ(allocator.realloc(allocator.ctx, first, 16, 64), first);
    allocator.malloc(allocator.ctx, 16);
    auto* const moved = static_cast<char*>(allocator.realloc(allocator.ctx, first, 64, 128));
    EXPECT_NE(moved, first);
    EXPECT_EQ(moved[0], 'x');
}

TEST(Arena, TakesBackTheLastBlock) {
    Arena arena;
    const yyjson_alc allocator = arena.allocator();
    void* const first = allocator.malloc(allocator.ctx, 16);
    allocator.free(allocator.ctx, first);
    EXPECT_EQ(allocator.malloc(allocator.ctx, 32), first);
}

TEST(Arena, TellsTheEngineOfARequestBeyondMemory) {
    Arena arena;
    const yyjson_alc allocator = arena.allocator();
    EXPECT_EQ(allocator.malloc(allocator.ctx, std::numeric_limits<std::size_t>::max()), nullptr);
    EXPECT_THROW(arena.allocate(std::numeric_limits<std::size_t>::max()), std::bad_alloc);
}

}  // namespace
