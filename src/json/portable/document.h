#ifndef ORVEL_JSON_PORTABLE_DOCUMENT_H
#define ORVEL_JSON_PORTABLE_DOCUMENT_H

#include <yyjson.h>

#include <cstddef>
#include <new>
#include <string_view>

#include "json/json.h"
#include "json/portable/arena.h"
#include "json/portable/node.h"

/// The portable backend: the JSON engine reads texts, values are nodes of our own.
namespace Orvel::Analytics::Json {

static_assert(YYJSON_VERSION_HEX >= 0x000A00, "yyjson 0.10 or later is needed");

/// How deep a text that is handed in may nest.
inline constexpr std::size_t kGreatestDepth = 1024;

inline constexpr std::string_view kNull = "null";
inline constexpr std::string_view kTrue = "true";
inline constexpr std::string_view kFalse = "false";

/// A new node in the memory of a document.
inline Node* newNode(Arena& arena, Node::Kind kind, std::string_view text = {}) {
    return new (arena.allocate(sizeof(Node))) Node(kind, text);
}

struct Document::Impl {
    Arena arena;

    /// A new node; an object or an array is empty.
    /// @param text what it is otherwise, in the document's memory.
    Node* node(Node::Kind kind, std::string_view text = {}) { return newNode(arena, kind, text); }

    /// `text` as generalised UTF-8 in the document's memory.
    std::string_view keep(WideStringView text);

    /// Parses well-formed UTF-8 that lies in the document's memory, with room behind it for the
    /// engine's padding.
    Node* parse(char* text, std::size_t size);
};

}  // namespace Orvel::Analytics::Json

#endif
