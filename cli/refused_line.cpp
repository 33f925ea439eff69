#include "cli/refused_line.h"

#include <fmt/format.h>

#include "cli/result_names.h"

namespace Orvel::Tool {

Verdict Verdict::of(Analytics::Emitters::AnalyticsResult result) {
    return {result, std::string(resultWords(result))};
}

std::string Verdict::text() const {
    return result ? fmt::format("{} ({}): {}", resultName(*result),
                                static_cast<std::int32_t>(*result), reason)
                  : reason;
}

std::string RefusedLine::text() const {
    std::string text = verdict.text();
    if (field) {
        text +=
            fmt::format("; field \"{}\" of type {} has {}", field->id, field->type, field->value);
    }
    if (column) {
        text += fmt::format(", at {}:{}", line, *column);
    }
    return text;
}

}  // namespace Orvel::Tool
