#ifndef ORVEL_BENCH_REPORT_TABLE_H
#define ORVEL_BENCH_REPORT_TABLE_H

#include <string>
#include <vector>

#include "bench/report/rows.h"

namespace Orvel::Bench {

/// The rows as a Markdown table: figures, their spread, what each is measured against and how it
/// compares with its target.
[[nodiscard]] std::string tableOf(const std::vector<Row>& rows);

/// How the rows of two runs compare, as a Markdown table: what is judged in each, and the change.
/// Rows that only one of them has are left out.
[[nodiscard]] std::string comparisonOf(const std::vector<Row>& before,
                                       const std::vector<Row>& after);

}  // namespace Orvel::Bench

#endif
