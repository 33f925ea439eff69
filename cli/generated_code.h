#ifndef ORVEL_CLI_GENERATED_CODE_H
#define ORVEL_CLI_GENERATED_CODE_H

#include <string>

#include "cli/typed_class.h"

/// @file
/// The text of generated classes.

namespace Orvel::Tool {

/// Where generated classes stand.
struct CodePlace {
    /// The name of the data class's file, for people; in UTF-8.
    std::string schemaFile;
    /// The name of the header, as the source includes it.
    std::string header;
    /// The namespace; empty for none.
    std::string nameSpace;
};

/// The header: what an application needs to know. In ASCII, whatever the data class holds.
[[nodiscard]] std::string generatedHeader(const TypedClass& typed, const CodePlace& place);

/// The source that belongs to it. In ASCII but for the header's name, and without names of its own
/// outside its classes, so that several can be compiled as one.
[[nodiscard]] std::string generatedSource(const TypedClass& typed, const CodePlace& place);

}  // namespace Orvel::Tool

#endif
