#include "cli/json_places.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>

#include "cli/json_words.h"

namespace Orvel::Tool {

namespace {

using Json = nlohmann::json;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

struct Found {
    JsonFinding finding;
    std::optional<JsonFault> fault;
};

/// Follows one path through a text.
class Finder final : public nlohmann::json_sax<Json> {
  public:
    Finder(WatchedText& text, JsonPath path, Found& found)
        : text_(text), path_(std::move(path)), found_(found) {}

    bool null() override { return scalar(0); }
    bool boolean(bool /*value*/) override { return scalar(0); }
    // The parser knows the end of a number by the character that follows.
    bool number_integer(number_integer_t /*value*/) override { return scalar(1); }
    bool number_unsigned(number_unsigned_t /*value*/) override { return scalar(1); }
    bool number_float(number_float_t /*value*/, const string_t& /*text*/) override {
        return scalar(1);
    }
    bool string(string_t& /*value*/) override { return scalar(0); }
    bool binary(binary_t& /*value*/) override { return false; }
    bool start_object(std::size_t /*size*/) override { return open(false); }
    bool start_array(std::size_t /*size*/) override { return open(true); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }

    bool key(string_t& name) override {
        const std::size_t begin = text_.nextToken();
        Level& level = levels_.back();
        level.next = level.onPath && isNextStep(name);
        if (level.next && path_.size() == levels_.size()) {
            found_.finding.name = JsonPlace{begin, text_.reached()};
        }
        return true;
    }

    bool parse_error(std::size_t position, const std::string& /*token*/,
                     const nlohmann::detail::exception& error) override {
        // The parser counts the byte that it stumbled over from 1.
        found_.fault = JsonFault{position == 0 ? 0 : position - 1, reasonOf(error)};
        return false;
    }

  private:
    /// An object or array that is open.
    struct Level {
        bool array = false;
        /// Whether the path leads to it or into it.
        bool onPath = false;
        /// Whether it leads into the member at hand.
        bool next = false;
        std::size_t elements = 0;
        std::size_t begin = 0;
    };

    /// To be called where a value begins: whether the path leads to it, or into it.
    bool enterValue() {
        if (levels_.empty()) {
            return true;
        }
        Level& level = levels_.back();
        if (!level.array) {
            return level.next;
        }
        return level.onPath && isNextStep(std::to_string(level.elements++));
    }

    /// Whether the path goes on with this name or number in the object or array at hand.
    bool isNextStep(std::string_view step) const {
        return path_.size() >= levels_.size() && path_[levels_.size() - 1] == step;
    }

    bool scalar(std::size_t tooFar) {
        const std::size_t begin = text_.nextToken();
        if (enterValue() && path_.size() == levels_.size()) {
            found_.finding.value = JsonPlace{begin, text_.reached() - tooFar};
        }
        return true;
    }

    bool open(bool array) {
        const std::size_t begin = text_.nextToken();
        const bool onPath = enterValue();
        levels_.push_back({array, onPath, false, 0, begin});
        return true;
    }

    bool close() {
        static_cast<void>(text_.nextToken());
        const Level level = levels_.back();
        levels_.pop_back();
        if (level.onPath && path_.size() == levels_.size()) {
            found_.finding.value = JsonPlace{level.begin, text_.reached()};
        }
        return true;
    }

    WatchedText& text_;
    JsonPath path_;
    Found& found_;
    std::vector<Level> levels_;
};

Found walk(std::string_view text, JsonPath path) {
    Found found;
    WatchedText watched(text);
    Finder finder(watched, std::move(path), found);
    Json::sax_parse(watched.begin(), watched.end(), &finder);
    return found;
}

}  // namespace

std::size_t WatchedText::nextToken() {
    // Between two tokens stands nothing but white space, commas and colons.
    const std::size_t begin = text_.find_first_not_of(" \t\r\n,:\xEF\xBB\xBF", lastEnd_);
    lastEnd_ = reached();
    return std::min(begin, lastEnd_);
}

std::size_t columnOf(std::string_view text, std::size_t byte) {
    std::string_view line = text.substr(0, std::min(byte, text.size()));
    if (line.starts_with(kByteOrderMark)) {
        line.remove_prefix(kByteOrderMark.size());
    }
    line.remove_prefix(line.rfind('\n') + 1);  // By nothing when there is no line end.
    const auto continues = [](char unit) { return (static_cast<unsigned char>(unit) >> 6) == 2; };
    return 1 + line.size() -
           static_cast<std::size_t>(std::count_if(line.begin(), line.end(), continues));
}

std::string lineAndColumn(std::string_view text, std::size_t byte) {
    const std::string_view before = text.substr(0, std::min(byte, text.size()));
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    return fmt::format("{}:{}", line, columnOf(text, byte));
}

JsonFinding findInJson(std::string_view text, JsonPath path) {
    return walk(text, std::move(path)).finding;
}

std::optional<JsonFault> faultOfJson(std::string_view text) {
    auto fault = walk(text, {}).fault;
    const std::size_t null = text.find('\0');
    if (!fault && null != std::string_view::npos) {
        // The parser takes it for the end of the text.
        fault = JsonFault{null, "a null character"};
    }
    return fault;
}

}  // namespace Orvel::Tool
