#include "bench/report/table.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace Orvel::Bench {
namespace {

using Cells = std::vector<std::string>;

std::string figureText(double figure, const std::string& unit) {
    const int digits = figure == std::floor(figure) || figure >= 1000 ? 0 : figure >= 10 ? 1 : 2;
    return fmt::format("{:.{}f}{}{}", figure, digits, unit.empty() ? "" : " ", unit);
}

bool isCompared(const Row& row) { return row.reference.has_value(); }

std::string valueText(const Row& row) {
    return isCompared(row) ? fmt::format("{:.2f}", row.value) : figureText(row.value, row.unit);
}

std::string targetText(const Row& row) {
    if (row.judging == Judging::kShown) {
        return "";
    }
    return fmt::format(
        "{} {}", row.judging == Judging::kSpeed ? "at least" : "at most",
        isCompared(row) ? fmt::format("{:g}", row.target) : figureText(row.target, row.unit));
}

Cells cellsOf(const Row& row) {
    return {row.what,
            figureText(row.figure, row.unit),
            fmt::format("{:.0f}%", row.spread * 100),
            isCompared(row) ? figureText(*row.reference, row.unit) : "",
            isCompared(row) ? valueText(row) : "",
            targetText(row),
            row.judging == Judging::kShown ? ""
            : reachesTarget(row)           ? "reached"
                                           : "MISSED"};
}

/// The number of characters that a terminal shows, which is less than the bytes of UTF-8.
std::size_t widthOf(const std::string& text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
}

std::string lineOf(const Cells& cells, const std::vector<std::size_t>& widths, char filling) {
    std::string line = "|";
    for (std::size_t column = 0; column < cells.size(); ++column) {
        const std::string padding(widths[column] - widthOf(cells[column]), filling);
        // The first column is words, the others are numbers.
        line +=
            fmt::format(" {} |", column == 0 ? cells[column] + padding : padding + cells[column]);
    }
    return line + "\n";
}

std::string markdown(const Cells& head, const std::vector<Cells>& body) {
    std::vector<std::size_t> widths(head.size(), 3);
    for (std::size_t column = 0; column < head.size(); ++column) {
        widths[column] = std::max(widths[column], widthOf(head[column]));
        for (const Cells& cells : body) {
            widths[column] = std::max(widths[column], widthOf(cells[column]));
        }
    }
    std::string table = lineOf(head, widths, ' ') + lineOf(Cells(head.size()), widths, '-');
    for (const Cells& cells : body) {
        table += lineOf(cells, widths, ' ');
    }
    return table;
}

}  // namespace

std::string tableOf(const std::vector<Row>& rows) {
    std::vector<Cells> body;
    std::transform(rows.begin(), rows.end(), std::back_inserter(body), cellsOf);
    return markdown({"", "median", "spread", "floor", "ratio", "target", ""}, body);
}

std::string comparisonOf(const std::vector<Row>& before, const std::vector<Row>& after) {
    std::vector<Cells> body;
    for (const Row& now : after) {
        const auto then = std::find_if(before.begin(), before.end(),
                                       [&](const Row& row) { return row.name == now.name; });
        if (then != before.end()) {
            const std::string change =
                then->value == 0 ? ""
                                 : fmt::format("{:+.1f}%", (now.value / then->value - 1) * 100);
            body.push_back({now.what, figureText(then->figure, then->unit),
                            figureText(now.figure, now.unit), valueText(*then), valueText(now),
                            change});
        }
    }
    return markdown({"", "median before", "after", "ratio before", "after", "change"}, body);
}

}  // namespace Orvel::Bench
