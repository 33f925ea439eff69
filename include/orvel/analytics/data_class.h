#ifndef ORVEL_ANALYTICS_DATA_CLASS_H
#define ORVEL_ANALYTICS_DATA_CLASS_H

#include <cstdint>
#include <list>

#include "orvel/analytics/export.h"
#include "orvel/analytics/text.h"

/// @file
/// Data classes: the schemas of the events that an application reports.

namespace Orvel::Analytics::DataClass {

/// One field of a data class. A plain value: it owns its texts, copies and moves member by member,
/// and a moved-from record's texts are empty. A copy assignment that runs out of memory
/// (`std::bad_alloc`) leaves each text as it was or as it was to be.
class ORVEL_ANALYTICS_EXPORT DataClassFieldInfo {
  public:
    /// Every text empty; `auxValue` is left without a value.
    DataClassFieldInfo();
    DataClassFieldInfo(const DataClassFieldInfo& other);
    DataClassFieldInfo(DataClassFieldInfo&& other) noexcept;
    DataClassFieldInfo& operator=(const DataClassFieldInfo& other);
    DataClassFieldInfo& operator=(DataClassFieldInfo&& other) noexcept;
    ~DataClassFieldInfo();

    /// The field's name, for people.
    WideString name;
    /// The field's identifier: the member name of its value in an event.
    WideString id;
    /// The field's type. "integer" and any text with "varchar" in it, such as "varchar(64)", are
    /// checked when an event is collected; every other type is accepted as it is.
    WideString type;
    /// Carried with the record and never read by the library.
    std::int32_t auxValue;
    /// "false" or "False" when the field must have a value; any other text means that it need not.
    WideString nullable;
};

/// A data class: its name, identifier, version, point in time and fields. An application derives
/// its own classes from it and owns their objects; the library borrows a pointer for the length of
/// one call and never deletes one, which is why the destructor is not virtual: do not delete an
/// object through a pointer to this class. A copy assignment that runs out of memory
/// (`std::bad_alloc`) leaves each text as it was or as it was to be.
class ORVEL_ANALYTICS_EXPORT BaseDataClass {
  public:
    /// Every text empty; `dateTime` is the current time.
    BaseDataClass();
    BaseDataClass(const BaseDataClass& other);
    BaseDataClass(BaseDataClass&& other) noexcept;
    BaseDataClass& operator=(const BaseDataClass& other);
    BaseDataClass& operator=(BaseDataClass&& other) noexcept;
    ~BaseDataClass();

    /// Never called by the library.
    virtual void reservedOperation() = 0;

    /// The fields, in the order in which they are registered and checked. Called once by
    /// `RegisterDataClass`, and once by `CollectEvent` for an event that is a JSON object with
    /// members, on the thread of that call. An exception leaves that operation.
    virtual std::list<DataClassFieldInfo> getFields() = 0;

    /// The data class's name, for people.
    WideString name;
    /// The data class's identifier: the key of its events.
    WideString id;
    /// The data class's version.
    WideString version;
    /// The time of the events collected with this object, in seconds since 1970-01-01 00:00 UTC;
    /// 0 or less gives events an empty time.
    std::int64_t dateTime;
};

}  // namespace Orvel::Analytics::DataClass

#endif
