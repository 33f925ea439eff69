#include "service/json.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <map>
#include <new>
#include <stdexcept>
#include <string>

#include "service/error_name.h"

namespace Orvel::Service {

namespace {

/// How many UTF-16 code units a byte of a string stands for when it is written compactly: a
/// character of more bytes counts with its first one.
constexpr std::array<std::uint8_t, 256> kUnits = [] {
    std::array<std::uint8_t, 256> units{};
    for (std::size_t byte = 0; byte < units.size(); ++byte) {
        const bool follows = byte >= 0x80 && byte < 0xC0;
        units[byte] = byte < 0x20 ? 6 : follows ? 0 : byte < 0xF0 ? 1 : 2;
    }
    for (const char escaped : {'"', '\\', '\b', '\f', '\n', '\r', '\t'}) {
        units[static_cast<unsigned char>(escaped)] = 2;
    }
    return units;
}();

constexpr std::size_t kBlock = 16;

/// Whether each of the block's characters is one code unit. Compilers make a few wide instructions
/// of it.
bool isPlainBlock(const char* characters) {
    std::array<std::uint8_t, kBlock> block;
    std::memcpy(block.data(), characters, sizeof block);
    std::uint8_t found = 0;
    for (const std::uint8_t byte : block) {
        found = static_cast<std::uint8_t>(
            found | ((byte < 0x20) | (byte >= 0x80) | (byte == '"') | (byte == '\\')));
    }
    return found == 0;
}

std::size_t escapedLength(std::string_view characters) {
    std::size_t units = 0;
    while (characters.size() >= kBlock && isPlainBlock(characters.data())) {
        units += kBlock;
        characters.remove_prefix(kBlock);
    }
    for (const char character : characters) {
        units += kUnits[static_cast<unsigned char>(character)];
    }
    return units;
}

}  // namespace

JsonValue::Member JsonValue::member(std::string_view name) const {
    Member found;
    std::size_t index = 0;
    forEachMember([&](std::string_view candidate, JsonValue value) {
        if (candidate == name) {
            found = {value, index};
        }
        ++index;
    });
    return found;
}

std::optional<std::string_view> JsonValue::lastName() const {
    std::optional<std::string_view> last;
    forEachMember([&last](std::string_view name, JsonValue) { last = name; });
    return last;
}

std::size_t JsonValue::compactLength() const {
    if (const auto characters = string()) {
        return escapedLength(*characters) + 2;
    }
    if (const auto digits = number()) {
        return digits->size();
    }
    if (isArray()) {
        std::size_t units = size() < 2 ? 2 : size() + 1;
        forEachElement([&units](JsonValue element) { units += element.compactLength(); });
        return units;
    }
    if (isObject()) {
        std::map<std::string_view, JsonValue> last;
        forEachMember([&last](std::string_view name, JsonValue value) { last[name] = value; });
        std::size_t units = last.size() < 2 ? 2 : last.size() + 1;
        for (const auto& [name, value] : last) {
            units += escapedLength(name) + 3 + value.compactLength();
        }
        return units;
    }
    return yyjson_is_false(value_) ? 5 : 4;
}

bool JsonValue::nestsDeeper(std::size_t levels) const {
    if (!isObject() && !isArray()) {
        return false;
    }
    if (levels == 0) {
        return true;
    }
    // All that it holds stands behind it, and nests no deeper than there are values.
    if (static_cast<std::size_t>(unsafe_yyjson_get_next(value_) - value_) <= levels) {
        return false;
    }
    bool deeper = false;
    const auto look = [&deeper, levels](JsonValue value) {
        deeper = deeper || value.nestsDeeper(levels - 1);
    };
    forEachElement(look);
    forEachMember([&look](std::string_view, JsonValue value) { look(value); });
    return deeper;
}

JsonDocument::JsonDocument(std::string_view text)
    : text_(std::make_unique_for_overwrite<char[]>(text.size() + YYJSON_PADDING_SIZE)) {
    std::fill_n(std::copy(text.begin(), text.end(), text_.get()), YYJSON_PADDING_SIZE, '\0');
    yyjson_read_err error{};
    document_.reset(yyjson_read_opts(
        text_.get(), text.size(), YYJSON_READ_INSITU | YYJSON_READ_NUMBER_AS_RAW, nullptr, &error));
    if (!document_ && error.code == YYJSON_READ_ERROR_MEMORY_ALLOCATION) {
        throw std::bad_alloc();
    }
}

JsonDocument JsonDocument::parseObject(std::string_view text) {
    // The engine reads any depth without recursion; what walks the values does not.
    JsonDocument document(text);
    if (!document.root().isObject() || document.root().nestsDeeper(kDeepestJson)) {
        throw Refusal(ErrorNames::kMalformedJson);
    }
    return document;
}

JsonDocument JsonDocument::parseOwn(std::string_view text) {
    JsonDocument document(text);
    if (!document.root()) {
        throw std::runtime_error("a stored JSON text cannot be read");
    }
    return document;
}

}  // namespace Orvel::Service
