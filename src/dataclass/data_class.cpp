#include "orvel/analytics/data_class.h"

#include "text/clock.h"
#include "text/take.h"

namespace Orvel::Analytics::DataClass {

using Text::take;

// An auxValue without a value is the record's documented start.
// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
DataClassFieldInfo::DataClassFieldInfo() {}

DataClassFieldInfo::DataClassFieldInfo(const DataClassFieldInfo& other) = default;

DataClassFieldInfo::DataClassFieldInfo(DataClassFieldInfo&& other) noexcept
    : name(take(other.name)),
      id(take(other.id)),
      type(take(other.type)),
      auxValue(other.auxValue),
      nullable(take(other.nullable)) {}

DataClassFieldInfo& DataClassFieldInfo::operator=(const DataClassFieldInfo& other) = default;

DataClassFieldInfo& DataClassFieldInfo::operator=(DataClassFieldInfo&& other) noexcept {
    if (this != &other) {
        name = take(other.name);
        id = take(other.id);
        type = take(other.type);
        auxValue = other.auxValue;
        nullable = take(other.nullable);
    }
    return *this;
}

DataClassFieldInfo::~DataClassFieldInfo() = default;

BaseDataClass::BaseDataClass() : dateTime(Text::currentTime()) {}

BaseDataClass::BaseDataClass(const BaseDataClass& other) = default;

BaseDataClass::BaseDataClass(BaseDataClass&& other) noexcept
    : name(take(other.name)),
      id(take(other.id)),
      version(take(other.version)),
      dateTime(other.dateTime) {}

BaseDataClass& BaseDataClass::operator=(const BaseDataClass& other) = default;

BaseDataClass& BaseDataClass::operator=(BaseDataClass&& other) noexcept {
    if (this != &other) {
        name = take(other.name);
        id = take(other.id);
        version = take(other.version);
        dateTime = other.dateTime;
    }
    return *this;
}

BaseDataClass::~BaseDataClass() = default;

}  // namespace Orvel::Analytics::DataClass
