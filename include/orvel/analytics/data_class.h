#ifndef ORVEL_ANALYTICS_DATA_CLASS_H
#define ORVEL_ANALYTICS_DATA_CLASS_H

#include <cstdint>
#include <list>

#include "orvel/analytics/export.h"
#include "orvel/analytics/text.h"

/// @file
/// Data classes: the schemas of the events that an application reports.

namespace Orvel::Analytics::DataClass {

/// One field of a data class. A plain value: it owns its texts, copies and moves member by member.
class ORVEL_ANALYTICS_EXPORT DataClassFieldInfo {
  public:
    /// Every text empty; `auxValue` is left without a value.
    DataClassFieldInfo();
    /// Copies every member. @throws std::bad_alloc
    DataClassFieldInfo(const DataClassFieldInfo& other);
    /// Takes the texts of `other` over, which are empty then, and copies `auxValue`.
    DataClassFieldInfo(DataClassFieldInfo&& other) noexcept;
    /// Copies every member. @throws std::bad_alloc Each text is then as it was or
    /// as it was to be.
    DataClassFieldInfo& operator=(const DataClassFieldInfo& other);
    /// As moving into a new record; onto itself it changes nothing.
    DataClassFieldInfo& operator=(DataClassFieldInfo&& other) noexcept;
    /// Releases the texts.
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
/// object through a pointer to this class. The library only reads an object: several threads may
/// use one as long as nobody changes it.
class ORVEL_ANALYTICS_EXPORT BaseDataClass {
  public:
    /// Every text empty; `dateTime` is the current time.
    BaseDataClass();
    /// Copies every member. @throws std::bad_alloc
    BaseDataClass(const BaseDataClass& other);
    /// Takes the texts of `other` over, which are empty then, and copies `dateTime`.
    BaseDataClass(BaseDataClass&& other) noexcept;
    /// Copies every member. @throws std::bad_alloc Each text is then as it was or
    /// as it was to be.
    BaseDataClass& operator=(const BaseDataClass& other);
    /// As moving into a new object; onto itself it changes nothing.
    BaseDataClass& operator=(BaseDataClass&& other) noexcept;
    /// Releases the texts. Not virtual: see above.
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
