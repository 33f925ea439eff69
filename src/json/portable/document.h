#ifndef ORVEL_JSON_PORTABLE_DOCUMENT_H
#define ORVEL_JSON_PORTABLE_DOCUMENT_H

#include <yyjson.h>

#include <cstddef>
#include <string_view>

#include "json/json.h"
#include "json/portable/arena.h"

/// The portable backend: values are the JSON engine's, and texts are generalised UTF-8 inside.
namespace Orvel::Analytics::Json {

static_assert(YYJSON_VERSION_HEX >= 0x000A00, "yyjson 0.10 or later is needed");

/// How deep a text that is handed in may nest.
inline constexpr std::size_t kGreatestDepth = 1024;

struct Document::Impl {
    Impl();

    Arena arena;
    yyjson_alc allocator = arena.allocator();
    yyjson_mut_doc* values;
    /// The code units of all objects that came as texts, each of which is written at most once.
    std::size_t splicedUnits = 0;

    /// `text` as generalised UTF-8 in the document's memory.
    std::string_view keep(WideStringView text);

    /// Parses well-formed UTF-8 that lies in the document's memory, with room behind it for the
    /// engine's padding.
    yyjson_mut_val* parse(char* text, std::size_t size);
};

/// A value of the engine, or `std::bad_alloc`: a null is all it says when memory is exhausted.
yyjson_mut_val* orBadAlloc(yyjson_mut_val* value);
void orBadAlloc(bool done);

}  // namespace Orvel::Analytics::Json

#endif
