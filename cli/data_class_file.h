#ifndef ORVEL_CLI_DATA_CLASS_FILE_H
#define ORVEL_CLI_DATA_CLASS_FILE_H

#include <list>
#include <string>
#include <string_view>

#include "orvel/analytics/data_class.h"

/// @file
/// Data classes described in files: one JSON object with the members "name", "id", "version" and
/// "fields", where each field has "id", "name", "nullable" and "type". Every value is a text.

namespace Orvel::Tool {

/// A data class whose fields were read from a file.
class FileDataClass final : public Analytics::DataClass::BaseDataClass {
  public:
    void reservedOperation() override {}
    std::list<Analytics::DataClass::DataClassFieldInfo> getFields() override { return fields; }

    std::list<Analytics::DataClass::DataClassFieldInfo> fields;
};

/// Reads a data class file.
/// @throws Failure with `ExitStatus::Usage`, naming the file with line and column, when it cannot
/// be
///     read or is not exactly such an object: a missing, unknown or repeated member, a value of
///     another type.
[[nodiscard]] FileDataClass readDataClassFile(const std::string& path);

/// The text of such a file, not looked into.
/// @throws Failure with `ExitStatus::Usage` when it cannot be read.
[[nodiscard]] std::string readDataClassText(const std::string& path);

/// As `readDataClassFile`, for a text; `path` only stands in the messages.
[[nodiscard]] FileDataClass parseDataClass(std::string_view text, const std::string& path);

/// Refuses a field of a text that was read, in the same form.
/// @param index the field's place, from 0.
[[noreturn]] void failAtField(std::string_view text, const std::string& path, std::size_t index,
                              const std::string& what);

}  // namespace Orvel::Tool

#endif
