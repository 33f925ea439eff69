#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

#include "support/stand_in_runtime/json_text.h"
#include "support/stand_in_runtime/json_values.h"

namespace Orvel::StandIn {
namespace {

constexpr std::size_t kDeepest = 1024;

/// Nothing for text that is no UTF-16.
std::optional<std::string> narrowed(std::wstring_view text) {
    const int units = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, text.data(), units, nullptr,
                                         0, nullptr, nullptr);
    if (size == 0) {
        return std::nullopt;
    }
    std::string narrow(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, text.data(), units, narrow.data(), size,
                        nullptr, nullptr);
    return narrow;
}

/// @param text well-formed UTF-8.
std::wstring widened(std::string_view text) {
    const int size = static_cast<int>(text.size());
    const int units = MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(units), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), units);
    return wide;
}

/// Whether a number is written with a digit other than 0 before its exponent.
bool isWrittenAsZero(const std::string& number) {
    const auto end = std::find_if(number.begin(), number.end(),
                                  [](char unit) { return unit == 'e' || unit == 'E'; });
    return std::none_of(number.begin(), end, [](char unit) { return unit >= '1' && unit <= '9'; });
}

/// Makes values of what the engine reads.
class Builder {
  public:
    using Json = nlohmann::json;

    HRESULT status() const { return status_; }
    Reference<Node> takeValue() { return std::move(root_); }

    bool null() { return add(makeNull()); }
    bool boolean(bool value) { return add(makeBoolean(value)); }
    bool number_integer(Json::number_integer_t value) {
        return add(makeNumber(static_cast<double>(value)));
    }
    bool number_unsigned(Json::number_unsigned_t value) {
        return add(makeNumber(static_cast<double>(value)));
    }
    bool number_float(double value, const std::string& text) {
        if (value == 0 && !isWrittenAsZero(text)) {
            return refuse(kInvalidJsonNumber);
        }
        return add(makeNumber(value));
    }
    bool string(std::string& value) { return add(makeString(widened(value))); }
    bool binary(Json::binary_t& /*value*/) { return refuse(kInvalidJsonString); }
    bool start_object(std::size_t /*size*/) { return open({makeObject(), {}, {}}); }
    bool start_array(std::size_t /*size*/) { return open({{}, makeArray(), {}}); }
    bool key(std::string& name) {
        open_.back().name = widened(name);
        return true;
    }
    bool end_object() { return close(); }
    bool end_array() { return close(); }
    bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                     const Json::exception& error) {
        constexpr int kNumberOverflow = 406;
        return refuse(error.id == kNumberOverflow ? kInvalidJsonNumber : kInvalidJsonString);
    }

  private:
    /// An object or an array whose end has not been read; one of the two is set.
    struct Container {
        Reference<JsonObject> object;
        Reference<JsonArray> array;
        std::wstring name;  // Of the member that comes next.
    };

    bool refuse(HRESULT status) {
        status_ = status;
        return false;
    }

    bool add(Reference<Node> value) {
        if (open_.empty()) {
            root_ = std::move(value);
        } else if (open_.back().object.get() != nullptr) {
            open_.back().object->set(open_.back().name, std::move(value));
        } else {
            open_.back().array->add(std::move(value));
        }
        return true;
    }

    bool open(Container container) {
        if (open_.size() == kDeepest) {
            return refuse(kImplementationLimit);
        }
        open_.push_back(std::move(container));
        return true;
    }

    bool close() {
        Container closed = std::move(open_.back());
        open_.pop_back();
        return closed.object.get() != nullptr ? add(Reference<Node>::adopt(closed.object.release()))
                                              : add(Reference<Node>::adopt(closed.array.release()));
    }

    HRESULT status_ = S_OK;
    Reference<Node> root_;
    std::vector<Container> open_;
};

}  // namespace

HRESULT parse(std::wstring_view text, Reference<Node>& value) {
    constexpr wchar_t kByteOrderMark = 0xFEFF;
    // The engine takes a NUL for the end of the text and skips a byte order mark.
    if (text.find(L'\0') != std::wstring_view::npos || text.starts_with(kByteOrderMark)) {
        return kInvalidJsonString;
    }
    const auto narrow = narrowed(text);
    if (!narrow) {
        return kInvalidJsonString;
    }
    Builder builder;
    if (!Builder::Json::sax_parse(*narrow, &builder)) {
        return builder.status();
    }
    value = builder.takeValue();
    return S_OK;
}

}  // namespace Orvel::StandIn
