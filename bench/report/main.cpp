#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/report/measurements.h"
#include "bench/report/rows.h"
#include "bench/report/table.h"

namespace {

using nlohmann::json;
using namespace Orvel::Bench;

struct Arguments {
    std::vector<std::string> results;
    std::string output;
    std::vector<std::string> compared;
    bool check = false;
};

json readJson(const std::string& file) {
    std::ifstream stream(file);
    json read = stream ? json::parse(stream, nullptr, false) : json(json::value_t::discarded);
    if (read.is_discarded()) {
        throw std::runtime_error(file + " cannot be read, or is no JSON");
    }
    return read;
}

std::vector<Row> readRows(const std::string& file) {
    try {
        return readJson(file).at("rows").get<std::vector<Row>>();
    } catch (const json::exception& error) {
        throw std::runtime_error(file + " holds no rows of a report: " + error.what());
    }
}

void write(const std::string& file, const json& report) {
    std::ofstream stream(file);
    stream << report.dump(2) << '\n';
    if (!stream.flush()) {
        throw std::runtime_error(file + " cannot be written");
    }
}

int report(const Arguments& arguments) {
    Measurements measurements;
    json context;
    for (const std::string& file : arguments.results) {
        const json results = readJson(file);
        measurements.add(results);
        context.update(results.value("context", json::object()));
    }
    std::vector<std::string> missing;
    const std::vector<Row> rows = rowsOf(measurements, missing);
    fmt::print("{}", tableOf(rows));
    if (!arguments.output.empty()) {
        write(arguments.output, {{"context", context}, {"rows", rows}});
    }
    bool good = missing.empty();
    for (const std::string& name : missing) {
        fmt::print(stderr, "not measured: {}\n", name);
    }
    for (const Row& row : rows) {
        if (arguments.check && !reachesTarget(row)) {
            fmt::print(stderr, "target missed: {} ({})\n", row.name, row.what);
            good = false;
        }
    }
    return good ? 0 : 1;
}

int run(int argc, char** argv) {
    CLI::App app("Makes one table of what the benchmarks measured.");
    Arguments arguments;
    app.add_option("results", arguments.results, "Results, as the benchmarks' programs write them");
    app.add_option("--output", arguments.output, "Write the table's rows to this file, as JSON");
    app.add_option("--compare", arguments.compared, "Compare two such files instead")->expected(2);
    app.add_flag("--check", arguments.check, "Fail when a target is missed, and name it");
    CLI11_PARSE(app, argc, argv);
    if (!arguments.compared.empty()) {
        fmt::print("{}",
                   comparisonOf(readRows(arguments.compared[0]), readRows(arguments.compared[1])));
        return 0;
    }
    return report(arguments);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "orvel-bench-report: %s\n", error.what());
        return 2;
    }
}
