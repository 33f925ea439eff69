#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "orvel/analytics/testing/value.h"

namespace Orvel::Analytics::Testing {

/// Makes a value of what the JSON library reads.
class ValueBuilder final : public nlohmann::json_sax<nlohmann::json> {
  public:
    Value take() { return std::move(root_); }

    bool null() override { return add({}); }
    bool boolean(bool value) override { return add(value); }
    bool number_integer(std::int64_t value) override {
        // Without a sign, zero is an unsigned number.
        return value == 0 ? addNumber("-0") : add(value);
    }
    bool number_unsigned(std::uint64_t value) override { return add(value); }
    bool number_float(double, const std::string& written) override {
        std::string number = written;
        // The JSON library writes the locale's own point into it.
        const std::size_t point = number.find_first_not_of("+-0123456789eE");
        if (point != std::string::npos) {
            number[point] = '.';
        }
        return addNumber(std::move(number));
    }
    bool string(std::string& value) override { return add(std::move(value)); }
    bool key(std::string& name) override {
        open_.back().name = std::move(name);
        return true;
    }
    bool start_object(std::size_t) override { return open(Value::Kind::Object); }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(Value::Kind::Array); }
    bool end_array() override { return close(); }
    bool binary(nlohmann::json::binary_t&) override { return false; }
    bool parse_error(std::size_t, const std::string&,
                     const nlohmann::json::exception& error) override {
        throw std::invalid_argument(error.what());
    }

  private:
    struct Open {
        Value value;
        // Of the member whose value comes next.
        std::string name;
    };

    bool open(Value::Kind kind) {
        open_.push_back({Value(kind, {}), {}});
        return true;
    }

    bool close() {
        Value value = std::move(open_.back().value);
        open_.pop_back();
        return add(std::move(value));
    }

    bool addNumber(std::string written) {
        return add(Value(Value::Kind::Number, std::move(written)));
    }

    bool add(Value value) {
        if (open_.empty()) {
            root_ = std::move(value);
            return true;
        }
        auto& [container, name] = open_.back();
        if (container.kind_ == Value::Kind::Object) {
            const auto known = std::find(container.names_.begin(), container.names_.end(), name);
            if (known != container.names_.end()) {
                const auto index = static_cast<std::size_t>(known - container.names_.begin());
                container.elements_[index] = std::move(value);
                return true;
            }
            container.names_.push_back(std::move(name));
        }
        container.elements_.push_back(std::move(value));
        return true;
    }

    Value root_;
    std::vector<Open> open_;
};

Value Value::parse(std::string_view json) {
    // The JSON library skips a byte order mark, and takes a null character for the text's end.
    if (json.starts_with("\xEF\xBB\xBF") || json.find('\0') != std::string_view::npos) {
        throw std::invalid_argument("a byte order mark or a null character is no JSON");
    }
    ValueBuilder builder;
    nlohmann::json::sax_parse(json, &builder);
    return builder.take();
}

}  // namespace Orvel::Analytics::Testing
