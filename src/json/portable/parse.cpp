#include <yyjson.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <string>
#include <unordered_map>
#include <vector>

#include "json/portable/document.h"
#include "json/raise.h"

/// The engine reads a text into values of its own. Making nodes of them is one walk, which also
/// checks what the engine does not: depth, number range and equal names.
namespace Orvel::Analytics::Json {
namespace {

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

/// Of members with equal names, the first keeps its place and takes the value of the last.
/// @param findEarlier gives the member before a given one that has the same name, or null.
template <typename FindEarlier>
void mergeEqualNames(Node& object, FindEarlier findEarlier) {
    // The first member has none before it to merge with.
    Node* before = object.content.children.first;
    for (Node* member = object.content.children.first; member != nullptr; member = member->next) {
        if (Node* const first = findEarlier(member)) {
            first->become(*member);
            before->next = member->next;
            --object.count;
        } else {
            before = member;
        }
    }
    object.content.children.last = before;
}

void mergeEqualNames(Node& object) {
    constexpr std::uint32_t kFew = 32;
    if (object.count <= kFew) {
        mergeEqualNames(object, [&object](const Node* member) -> Node* {
            for (Node* earlier = object.content.children.first; earlier != member;
                 earlier = earlier->next) {
                if (earlier->name == member->name) {
                    return earlier;
                }
            }
            return nullptr;
        });
        return;
    }
    std::unordered_map<std::string_view, Node*> names;
    mergeEqualNames(object, [&names](Node* member) {
        const auto [entry, isNew] = names.emplace(member->name, member);
        return isNew ? nullptr : entry->second;
    });
}

/// Makes nodes of a read value and all that it holds.
class Copier {
    /// A container whose children are being copied.
    struct Open {
        Node* copied;
        yyjson_obj_iter members;
        yyjson_arr_iter elements;
    };

  public:
    explicit Copier(Arena& arena) : arena_(arena) { open_.reserve(kUsualDepth); }

    Node* copy(yyjson_val* root) {
        Node* const copied = open(root);
        while (!open_.empty()) {
            step();
        }
        return copied;
    }

  private:
    static constexpr std::size_t kUsualDepth = 8;

    void step() {
        Open& container = open_.back();
        Node* const copied = container.copied;
        std::string_view name;
        yyjson_val* value = nullptr;
        if (copied->kind == Node::Kind::kObject) {
            if (yyjson_val* const key = yyjson_obj_iter_next(&container.members)) {
                name = {yyjson_get_str(key), yyjson_get_len(key)};
                value = yyjson_obj_iter_get_val(key);
            }
        } else {
            value = yyjson_arr_iter_next(&container.elements);
        }
        if (value == nullptr) {
            return close();
        }
        Node* const child = open(value);
        child->name = name;
        copied->append(child);
    }

    /// Copies a value; of a container, the children follow in later steps.
    Node* open(yyjson_val* value) {
        switch (yyjson_get_type(value)) {
            case YYJSON_TYPE_OBJ:
                return openContainer(
                    {newNode(arena_, Node::Kind::kObject), yyjson_obj_iter_with(value), {}});
            case YYJSON_TYPE_ARR:
                return openContainer(
                    {newNode(arena_, Node::Kind::kArray), {}, yyjson_arr_iter_with(value)});
            case YYJSON_TYPE_STR:
                return newNode(arena_, Node::Kind::kString,
                               {yyjson_get_str(value), yyjson_get_len(value)});
            case YYJSON_TYPE_RAW:
                return newNode(arena_, Node::Kind::kNumber, checkedNumber(value));
            case YYJSON_TYPE_BOOL:
                return newNode(arena_, Node::Kind::kBoolean,
                               yyjson_get_bool(value) ? kTrue : kFalse);
            default:
                return newNode(arena_, Node::Kind::kNull, kNull);
        }
    }

    Node* openContainer(Open container) {
        if (open_.size() == kGreatestDepth) {
            raise(Status::kImplementationLimit, "The JSON text nests too deep");
        }
        open_.push_back(container);
        return container.copied;
    }

    void close() {
        if (open_.back().copied->kind == Node::Kind::kObject) {
            mergeEqualNames(*open_.back().copied);
        }
        open_.pop_back();
    }

    static std::string_view checkedNumber(yyjson_val* number) {
        const std::string_view text{yyjson_get_raw(number), yyjson_get_len(number)};
        if (!isWithinDoubleRange(text)) {
            raise(Status::kInvalidJsonNumber, "A number of the JSON text is out of range");
        }
        return text;
    }

    Arena& arena_;
    alignas(Open) std::array<std::byte, 2 * kUsualDepth * sizeof(Open)> memory_;
    std::pmr::monotonic_buffer_resource resource_{memory_.data(), memory_.size()};
    std::pmr::vector<Open> open_{&resource_};
};

}  // namespace

Node* Document::Impl::parse(char* text, std::size_t size) {
    const yyjson_alc allocator = arena.allocator();
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
    return Copier(arena).copy(yyjson_doc_get_root(read));
}

}  // namespace Orvel::Analytics::Json
