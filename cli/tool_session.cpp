#include "cli/tool_session.h"

#include <fmt/format.h>

#include <stdexcept>

#include "cli/failure.h"

namespace Orvel::Tool {

namespace {

WideString wideArgument(const std::string& text, const char* option) {
    try {
        return toWide(text);
    } catch (const std::invalid_argument& error) {
        throw Failure(ExitStatus::Usage, fmt::format("{}: {}", option, error.what()));
    }
}

}  // namespace

AnalyticsSession makeSession(const SessionOptions& options) {
    try {
        return {wideArgument(options.application, "--app"),
                wideArgument(options.applicationVersion, "--app-version"),
                wideArgument(options.user, "--user"), ORVEL_TEXT("orvel-analytics")};
    } catch (const char* message) {
        throw Failure(ExitStatus::Usage, message);
    }
}

}  // namespace Orvel::Tool
