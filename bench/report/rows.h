#ifndef ORVEL_BENCH_REPORT_ROWS_H
#define ORVEL_BENCH_REPORT_ROWS_H

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <vector>

#include "bench/report/measurements.h"

/// The rows of the table: what is measured, against what, and what is wanted of it.
namespace Orvel::Bench {

/// How a row is judged.
enum class Judging {
    kRatio,   ///< How many times its reference it takes; at most the target.
    kSpeed,   ///< How much of its reference's speed it has; at least the target.
    kFigure,  ///< Its own figure; at most the target.
    kShown,   ///< Not at all.
};

/// A row that was measured.
struct Row {
    std::string name;
    std::string what;
    std::string unit;
    /// In `unit`, as medians.
    double figure = 0;
    std::optional<double> reference;
    /// How far the repetitions of the figure lie apart, over the median.
    double spread = 0;
    Judging judging = Judging::kShown;
    /// What is judged: a ratio, or the figure itself.
    double value = 0;
    double target = 0;
};

/// Whether a row reaches its target; one without a target does.
[[nodiscard]] bool reachesTarget(const Row& row);

/// The rows of what was measured.
/// @param missing takes the names of those that were not.
[[nodiscard]] std::vector<Row> rowsOf(const Measurements& measurements,
                                      std::vector<std::string>& missing);

void to_json(nlohmann::json& json, const Row& row);
void from_json(const nlohmann::json& json, Row& row);

}  // namespace Orvel::Bench

#endif
