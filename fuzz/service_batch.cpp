/// The service's reader of batches. The fields of the class `Evt`, an empty line, and the batch.

#include <optional>
#include <string>

#include "fuzz/support/allocations.h"
#include "fuzz/support/fields.h"
#include "fuzz/support/input.h"
#include "fuzz/support/require.h"
#include "service/batch.h"
#include "service/calendar.h"
#include "service/text.h"
#include "support/event_model.h"

namespace Orvel::Fuzz {
namespace {

using TestSupport::Numbers;
using TestSupport::PlainJson;
using Kind = PlainJson::Kind;
namespace Names = Service::ErrorNames;

constexpr std::int64_t kClass = 7;

std::vector<Service::Field> serviceFields(Input& input) {
    std::vector<Service::Field> fields;
    for (const FieldsClass::Field& field : readFields(input)) {
        const auto utf8 = [](WideStringView text) {
            return TestSupport::wellFormed(text).value_or("ill-formed");
        };
        fields.push_back(
            {utf8(field.id), utf8(field.name), utf8(field.nullable), utf8(field.type)});
    }
    return fields;
}

const PlainJson* memberOf(const PlainJson& object, const char* name, Kind kind) {
    const PlainJson* const value = object.member(name);
    return value != nullptr && value->kind == kind ? value : nullptr;
}

/// The one element of "events", if the document has the form of a batch.
const PlainJson* batchOf(const PlainJson& document) {
    const PlainJson* const events = memberOf(document, "events", Kind::kArray);
    if (events == nullptr || events->values.size() != 1) {
        return nullptr;
    }
    const PlainJson& only = events->values[0];
    const PlainJson* const identity = memberOf(only, "appsession", Kind::kObject);
    if (identity == nullptr || memberOf(only, "data", Kind::kArray) == nullptr ||
        memberOf(*identity, "4", Kind::kNumber) == nullptr) {
        return nullptr;
    }
    for (const char* name : {"V", "DT", "1", "2", "3", "5", "6", "7"}) {
        if (memberOf(*identity, name, Kind::kString) == nullptr) {
            return nullptr;
        }
    }
    return &only;
}

bool breaksAField(const PlainJson& values, const std::vector<Service::Field>& fields) {
    std::optional<std::int64_t> limit;
    for (const Service::Field& field : fields) {
        if (field.id == "DT" || field.id == "V") {
            continue;
        }
        const PlainJson* const value = values.member(field.id);
        const bool isRequired = field.nullable == "false" || field.nullable == "False";
        if (isRequired && (value == nullptr || value->kind == Kind::kNull)) {
            return true;
        }
        if (value == nullptr) {
            continue;
        }
        if (field.type == "integer") {
            if (!TestSupport::isIntegerValue(*value)) {
                return true;
            }
        } else if (field.type.find("varchar") != std::string::npos) {
            const auto length = TestSupport::lengthInType(field.type);
            limit = length ? length : limit;
            // What is beyond 32 bits is no limit, and no text here is that long.
            if (limit && TestSupport::measuredLength(*value) > *limit) {
                return true;
            }
        }
    }
    return false;
}

/// The error of one event, empty for a good one.
Service::ErrorName errorOf(const PlainJson& event, const std::vector<Service::Field>& fields) {
    if (event.kind != Kind::kObject || event.values.size() != 1 ||
        event.values[0].kind != Kind::kObject) {
        return Names::kMalformedJson;
    }
    if (event.names[0] != "Evt") {
        return Names::kUnregisteredDataclass;
    }
    const PlainJson& values = event.values[0];
    if (breaksAField(values, fields)) {
        return Names::kDataclassNotFollowRegisteredFormat;
    }
    const PlainJson* const time = values.member("DT");
    if (time == nullptr || time->kind == Kind::kNull ||
        (time->kind == Kind::kString && time->text.empty())) {
        return Names::kDateTimeFieldIsRequired;
    }
    return time->kind == Kind::kString && Service::isCompactTimestamp(time->text)
               ? Service::ErrorName()
               : Names::kInvalidDatetimeFormat;
}

void checkEvent(const Service::JudgedEvent& judged, const PlainJson& event,
                const std::vector<Service::Field>& fields) {
    require(judged.error == errorOf(event, fields), "the service and the model agree on an event");
    const auto kept =
        TestSupport::readPlainJson(judged.content, Service::kDeepestJson, Numbers::kAny);
    const PlainJson& expected = judged.error.empty() ? event.values[0] : event;
    require(kept == expected, "what is kept of an event is what was sent");
    require(judged.error.empty() || judged.path.starts_with("$.events[0].data["),
            "a bad event has a path");
}

/// Nothing for a document that is no batch. The events borrow from the batch and the document.
struct Reading {
    std::optional<Service::Batch> batch;
    std::vector<Service::JudgedEvent> events;
};

Reading readByService(const std::string& document, const std::vector<Service::Field>& fields,
                      std::size_t size) {
    const AllocationBound bound(20'000, 600, size);
    Reading reading;
    try {
        reading.batch.emplace(document);
        reading.events = reading.batch->judge([&](std::string_view identifier) {
            return identifier == "Evt" ? std::optional(Service::StoredClass{kClass, fields})
                                       : std::nullopt;
        });
    } catch (const Service::Refusal& refusal) {
        require(refusal.name() == Names::kMalformedJson, "a refusal has its name");
    }
    return reading;
}

void checkBatch(const std::string& document, const std::vector<Service::Field>& fields,
                std::size_t size) {
    const auto json = TestSupport::readPlainJson(document, Service::kDeepestJson, Numbers::kAny);
    const PlainJson* const expected = json ? batchOf(*json) : nullptr;
    const Reading reading = readByService(document, fields, size);
    require(reading.batch.has_value() == (expected != nullptr),
            "what has the form of a batch is taken, and nothing else");
    if (expected != nullptr) {
        const PlainJson& data = *expected->member("data");
        require(reading.events.size() == data.values.size(), "every event of a batch is judged");
        for (std::size_t index = 0; index < data.values.size(); ++index) {
            checkEvent(reading.events[index], data.values[index], fields);
        }
    }
}

}  // namespace
}  // namespace Orvel::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Orvel::Fuzz;
    Input input(data, size);
    const auto fields = serviceFields(input);
    if (const auto document = Orvel::Service::toUtf8(wideOf(input.rest()))) {
        checkBatch(*document, fields, size);
    }
    return 0;
}
