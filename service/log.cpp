#include "service/log.h"

#include <string>

#include "service/json_text.h"

namespace Orvel::Service {

void Log::write(std::string_view event, std::initializer_list<Detail> details) {
    const std::scoped_lock lock(mutex_);
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
    sink_(line);
}

}  // namespace Orvel::Service
