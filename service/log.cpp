#include "service/log.h"

#include <new>
#include <string>

#include "service/json_text.h"

namespace Orvel::Service {

void Log::write(std::string_view event, std::initializer_list<Detail> details) {
    const std::scoped_lock lock(mutex_);
    try {
        sink_(lineOf(event, details));
    } catch (const std::bad_alloc&) {
        // Whoever says what went wrong has mostly caught it, and has nowhere to go with this.
    }
}

std::string Log::lineOf(std::string_view event, std::initializer_list<Detail> details) const {
    std::string line = R"({"time":)";
    appendJsonString(line, utcText(clock_()));
    line += R"(,"event":)";
    appendJsonString(line, event);
    for (const auto& [name, value] : details) {
        line += ',';
        appendJsonString(line, name);
        line += ':';
        appendJsonString(line, value);
    }
    line += "}\n";
    return line;
}

}  // namespace Orvel::Service
