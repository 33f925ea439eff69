/// Data class documents: what the library writes of a data class, and what the service reads. Three
/// lines with a class's name, identifier and version, its fields, an empty line, and a text that is
/// handed to the service as it is.

#include "service/registration.h"

#include <string>

#include "fuzz/support/allocations.h"
#include "fuzz/support/fields.h"
#include "fuzz/support/input.h"
#include "fuzz/support/require.h"
#include "service/error_name.h"
#include "service/json.h"
#include "service/text.h"
#include "support/event_model.h"
#include "support/session_access.h"

namespace Orvel::Fuzz {
namespace {

using Analytics::Session::SessionAccess;
using TestSupport::Numbers;
using TestSupport::PlainJson;
using Kind = PlainJson::Kind;
namespace Names = Service::ErrorNames;

/// What the service makes of a document: a data class, or the name of an error.
struct Reading {
    std::optional<Service::DataClass> dataClass;
    Service::ErrorName error;
};

Reading readByService(const std::string& document) {
    const AllocationBound bound(20'000, 400, document.size());
    try {
        return {Service::readRegistration(document), {}};
    } catch (const Service::Refusal& refusal) {
        return {std::nullopt, refusal.name()};
    }
}

/// The text of a member, or nothing once one was no text.
std::string textOf(const PlainJson& object, const char* name, bool& complete) {
    const PlainJson* const value = object.member(name);
    complete = complete && value != nullptr && value->kind == Kind::kString;
    return complete ? value->text : std::string();
}

Reading readByModel(const std::string& document) {
    const auto json = TestSupport::readPlainJson(document, Service::kDeepestJson, Numbers::kAny);
    if (!json || json->kind != Kind::kObject) {
        return {std::nullopt, Names::kMalformedJson};
    }
    bool complete = true;
    Service::DataClass dataClass;
    dataClass.name = textOf(*json, "name", complete);
    dataClass.id = textOf(*json, "id", complete);
    dataClass.version = textOf(*json, "version", complete);
    const PlainJson* const fields = json->member("fields");
    complete = complete && fields != nullptr && fields->kind == Kind::kArray;
    for (std::size_t index = 0; complete && index < fields->values.size(); ++index) {
        const PlainJson& field = fields->values[index];
        dataClass.fields.push_back({textOf(field, "id", complete), textOf(field, "name", complete),
                                    textOf(field, "nullable", complete),
                                    textOf(field, "type", complete)});
    }
    if (!complete) {
        return {std::nullopt, Names::kMalformedDataclass};
    }
    return {dataClass, {}};
}

bool areSame(const Service::DataClass& one, const Service::DataClass& other) {
    return one.name == other.name && one.id == other.id && one.version == other.version &&
           one.fields == other.fields;
}

void checkReading(const std::string& document) {
    const Reading reading = readByService(document);
    const Reading expected = readByModel(document);
    require(reading.error == expected.error, "the service and the model refuse the same documents");
    require(!reading.dataClass || areSame(*reading.dataClass, *expected.dataClass),
            "the service and the model read the same data class");
    if (reading.dataClass) {
        const auto stored = Service::fieldsText(reading.dataClass->fields);
        require(Service::readFieldsText(stored) == reading.dataClass->fields,
                "fields are read as they were stored");
    }
}

std::optional<Service::DataClass> wellFormedClass(const FieldsClass& dataClass) {
    const auto name = TestSupport::wellFormed(dataClass.name);
    const auto id = TestSupport::wellFormed(dataClass.id);
    const auto version = TestSupport::wellFormed(dataClass.version);
    if (!name || !id || !version) {
        return std::nullopt;
    }
    Service::DataClass expected{*name, *id, *version, {}};
    for (const FieldsClass::Field& field : dataClass.fields) {
        const auto fieldId = TestSupport::wellFormed(field.id);
        const auto fieldName = TestSupport::wellFormed(field.name);
        const auto nullable = TestSupport::wellFormed(field.nullable);
        const auto type = TestSupport::wellFormed(field.type);
        if (!fieldId || !fieldName || !nullable || !type) {
            return std::nullopt;
        }
        expected.fields.push_back({*fieldId, *fieldName, *nullable, *type});
    }
    return expected;
}

void checkWriting(FieldsClass& dataClass, std::size_t size) {
    const auto written = [&] {
        const AllocationBound bound(20'000, 400, size);
        return SessionAccess::getJSonStr(dataClass);
    }();
    const auto document = Service::toUtf8(written);
    const auto expected = wellFormedClass(dataClass);
    require(document.has_value() == expected.has_value(),
            "a document is as well-formed as the texts of its class");
    if (document) {
        const Reading reading = readByService(*document);
        require(reading.dataClass && areSame(*reading.dataClass, *expected),
                "the service reads what the library wrote");
        checkReading(*document);
    }
}

}  // namespace
}  // namespace Orvel::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Orvel::Fuzz;
    Input input(data, size);
    FieldsClass dataClass;
    dataClass.name = wideOf(input.line());
    dataClass.id = wideOf(input.line());
    dataClass.version = wideOf(input.line());
    dataClass.fields = readFields(input);
    checkWriting(dataClass, size);
    if (const auto document = Orvel::Service::toUtf8(wideOf(input.rest()))) {
        checkReading(*document);
    }
    return 0;
}
