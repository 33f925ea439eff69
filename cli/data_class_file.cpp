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
#include "cli/json_places.h"
#include "cli/json_words.h"
#include "orvel/analytics/text.h"

namespace Orvel::Tool {

namespace {

using Json = nlohmann::json;

constexpr std::size_t kLargestFile = std::size_t{16} << 20;
constexpr int kDeepest = 8;

constexpr std::array<std::string_view, 4> kClassMembers{"name", "id", "version", "fields"};
constexpr std::array<std::string_view, 4> kFieldMembers{"id", "name", "nullable", "type"};

/// A file as it was read.
struct Source {
    std::string_view text;
    const std::string& path;
};

[[noreturn]] void fail(const std::string& place, const std::string& what) {
    throw Failure(ExitStatus::Usage, place + ": " + what);
}

std::string placeOf(const Source& source, std::size_t byte) {
    return source.path + ":" + lineAndColumn(source.text, byte);
}

/// The element of the list of fields that a path leads into, in words.
std::string fieldOf(const JsonPath& path) {
    return path.size() < 2 ? "" : fmt::format("{}[{}]: ", path[0], path[1]);
}

/// Fails at a value of the document.
[[noreturn]] void failAt(const Source& source, const JsonPath& path, const std::string& what) {
    const auto value = findInJson(source.text, path).value;
    fail(placeOf(source, value ? value->begin : 0), fieldOf(path) + what);
}

JsonPath member(JsonPath path, std::string_view name) {
    path.emplace_back(name);
    return path;
}

/// Watches the parser at work for what the finished document no longer shows.
class Watcher {
  public:
    Watcher(const Source& source, WatchedText& text) : source_(source), text_(text) {}

    void see(int depth, Json::parse_event_t event, const Json& value) {
        const std::size_t begin = text_.nextToken();
        if (depth > kDeepest) {
            fail(placeOf(source_, begin), "nested deeper than a data class can be");
        }
        if (event == Json::parse_event_t::object_start) {
            names_.emplace_back();
        } else if (event == Json::parse_event_t::object_end) {
            names_.pop_back();
        } else if (event == Json::parse_event_t::key &&
                   !names_.back().insert(value.get<std::string>()).second) {
            fail(placeOf(source_, begin),
                 fmt::format("member \"{}\" stands twice in one object", value.get<std::string>()));
        }
    }

  private:
    const Source& source_;
    WatchedText& text_;
    std::vector<std::set<std::string>> names_;
};

Json parseJson(const Source& source) {
    WatchedText text(source.text);
    Watcher watcher(source, text);
    const auto see = [&watcher](int depth, Json::parse_event_t event, const Json& value) {
        watcher.see(depth, event, value);
        return true;
    };
    try {
        Json document = Json::parse(text.begin(), text.end(), see);
        // The parser takes a null character for the end of the text.
        if (const std::size_t null = source.text.find('\0'); null != std::string_view::npos) {
            fail(placeOf(source, null), "not JSON: a null character");
        }
        return document;
    } catch (const Json::parse_error& error) {
        // The parser counts the byte it stumbled over from 1.
        const std::size_t byte = error.byte == 0 ? 0 : error.byte - 1;
        fail(placeOf(source, byte), "not JSON: " + reasonOf(error));
    } catch (const Json::exception& error) {
        fail(placeOf(source, text.reached()), "not JSON: " + reasonOf(error));
    }
}

template <std::size_t Count>
void requireObject(const Json& value, const std::array<std::string_view, Count>& members,
                   const Source& source, const JsonPath& path) {
    if (!value.is_object()) {
        failAt(source, path, fmt::format("must be an object, not {}", kindOf(value)));
    }
    for (const auto& item : value.items()) {
        if (std::find(members.begin(), members.end(), item.key()) == members.end()) {
            const auto name = findInJson(source.text, member(path, item.key())).name;
            fail(placeOf(source, name ? name->begin : 0),
                 fieldOf(path) + fmt::format("unknown member \"{}\"", item.key()));
        }
    }
    for (const std::string_view name : members) {
        if (!value.contains(name)) {
            failAt(source, path, fmt::format("member \"{}\" is missing", name));
        }
    }
}

WideString readText(const Json& object, const char* name, const Source& source,
                    const JsonPath& path) {
    const Json& value = object.at(name);
    if (!value.is_string()) {
        failAt(source, member(path, name),
               fmt::format("member \"{}\" must be a text in quotes, not {}", name, kindOf(value)));
    }
    return toWide(value.get_ref<const std::string&>());
}

Analytics::DataClass::DataClassFieldInfo readField(const Json& object, const Source& source,
                                                   const JsonPath& path) {
    requireObject(object, kFieldMembers, source, path);
    Analytics::DataClass::DataClassFieldInfo field;
    field.id = readText(object, "id", source, path);
    field.name = readText(object, "name", source, path);
    field.nullable = readText(object, "nullable", source, path);
    field.type = readText(object, "type", source, path);
    field.auxValue = 0;
    return field;
}

}  // namespace

FileDataClass parseDataClass(std::string_view text, const std::string& path) {
    const Source source{text, path};
    const Json document = parseJson(source);
    requireObject(document, kClassMembers, source, {});
    FileDataClass dataClass;
    dataClass.name = readText(document, "name", source, {});
    dataClass.id = readText(document, "id", source, {});
    dataClass.version = readText(document, "version", source, {});
    const Json& fields = document.at("fields");
    if (!fields.is_array()) {
        failAt(source, {"fields"},
               fmt::format("member \"fields\" must be an array, not {}", kindOf(fields)));
    }
    for (std::size_t index = 0; index < fields.size(); ++index) {
        dataClass.fields.push_back(
            readField(fields[index], source, {"fields", std::to_string(index)}));
    }
    return dataClass;
}

void failAtField(std::string_view text, const std::string& path, std::size_t index,
                 const std::string& what) {
    failAt({text, path}, {"fields", std::to_string(index)}, what);
}

FileDataClass readDataClassFile(const std::string& path) {
    return parseDataClass(readDataClassText(path), path);
}

std::string readDataClassText(const std::string& path) {
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
    return text;
}

}  // namespace Orvel::Tool
