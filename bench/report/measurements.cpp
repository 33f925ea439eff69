#include "bench/report/measurements.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>

namespace Orvel::Bench {
namespace {

using nlohmann::json;

/// A benchmark's own name: its row and its part in it, without what the options add behind.
std::string nameOf(const json& run) {
    const std::string name = run.at("run_name");
    const std::size_t part = name.find('/');
    return name.substr(0, part == std::string::npos ? part : name.find('/', part + 1));
}

double nanosecondsOf(const json& run) {
    static const std::map<std::string, double, std::less<>> kUnits = {
        {"ns", 1}, {"us", 1e3}, {"ms", 1e6}, {"s", 1e9}};
    return run.at("real_time").get<double>() * kUnits.at(run.at("time_unit").get<std::string>());
}

}  // namespace

void Measurements::add(const json& results) {
    try {
        for (const json& run : results.at("benchmarks")) {
            if (run.value("error_occurred", false)) {
                throw std::runtime_error(
                    nameOf(run) + " failed: " + run.value("error_message", "no reason given"));
            }
            if (run.at("run_type") == "iteration") {
                figures_[nameOf(run)].push_back(
                    run.contains("figure") ? run.at("figure").get<double>() : nanosecondsOf(run));
            }
        }
    } catch (const json::exception& error) {
        throw std::runtime_error(std::string("these are no results of benchmarks: ") +
                                 error.what());
    } catch (const std::out_of_range&) {
        throw std::runtime_error("a time has an unknown unit");
    }
}

std::optional<double> Measurements::median(const std::string& benchmark) const {
    const auto found = figures_.find(benchmark);
    if (found == figures_.end()) {
        return std::nullopt;
    }
    std::vector<double> sorted = found->second;
    std::sort(sorted.begin(), sorted.end());
    const std::size_t half = sorted.size() / 2;
    return sorted.size() % 2 == 1 ? sorted[half] : (sorted[half - 1] + sorted[half]) / 2;
}

std::optional<double> Measurements::spread(const std::string& benchmark) const {
    const std::optional<double> middle = median(benchmark);
    if (!middle || *middle == 0) {
        return std::nullopt;
    }
    const auto& figures = figures_.at(benchmark);
    const auto [least, most] = std::minmax_element(figures.begin(), figures.end());
    return (*most - *least) / *middle;
}

}  // namespace Orvel::Bench
