#ifndef ORVEL_BENCH_REPORT_MEASUREMENTS_H
#define ORVEL_BENCH_REPORT_MEASUREMENTS_H

#include <nlohmann/json.hpp>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Orvel::Bench {

/// What the benchmarks measured: for each benchmark the figure of every repetition, which is its
/// counter "figure" or else its time an iteration in nanoseconds.
class Measurements {
  public:
    /// Adds the results of one program, as Google Benchmark writes them.
    /// @throws std::runtime_error when they are no such results, or when a benchmark of them
    /// failed.
    void add(const nlohmann::json& results);

    /// The median of a benchmark's repetitions, or nothing when it did not run.
    [[nodiscard]] std::optional<double> median(const std::string& benchmark) const;

    /// How far the repetitions lie apart: the largest less the smallest, over the median.
    [[nodiscard]] std::optional<double> spread(const std::string& benchmark) const;

  private:
    std::map<std::string, std::vector<double>> figures_;
};

}  // namespace Orvel::Bench

#endif
