#ifndef ORVEL_CLI_TYPED_CLASS_H
#define ORVEL_CLI_TYPED_CLASS_H

#include <string>
#include <vector>

#include "cli/data_class_file.h"

/// @file
/// What the generated classes of a data class are made of.

namespace Orvel::Tool {

/// A field with a setter.
struct TypedField {
    /// The field's place in the data class, from 0.
    std::size_t index = 0;
    /// The name of its value in C++, which is no keyword.
    std::string member;
    std::string setter;
    /// The type of its value, a class of `Orvel::Analytics::TypedEvents`.
    std::string type;
    /// Whether every event must have a value for it.
    bool required = false;
};

/// The classes of a data class.
struct TypedClass {
    FileDataClass dataClass;
    /// The names of the data class's class, and of the class of its events.
    std::string dataClassName;
    std::string eventName;
    /// Without the fields that the library itself gives their values.
    std::vector<TypedField> fields;

    [[nodiscard]] bool hasRequiredFields() const;
};

/// Gives the classes and members of a data class their names and types.
/// @param text the data class's file.
/// @param path its name, for messages.
/// @throws Failure with `ExitStatus::Usage`, naming file, line and column, when it is no data
/// class,
///     when two fields have one identifier, or when the length of a varchar is not within 32 bits.
[[nodiscard]] TypedClass typedClassOf(const std::string& text, const std::string& path);

}  // namespace Orvel::Tool

#endif
