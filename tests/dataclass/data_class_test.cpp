#include "orvel/analytics/data_class.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

#include "support/data_classes.h"
#include "support/fake_clock.h"

namespace {

using Orvel::Analytics::DataClass::BaseDataClass;
using Orvel::Analytics::DataClass::DataClassFieldInfo;
using Orvel::TestSupport::kSomeTime;
using Orvel::TestSupport::setCurrentTime;
using Orvel::TestSupport::TestDataClass;

static_assert(std::is_abstract_v<BaseDataClass>);
static_assert(!std::has_virtual_destructor_v<BaseDataClass>);
static_assert(std::is_nothrow_move_constructible_v<DataClassFieldInfo>);

DataClassFieldInfo filledField() {
    DataClassFieldInfo info;
    info.name = ORVEL_TEXT("a name that is too long for the string object itself");
    info.id = ORVEL_TEXT("id");
    info.type = ORVEL_TEXT("varchar(32)");
    info.auxValue = 7;
    info.nullable = ORVEL_TEXT("false");
    return info;
}

void expectFilled(const DataClassFieldInfo& info) {
    EXPECT_EQ(info.name, ORVEL_TEXT("a name that is too long for the string object itself"));
    EXPECT_EQ(info.id, ORVEL_TEXT("id"));
    EXPECT_EQ(info.type, ORVEL_TEXT("varchar(32)"));
    EXPECT_EQ(info.auxValue, 7);
    EXPECT_EQ(info.nullable, ORVEL_TEXT("false"));
}

void expectTextsEmpty(const DataClassFieldInfo& info) {
    EXPECT_TRUE(info.name.empty());
    EXPECT_TRUE(info.id.empty());
    EXPECT_TRUE(info.type.empty());
    EXPECT_TRUE(info.nullable.empty());
}

TEST(DataClassFieldInfo, StartsWithEmptyTexts) { expectTextsEmpty(DataClassFieldInfo()); }

TEST(DataClassFieldInfo, LeavesAuxValueAsTheMemoryWas) {
    alignas(DataClassFieldInfo) std::array<unsigned char, sizeof(DataClassFieldInfo)> memory;
    memory.fill(0x5A);
    auto* const info = new (memory.data()) DataClassFieldInfo;
    const std::size_t offset =
        static_cast<std::size_t>(reinterpret_cast<unsigned char*>(&info->auxValue) - memory.data());
    std::int32_t aux = 0;
    std::memcpy(&aux, memory.data() + offset, sizeof aux);
    EXPECT_EQ(aux, 0x5A5A5A5A);
    info->~DataClassFieldInfo();
}

TEST(DataClassFieldInfo, CopiesEveryMember) {
    const DataClassFieldInfo source = filledField();
    const DataClassFieldInfo copy(source);
    expectFilled(copy);
    DataClassFieldInfo assigned;
    assigned = source;
    expectFilled(assigned);
    expectFilled(source);
}

TEST(DataClassFieldInfo, MovesItsTextsAndLeavesThemEmpty) {
    DataClassFieldInfo source = filledField();
    DataClassFieldInfo moved(std::move(source));
    expectFilled(moved);
    expectTextsEmpty(source);  // NOLINT(bugprone-use-after-move): what is left is promised.
    EXPECT_EQ(source.auxValue, 7);
    DataClassFieldInfo assigned;
    assigned = std::move(moved);
    expectFilled(assigned);
    expectTextsEmpty(moved);  // NOLINT(bugprone-use-after-move)
}

TEST(DataClassFieldInfo, IsUnchangedByAssignmentToItself) {
    DataClassFieldInfo info = filledField();
    DataClassFieldInfo& itself = info;
    info = itself;
    expectFilled(info);
    info = std::move(itself);
    expectFilled(info);
}

TEST(BaseDataClass, TakesTheTimeOfItsConstruction) {
    setCurrentTime(kSomeTime + 5);
    const TestDataClass dataClass({});
    EXPECT_EQ(dataClass.dateTime, kSomeTime + 5);
}

TEST(BaseDataClass, KeepsItsTimeWhenCopied) {
    setCurrentTime(kSomeTime);
    const TestDataClass source({});
    setCurrentTime(kSomeTime + 100);
    const TestDataClass copy(source);
    EXPECT_EQ(copy.dateTime, kSomeTime);
    TestDataClass assigned({});
    assigned = source;
    EXPECT_EQ(assigned.dateTime, kSomeTime);
    EXPECT_EQ(assigned.id, ORVEL_TEXT("Evt"));
}

TEST(BaseDataClass, MovesItsTextsAndLeavesThemEmpty) {
    TestDataClass source({});
    source.dateTime = 42;
    TestDataClass moved(std::move(source));
    EXPECT_EQ(moved.name, ORVEL_TEXT("Event"));
    EXPECT_EQ(moved.id, ORVEL_TEXT("Evt"));
    EXPECT_EQ(moved.version, ORVEL_TEXT("1.0"));
    EXPECT_EQ(moved.dateTime, 42);
    // NOLINTBEGIN(bugprone-use-after-move): what is left is promised.
    EXPECT_TRUE(source.name.empty());
    EXPECT_TRUE(source.id.empty());
    EXPECT_TRUE(source.version.empty());
    // NOLINTEND(bugprone-use-after-move)
    TestDataClass& itself = moved;
    moved = std::move(itself);
    EXPECT_EQ(moved.id, ORVEL_TEXT("Evt"));
}

/// A data class of another kind than TestDataClass.
class OtherDataClass final : public BaseDataClass {
  public:
    void reservedOperation() override {}
    std::list<DataClassFieldInfo> getFields() override {
        return {Orvel::TestSupport::field(ORVEL_TEXT("other"), ORVEL_TEXT("integer"))};
    }
};

TEST(BaseDataClass, KeepsItsOwnOperationsWhenAssigned) {
    TestDataClass source({});
    OtherDataClass other;
    BaseDataClass& target = other;
    target = static_cast<const BaseDataClass&>(source);
    EXPECT_EQ(target.id, ORVEL_TEXT("Evt"));
    ASSERT_EQ(target.getFields().size(), 1U);
    EXPECT_EQ(target.getFields().front().id, ORVEL_TEXT("other"));
}

}  // namespace
