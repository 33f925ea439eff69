#ifndef ORVEL_SUPPORT_DATA_CLASSES_H
#define ORVEL_SUPPORT_DATA_CLASSES_H

#include <initializer_list>
#include <list>
#include <utility>

#include "orvel/analytics/data_class.h"

namespace Orvel::TestSupport {

inline Analytics::DataClass::DataClassFieldInfo field(WideString id, WideString type,
                                                      WideString nullable = ORVEL_TEXT("true")) {
    Analytics::DataClass::DataClassFieldInfo info;
    info.name = id + ORVEL_TEXT(" name");
    info.id = std::move(id);
    info.type = std::move(type);
    info.auxValue = 0;
    info.nullable = std::move(nullable);
    return info;
}

/// A data class whose fields a test writes down, and which counts how often it is asked for them.
class TestDataClass final : public Analytics::DataClass::BaseDataClass {
  public:
    explicit TestDataClass(std::initializer_list<Analytics::DataClass::DataClassFieldInfo> list,
                           WideString classId = ORVEL_TEXT("Evt"),
                           WideString classVersion = ORVEL_TEXT("1.0"))
        : fields(list) {
        name = ORVEL_TEXT("Event");
        id = std::move(classId);
        version = std::move(classVersion);
    }

    void reservedOperation() override {}
    std::list<Analytics::DataClass::DataClassFieldInfo> getFields() override {
        ++timesAsked;
        return fields;
    }

    std::list<Analytics::DataClass::DataClassFieldInfo> fields;
    int timesAsked = 0;
};

}  // namespace Orvel::TestSupport

#endif
