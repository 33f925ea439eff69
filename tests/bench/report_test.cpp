#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/report/measurements.h"
#include "bench/report/rows.h"
#include "bench/report/table.h"

namespace {

using namespace Orvel::Bench;
using nlohmann::json;
using testing::Contains;
using testing::DoubleEq;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Optional;
using testing::SizeIs;

json run(const std::string& name, double time, const std::string& unit = "ns") {
    return {
        {"run_name", name}, {"run_type", "iteration"}, {"real_time", time}, {"time_unit", unit}};
}

json figure(const std::string& name, double value) {
    return {{"run_name", name}, {"run_type", "iteration"}, {"figure", value}};
}

Measurements measured(const std::vector<json>& runs) {
    Measurements measurements;
    measurements.add({{"benchmarks", runs}});
    return measurements;
}

Row onlyRow(const std::vector<json>& runs) {
    std::vector<std::string> missing;
    const std::vector<Row> rows = rowsOf(measured(runs), missing);
    if (rows.size() != 1) {
        throw std::logic_error("there is not one row");
    }
    return rows.front();
}

TEST(Measurements, TakeTheMedianOfTheRepetitions) {
    const auto odd = measured({run("a/case", 5), run("a/case", 1), run("a/case", 3)});
    EXPECT_THAT(odd.median("a/case"), Optional(DoubleEq(3)));
    const auto even =
        measured({run("a/case", 4), run("a/case", 1), run("a/case", 2), run("a/case", 9)});
    EXPECT_THAT(even.median("a/case"), Optional(DoubleEq(3)));
}

TEST(Measurements, CountTimesInNanosecondsWhateverTheirUnit) {
    EXPECT_THAT(measured({run("a/case", 2, "ms")}).median("a/case"), Optional(DoubleEq(2e6)));
    EXPECT_THAT(measured({run("a/case", 2, "us")}).median("a/case"), Optional(DoubleEq(2e3)));
}

TEST(Measurements, PreferACountedFigureToTheTime) {
    json counted = run("a/case", 5);
    counted["figure"] = 42;
    EXPECT_THAT(measured({counted}).median("a/case"), Optional(DoubleEq(42)));
}

TEST(Measurements, KnowABenchmarkWithoutWhatItsOptionsAddToItsName) {
    EXPECT_THAT(measured({run("a/case/1000/real_time", 7)}).median("a/case"),
                Optional(DoubleEq(7)));
}

TEST(Measurements, LeaveOutWhatTheProgramHasWorkedOutItself) {
    json median = run("a/case", 100);
    median["run_type"] = "aggregate";
    EXPECT_THAT(measured({run("a/case", 7), median}).median("a/case"), Optional(DoubleEq(7)));
}

TEST(Measurements, TellHowFarTheRepetitionsLieApart) {
    EXPECT_THAT(measured({run("a/case", 9), run("a/case", 10), run("a/case", 12)}).spread("a/case"),
                Optional(DoubleEq(0.3)));
}

TEST(Measurements, HaveNothingOfABenchmarkThatDidNotRun) {
    EXPECT_EQ(measured({}).median("a/case"), std::nullopt);
    EXPECT_EQ(measured({}).spread("a/case"), std::nullopt);
}

TEST(Measurements, RefuseABenchmarkThatFailed) {
    const json failed = {{"run_name", "a/case"},
                         {"run_type", "iteration"},
                         {"error_occurred", true},
                         {"error_message", "no server"}};
    try {
        measured({failed});
        FAIL() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "a/case failed: no server");
    }
}

TEST(Measurements, RefuseWhatIsNoResult) {
    Measurements measurements;
    EXPECT_THROW(measurements.add(json::array()), std::runtime_error);
    EXPECT_THROW(measurements.add({{"benchmarks", {{{"run_name", 1}}}}}), std::runtime_error);
    EXPECT_THROW(measured({run("a/case", 1, "weeks")}), std::runtime_error);
}

TEST(Rows, CompareTheTimeWithTheFloorOfTheSameRun) {
    const Row row = onlyRow({run("collect_plain/case", 600), run("collect_plain/floor", 400)});
    EXPECT_DOUBLE_EQ(row.value, 1.5);
    EXPECT_TRUE(reachesTarget(row));
    EXPECT_FALSE(
        reachesTarget(onlyRow({run("collect_plain/case", 604), run("collect_plain/floor", 400)})));
}

