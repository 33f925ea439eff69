#ifndef ORVEL_SERVICE_DATA_CLASS_H
#define ORVEL_SERVICE_DATA_CLASS_H

#include <string>
#include <string_view>
#include <vector>

namespace Orvel::Service {

/// One field of a data class, as its registration described it.
struct Field {
    std::string id;
    std::string name;
    std::string nullable;
    std::string type;

    bool operator==(const Field&) const = default;
};

/// A kind of event, as an application has registered it.
struct DataClass {
    std::string name;
    std::string id;
    std::string version;
    std::vector<Field> fields;
};

/// The fields as a JSON array in one fixed form: equal texts are equal fields.
std::string fieldsText(const std::vector<Field>& fields);

/// Reads what `fieldsText` has written.
/// @throws std::runtime_error for any other text.
std::vector<Field> readFieldsText(std::string_view text);

}  // namespace Orvel::Service

#endif
