#ifndef ORVEL_FUZZ_FIELDS_H
#define ORVEL_FUZZ_FIELDS_H

#include <list>

#include "fuzz/support/input.h"
#include "orvel/analytics/data_class.h"

namespace Orvel::Fuzz {

/// A data class whose fields an input gives.
class FieldsClass final : public Analytics::DataClass::BaseDataClass {
  public:
    using Field = Analytics::DataClass::DataClassFieldInfo;

    FieldsClass() {
        name = u"Event";
        id = u"Evt";
        version = u"1.0";
    }

    void reservedOperation() override {}
    std::list<Field> getFields() override { return fields; }

    std::list<Field> fields;
};

/// Reads fields, one a line: `id|type|nullable|name`, of which all but the identifier may be left
/// out. They end with an empty line.
inline std::list<FieldsClass::Field> readFields(Input& input) {
    std::list<FieldsClass::Field> fields;
    for (auto line = input.line(); !line.empty(); line = input.line()) {
        Input parts(line);
        FieldsClass::Field field;
        field.id = wideOf(parts.until('|'));
        field.type = wideOf(parts.until('|'));
        field.nullable = wideOf(parts.until('|'));
        field.name = wideOf(parts.rest());
        field.auxValue = 0;
        fields.push_back(field);
    }
    return fields;
}

}  // namespace Orvel::Fuzz

#endif