TEST(Rows, CompareSpeedTheOtherWayRound) {
    const Row row = onlyRow({run("store_one/case", 10, "ms"), run("store_one/floor", 6, "ms")});
    EXPECT_DOUBLE_EQ(row.value, 0.6);
    EXPECT_TRUE(reachesTarget(row));
    EXPECT_FALSE(reachesTarget(
        onlyRow({run("store_one/case", 10, "ms"), run("store_one/floor", 5.9, "ms")})));
}

TEST(Rows, CompareAGrowingQueueWithOneOfAHundred) {
    std::vector<std::string> missing;
    const auto rows =
        rowsOf(measured({run("queue_100/case", 100), run("queue_1000000/case", 131)}), missing);
    ASSERT_THAT(rows, SizeIs(2));
    EXPECT_TRUE(reachesTarget(rows[0]));
    EXPECT_DOUBLE_EQ(rows[1].value, 1.31);
    EXPECT_FALSE(reachesTarget(rows[1]));
}

TEST(Rows, HoldAFigureAgainstItsTarget) {
    EXPECT_TRUE(reachesTarget(onlyRow({figure("libraries_needed/case", 6)})));
    EXPECT_FALSE(reachesTarget(onlyRow({figure("libraries_needed/case", 7)})));
    EXPECT_FALSE(reachesTarget(onlyRow({run("construction/case", 30.1, "us")})));
}

TEST(Rows, NameWhatWasNotMeasured) {
    std::vector<std::string> missing;
    const auto rows = rowsOf(measured({run("collect_plain/case", 600)}), missing);
    EXPECT_THAT(rows, IsEmpty());
    // Without its floor, a case is not measured.
    EXPECT_THAT(missing, Contains("collect_plain"));
    EXPECT_THAT(missing, Contains("store_eight"));
}

TEST(Rows, ComeBackFromJsonAsTheyWere) {
    const Row row = onlyRow({run("collect_plain/case", 600), run("collect_plain/floor", 400)});
    const Row read = json(row).get<Row>();
    EXPECT_EQ(json(read), json(row));
    EXPECT_THAT(read.reference, Optional(DoubleEq(400)));
    EXPECT_EQ(onlyRow({figure("threads/case", 0)}).reference, std::nullopt);
}

TEST(Table, SaysOfEachRowWhetherItReachesItsTarget) {
    const Row reached = onlyRow({run("collect_plain/case", 500), run("collect_plain/floor", 400)});
    EXPECT_THAT(tableOf({reached}), HasSubstr("reached"));
    EXPECT_THAT(tableOf({reached}), HasSubstr("1.25"));
    const Row missed = onlyRow({run("collect_plain/case", 900), run("collect_plain/floor", 400)});
    EXPECT_THAT(tableOf({missed}), HasSubstr("MISSED"));
}

TEST(Table, HasLinesOfOneWidth) {
    std::vector<std::string> missing;
    const std::string table = tableOf(
        rowsOf(measured({run("construction/case", 5, "us"), figure("threads/case", 0)}), missing));
    const std::size_t width = table.find('\n');
    for (std::size_t at = 0; at < table.size(); at += width + 1) {
        EXPECT_EQ(table.find('\n', at) - at, width);
    }
}

TEST(Comparison, ShowsTheChangeOfWhatIsJudged) {
    const Row before = onlyRow({run("collect_plain/case", 800), run("collect_plain/floor", 400)});
    const Row after = onlyRow({run("collect_plain/case", 500), run("collect_plain/floor", 500)});
    EXPECT_THAT(comparisonOf({before}, {after}), HasSubstr("-50.0%"));
}

TEST(Comparison, LeavesOutRowsThatOnlyOneRunHas) {
    const Row before = onlyRow({figure("threads/case", 0)});
    const Row after = onlyRow({figure("library_size/case", 180e3)});
    EXPECT_THAT(comparisonOf({before}, {after}), Not(HasSubstr("stripped")));
}

}  // namespace
