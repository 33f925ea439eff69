#include "cli/data_class_file.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <set>
#include <system_error>
#include <vector>

#include "cli/failure.h"
#include "cli/input_file.h"
#include "cli/json_words.h"
#include "orvel/analytics/text.h"

namespace Orvel::Tool {

namespace {

using Json = nlohmann::json;

constexpr std::size_t kLargestFile = std::size_t{16} << 20;
constexpr int kDeepest = 8;

constexpr std::array<std::string_view, 4> kClassMembers{"name", "id", "version", "fields"};
constexpr std::array<std::string_view, 4> kFieldMembers{"id", "name", "nullable", "type"};

[[noreturn]] void fail(const std::string& place, const std::string& what) {
    throw Failure(ExitStatus::Usage, place + ": " + what);
}

std::string positionOf(std::string_view text, std::size_t byte) {
    const std::string_view before = text.substr(0, std::min(byte, text.size()));
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    const std::size_t lineStart = before.rfind('\n') + 1;  // 0 when there is no line end before
    return fmt::format("{}:{}", line, before.size() - lineStart + 1);
}

/// Watches the parser at work for what the finished document no longer shows.
class Watcher {
  public:
    explicit Watcher(std::string path) : path_(std::move(path)) {}

    bool operator()(int depth, Json::parse_event_t event, const Json& value) {
        if (depth > kDeepest) {
            fail(path_, "nested deeper than a data class can be");
        }
        if (event == Json::parse_event_t::object_start) {
            names_.emplace_back();
        } else if (event == Json::parse_event_t::object_end) {
            names_.pop_back();
        } else if (event == Json::parse_event_t::key &&
                   !names_.back().insert(value.get<std::string>()).second) {
            fail(path_,
                 fmt::format("member \"{}\" stands twice in one object", value.get<std::string>()));
        }
        return true;
    }

  private:
    std::string path_;
    std::vector<std::set<std::string>> names_;
};

Json parseJson(std::string_view text, const std::string& path) {
    try {
        Json document = Json::parse(text, Watcher(path));
        // The parser takes a null character for the end of the text.
        if (const std::size_t null = text.find('\0'); null != text.npos) {
            fail(path + ":" + positionOf(text, null), "not JSON: a null character");
        }
        return document;
    } catch (const Json::parse_error& error) {
        // The parser counts the byte it stumbled over from 1.
        const std::size_t byte = error.byte == 0 ? 0 : error.byte - 1;
        fail(path + ":" + positionOf(text, byte), "not JSON: " + reasonOf(error));
    } catch (const Json::exception& error) {
        fail(path, "not JSON: " + reasonOf(error));
    }
}

template <std::size_t Count>
void requireObject(const Json& value, const std::array<std::string_view, Count>& members,
                   const std::string& place) {
    if (!value.is_object()) {
        fail(place, fmt::format("must be an object, not {}", kindOf(value)));
    }
    for (const auto& item : value.items()) {
        if (std::find(members.begin(), members.end(), item.key()) == members.end()) {
            fail(place, fmt::format("unknown member \"{}\"", item.key()));
        }
    }
    for (const std::string_view member : members) {
        if (!value.contains(member)) {
            fail(place, fmt::format("member \"{}\" is missing", member));
        }
    }
}

WideString readText(const Json& object, const char* member, const std::string& place) {
    const Json& value = object.at(member);
    if (!value.is_string()) {
        fail(place,
             fmt::format("member \"{}\" must be a text in quotes, not {}", member, kindOf(value)));
    }
    return toWide(value.get_ref<const std::string&>());
}

Analytics::DataClass::DataClassFieldInfo readField(const Json& object, const std::string& place) {
    requireObject(object, kFieldMembers, place);
    Analytics::DataClass::DataClassFieldInfo field;
    field.id = readText(object, "id", place);
    field.name = readText(object, "name", place);
    field.nullable = readText(object, "nullable", place);
    field.type = readText(object, "type", place);
    field.auxValue = 0;
    return field;
}

}  // namespace

FileDataClass parseDataClass(std::string_view text, const std::string& path) {
    const Json document = parseJson(text, path);
    requireObject(document, kClassMembers, path);
    FileDataClass dataClass;
    dataClass.name = readText(document, "name", path);
    dataClass.id = readText(document, "id", path);
    dataClass.version = readText(document, "version", path);
    const Json& fields = document.at("fields");
    if (!fields.is_array()) {
        fail(path, fmt::format("member \"fields\" must be an array, not {}", kindOf(fields)));
    }
    for (std::size_t index = 0; index < fields.size(); ++index) {
        dataClass.fields.push_back(
            readField(fields[index], fmt::format("{}: fields[{}]", path, index)));
    }
    return dataClass;
}

FileDataClass readDataClassFile(const std::string& path) {
    InputFile file(path);
    std::string text(kLargestFile + 1, '\0');
    try {
        const auto size = file.sgetn(text.data(), static_cast<std::streamsize>(text.size()));
        text.resize(static_cast<std::size_t>(size));
    } catch (const std::system_error& failure) {
        fail(path, "cannot be read: " + failure.code().message());
    }
    if (text.size() > kLargestFile) {
        fail(path, "larger than 16 MiB, which no data class is");
    }
    return parseDataClass(text, path);
}

}  // namespace Orvel::Tool
