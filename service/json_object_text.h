#ifndef ORVEL_SERVICE_JSON_OBJECT_TEXT_H
#define ORVEL_SERVICE_JSON_OBJECT_TEXT_H

#include <optional>
#include <string>
#include <string_view>

namespace Orvel::Service {

/// Writes one JSON object, member by member.
class JsonObjectText {
  public:
    JsonObjectText& text(std::string_view name, std::string_view value);
    /// A text, or null.
    JsonObjectText& optionalText(std::string_view name, std::optional<std::string_view> value);
    JsonObjectText& boolean(std::string_view name, bool value);
    /// A value that is JSON already.
    JsonObjectText& json(std::string_view name, std::string_view value);

    std::string finish() const;

  private:
    void begin(std::string_view name);

    std::string members_;
};

}  // namespace Orvel::Service

#endif
