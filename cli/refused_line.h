#ifndef ORVEL_CLI_REFUSED_LINE_H
#define ORVEL_CLI_REFUSED_LINE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "orvel/analytics/result.h"

/// @file
/// A line that was refused, and why.

namespace Orvel::Tool {

/// Why something was refused.
struct Verdict {
    /// The result code, when there is one.
    std::optional<Analytics::Emitters::AnalyticsResult> result;
    /// The reason in words.
    std::string reason;

    /// The verdict that a result code says.
    [[nodiscard]] static Verdict of(Analytics::Emitters::AnalyticsResult result);
    /// "NAME (NUMBER): words", or the words alone.
    [[nodiscard]] std::string text() const;
};

/// The field whose rule an event breaks first.
struct FieldAtFault {
    /// The field's identifier and type.
    std::string id;
    std::string type;
    /// Its value as the line has it, shortened when it is long.
    std::string value;
};

/// A line that was refused before it was sent.
struct RefusedLine {
    std::uint64_t line = 0;
    Verdict verdict;
    std::optional<FieldAtFault> field;
    /// Where on the line the fault is, in characters from 1, when that is known.
    std::optional<std::size_t> column;

    /// The verdict with the field and the place, where they are known.
    [[nodiscard]] std::string text() const;
};

}  // namespace Orvel::Tool

#endif
