#include "bench/report/rows.h"

#include <array>

namespace Orvel::Bench {
namespace {

struct Unit {
    const char* name;
    double size;
};

constexpr Unit kNanoseconds{"ns", 1};
constexpr Unit kMicroseconds{"us", 1e3};
constexpr Unit kMilliseconds{"ms", 1e6};
constexpr Unit kKilobytes{"kB", 1e3};
constexpr Unit kMegabytes{"MB", 1e6};
constexpr Unit kCount{"", 1};

struct Plan {
    const char* name;
    const char* what;
    Unit unit;
    Judging judging;
    double target = 0;
    /// The benchmark that is measured against; a row's own floor when there is none.
    const char* reference = nullptr;
};

constexpr std::array kPlans = {
    Plan{"collect_plain", "CollectEvent, 8 fields, 207 bytes", kNanoseconds, Judging::kRatio, 1.5},
    Plan{"collect_mixed", "CollectEvent, mixed corpus", kNanoseconds, Judging::kRatio, 1.5},
    Plan{"collect_fields", "of each, the application's getFields", kNanoseconds, Judging::kShown},
    Plan{"allocations", "allocations in CollectEvent", kCount, Judging::kShown},
    Plan{"batch_10000", "batch document, 10,000 records", kMilliseconds, Judging::kRatio, 2},
    Plan{"batch_1000000", "batch document, 1,000,000 records", kMilliseconds, Judging::kRatio, 2},
    Plan{"batch_memory", "memory of SendEvents, 100,000 records", kMegabytes, Judging::kRatio, 2.2},
    Plan{"queue_1", "CollectEvent behind 1", kNanoseconds, Judging::kRatio, 1.3, "queue_100/case"},
    Plan{"queue_100", "CollectEvent behind 100", kNanoseconds, Judging::kShown},
    Plan{"queue_10000", "CollectEvent behind 10,000", kNanoseconds, Judging::kRatio, 1.3,
         "queue_100/case"},
    Plan{"queue_1000000", "CollectEvent behind 1,000,000", kNanoseconds, Judging::kRatio, 1.3,
         "queue_100/case"},
    Plan{"construction", "session construction", kMicroseconds, Judging::kFigure, 30},
    Plan{"registration", "RegisterDataClass, answered at once", kMicroseconds, Judging::kShown},
    Plan{"consent", "GetConsent, answered at once", kMicroseconds, Judging::kShown},
    Plan{"relay_operation", "one operation over the relay, 1 KB", kMicroseconds, Judging::kRatio,
         1.3},
    Plan{"relay_throughput", "100 MB through the relay", kMilliseconds, Judging::kSpeed, 0.8},
    Plan{"thousand_events", "1,000 events collected and sent", kMilliseconds, Judging::kRatio, 2},
    Plan{"store_one", "service, a batch of 1,000, one client", kMilliseconds, Judging::kSpeed, 0.6},
    Plan{"store_eight", "service, a batch of 1,000, eight clients", kMilliseconds, Judging::kSpeed,
         0.6},
    Plan{"library_size", "liborvel-analytics.so, stripped", kKilobytes, Judging::kFigure, 200},
    Plan{"libraries_needed", "shared libraries it needs", kCount, Judging::kFigure, 6},
    Plan{"threads", "threads it starts", kCount, Judging::kFigure, 0},
};

std::optional<Row> rowOf(const Plan& plan, const Measurements& measurements) {
    const std::string name = plan.name;
    const std::string floor = plan.reference == nullptr ? name + "/floor" : plan.reference;
    const auto figure = measurements.median(name + "/case");
    const auto reference = measurements.median(floor);
    const bool compared = plan.judging == Judging::kRatio || plan.judging == Judging::kSpeed;
    if (!figure || (compared && !reference)) {
        return std::nullopt;
    }
    Row row;
    row.name = name;
    row.what = plan.what;
    row.unit = plan.unit.name;
    row.figure = *figure / plan.unit.size;
    row.spread = measurements.spread(name + "/case").value_or(0);
    row.judging = plan.judging;
    row.value = row.figure;
    row.target = plan.target;
    if (compared) {
        row.reference = *reference / plan.unit.size;
        row.value = plan.judging == Judging::kRatio ? *figure / *reference : *reference / *figure;
    }
    return row;
}

}  // namespace

NLOHMANN_JSON_SERIALIZE_ENUM(Judging, {{Judging::kRatio, "ratio"},
                                       {Judging::kSpeed, "speed"},
                                       {Judging::kFigure, "figure"},
                                       {Judging::kShown, "shown"}})

bool reachesTarget(const Row& row) {
    switch (row.judging) {
        case Judging::kShown:
            return true;
        case Judging::kSpeed:
            return row.value >= row.target;
        default:
            return row.value <= row.target;
    }
}

std::vector<Row> rowsOf(const Measurements& measurements, std::vector<std::string>& missing) {
    std::vector<Row> rows;
    for (const Plan& plan : kPlans) {
        if (auto row = rowOf(plan, measurements)) {
            rows.push_back(*std::move(row));
        } else {
            missing.emplace_back(plan.name);
        }
    }
    return rows;
}

void to_json(nlohmann::json& json, const Row& row) {
    json = {{"name", row.name},     {"what", row.what},     {"unit", row.unit},
            {"figure", row.figure}, {"spread", row.spread}, {"judging", row.judging},
            {"value", row.value},   {"target", row.target}};
    if (row.reference) {
        json["reference"] = *row.reference;
    }
}

void from_json(const nlohmann::json& json, Row& row) {
    json.at("name").get_to(row.name);
    json.at("what").get_to(row.what);
    json.at("unit").get_to(row.unit);
    json.at("figure").get_to(row.figure);
    json.at("spread").get_to(row.spread);
    json.at("judging").get_to(row.judging);
    json.at("value").get_to(row.value);
    json.at("target").get_to(row.target);
    if (json.contains("reference")) {
        row.reference = json.at("reference").get<double>();
    }
}

}  // namespace Orvel::Bench
