#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>
#include <unordered_map>
#include <vector>

#include "json/portable/document.h"
#include "json/raise.h"

/// The engine reads a text into values that cannot be changed. Copying them into values that can be
/// is one walk, which also checks what the engine does not: depth, number range and equal names.
namespace Orvel::Analytics::Json {
namespace {

std::string_view textOf(yyjson_mut_val* value) {
    return {yyjson_mut_get_str(value), yyjson_mut_get_len(value)};
}

bool isWithinDoubleRange(std::string_view number) {
    constexpr std::size_t kDigitsOfAnyExponentlessDouble = 300;
    const std::size_t exponent = number.find_first_of("eE");
    if (exponent == std::string_view::npos && number.size() <= kDigitsOfAnyExponentlessDouble) {
        return true;
    }
    double value = 0;
    const auto read = std::from_chars(number.data(), number.data() + number.size(), value);
    if (read.ec != std::errc{} || std::isinf(value)) {
        return false;
    }
    // A number that is too small to tell from zero is out of range, unless it is zero.
    return value != 0 ||
           number.substr(0, exponent).find_first_of("123456789") == std::string_view::npos;
}

/// Finds an earlier member of the same name: by a walk while there are few, by a map beyond that.
class Names {
  public:
    /// @return the key that had this name before, or null when `key` is the first.
    yyjson_mut_val* add(yyjson_mut_val* key) {
        if (few_.size() < kFew) {
            const auto same = std::find_if(few_.begin(), few_.end(), [&](yyjson_mut_val* earlier) {
                return textOf(earlier) == textOf(key);
            });
            if (same != few_.end()) {
                return *same;
            }
            few_.push_back(key);
            return nullptr;
        }
        if (many_.empty()) {
            for (yyjson_mut_val* earlier : few_) {
                many_.emplace(textOf(earlier), earlier);
            }
        }
        const auto [entry, isNew] = many_.emplace(textOf(key), key);
        return isNew ? nullptr : entry->second;
    }

    void clear() {
        few_.clear();
        // Replaced, because clearing a map takes as long as its largest content made it.
        if (!many_.empty()) {
            many_ = {};
        }
    }

  private:
    static constexpr std::size_t kFew = 32;

    std::vector<yyjson_mut_val*> few_;
    std::unordered_map<std::string_view, yyjson_mut_val*> many_;
};

/// Of members with equal names, the first keeps its place and takes the value of the last.
void mergeEqualNames(yyjson_mut_val* object, Names& names) {
    names.clear();
    yyjson_mut_obj_iter members = yyjson_mut_obj_iter_with(object);
    while (yyjson_mut_val* const key = yyjson_mut_obj_iter_next(&members)) {
        if (yyjson_mut_val* const first = names.add(key)) {
            yyjson_mut_val* const value = yyjson_mut_obj_iter_get_val(key);
            first->next->tag = value->tag;
            first->next->uni = value->uni;
            yyjson_mut_obj_iter_remove(&members);
        }
    }
}

/// Copies a read value and all that it holds.
class Copier {
  public:
    explicit Copier(yyjson_mut_doc* target) : target_(target) {}

    yyjson_mut_val* copy(yyjson_val* root) {
        yyjson_mut_val* const copied = open(root);
        while (!open_.empty()) {
            step();
        }
        return copied;
    }

  private:
    /// A container whose members are being copied.
    struct Open {
        yyjson_mut_val* copied;
        yyjson_obj_iter members;
        yyjson_arr_iter elements;
    };

    void step() {
        Open& container = open_.back();
        yyjson_mut_val* const copied = container.copied;
        if (yyjson_mut_is_obj(copied)) {
            yyjson_val* const name = yyjson_obj_iter_next(&container.members);
            if (name == nullptr) {
                return close();
            }
            yyjson_mut_val* const key = copyText(name);
            orBadAlloc(yyjson_mut_obj_add(copied, key, open(yyjson_obj_iter_get_val(name))));
        } else {
            yyjson_val* const element = yyjson_arr_iter_next(&container.elements);
            if (element == nullptr) {
                return close();
            }
            orBadAlloc(yyjson_mut_arr_append(copied, open(element)));
        }
    }

    /// Copies a value; of a container, the members follow in later steps.
    yyjson_mut_val* open(yyjson_val* value) {
        switch (yyjson_get_type(value)) {
            case YYJSON_TYPE_OBJ:
                return openContainer(
                    {orBadAlloc(yyjson_mut_obj(target_)), yyjson_obj_iter_with(value), {}});
            case YYJSON_TYPE_ARR:
                return openContainer(
                    {orBadAlloc(yyjson_mut_arr(target_)), {}, yyjson_arr_iter_with(value)});
            case YYJSON_TYPE_STR:
                return copyText(value);
            case YYJSON_TYPE_RAW:
                return copyNumber(value);
            case YYJSON_TYPE_BOOL:
                return orBadAlloc(yyjson_mut_bool(target_, yyjson_get_bool(value)));
            default:
                return orBadAlloc(yyjson_mut_null(target_));
        }
    }

    yyjson_mut_val* openContainer(Open container) {
        if (open_.size() == kGreatestDepth) {
            raise(Status::kImplementationLimit, "The JSON text nests too deep");
        }
        open_.push_back(container);
        return container.copied;
    }

    void close() {
        if (yyjson_mut_is_obj(open_.back().copied)) {
            mergeEqualNames(open_.back().copied, names_);
        }
        open_.pop_back();
    }

    yyjson_mut_val* copyText(yyjson_val* text) {
        return orBadAlloc(yyjson_mut_strn(target_, yyjson_get_str(text), yyjson_get_len(text)));
    }

    yyjson_mut_val* copyNumber(yyjson_val* number) {
        const std::string_view text{yyjson_get_raw(number), yyjson_get_len(number)};
        if (!isWithinDoubleRange(text)) {
            raise(Status::kInvalidJsonNumber, "A number of the JSON text is out of range");
        }
        return orBadAlloc(yyjson_mut_rawn(target_, text.data(), text.size()));
    }

    yyjson_mut_doc* target_;
    std::vector<Open> open_;
    Names names_;
};

}  // namespace

yyjson_mut_val* Document::Impl::parse(char* text, std::size_t size) {
    yyjson_read_err error{};
    yyjson_doc* const read = yyjson_read_opts(
        text, size, YYJSON_READ_INSITU | YYJSON_READ_NUMBER_AS_RAW, &allocator, &error);
    if (read == nullptr) {
        raise(error.code == YYJSON_READ_ERROR_MEMORY_ALLOCATION ? Status::kOutOfMemory
                                                                : Status::kInvalidJsonString,
              "The text is not JSON: " + std::string(error.msg));
    }
    if (!yyjson_is_obj(yyjson_doc_get_root(read))) {
        raise(Status::kInvalidJsonString, "The JSON text is not an object");
    }
    return Copier(values).copy(yyjson_doc_get_root(read));
}

}  // namespace Orvel::Analytics::Json
