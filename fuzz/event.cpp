/// An event's text against a data class. Lines with the class's fields, `id|type|nullable`, then an
/// empty line and the event.

#include <stdlib.h>

#include <optional>
#include <stdexcept>
#include <utility>

#include "fuzz/support/allocations.h"
#include "fuzz/support/fields.h"
#include "fuzz/support/input.h"
#include "fuzz/support/require.h"
#include "orvel/analytics.h"
#include "support/event_model.h"
#include "support/session_access.h"

namespace Orvel::Fuzz {
namespace {

using Analytics::Emitters::AnalyticsResult;
using Analytics::Session::SessionAccess;
using TestSupport::PlainJson;

/// Deeper than any event, so that its record and its batch can be read.
constexpr std::size_t kDeepest = TestSupport::kDeepestEvent + 16;

PlainJson readOwn(WideStringView text) {
    const auto utf8 = TestSupport::wellFormed(text);
    require(utf8.has_value(), "what the library writes is well-formed");
    auto json = TestSupport::readPlainJson(*utf8, kDeepest);
    require(json.has_value(), "what the library writes is JSON");
    return std::move(*json);
}

std::optional<AnalyticsResult> collect(AnalyticsSession& session, FieldsClass& dataClass,
                                       const WideString& event, std::size_t size) {
    const AllocationBound bound(20'000, 400, size);
    try {
        return session.CollectEvent(&dataClass, event);
    } catch (const std::out_of_range&) {
        return std::nullopt;
    }
}

void checkQueued(const AnalyticsSession& session, const WideString& record, PlainJson values) {
    values.set("DT", TestSupport::plainString("20240131T235959"));
    values.set("V", TestSupport::plainString("1.0"));
    const PlainJson expected = TestSupport::plainObject("Evt", std::move(values));
    require(readOwn(record) == expected, "a record holds the event's values and the stamps");
    const PlainJson batch = readOwn(SessionAccess::generateEventsJsonStr(session));
    const PlainJson& data = *batch.member("events")->values.at(0).member("data");
    require(data.values.size() == 1 && data.values[0] == expected, "a batch holds the record");
}

}  // namespace
}  // namespace Orvel::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Orvel::Fuzz;
    [[maybe_unused]] static const int zoneSet = ::setenv("TZ", "UTC0", 1);
    Input input(data, size);
    FieldsClass dataClass;
    dataClass.fields = readFields(input);
    dataClass.dateTime = 1'706'745'599;
    const Orvel::WideString event = wideOf(input.rest());

    // Beginning one reads files of the system's.
    static const AnalyticsSession begun(u"MyApp", u"1.2");
    AnalyticsSession session(begun);
    SessionAccess::appSession(session).versionTag = dataClass.version;
    const auto result = collect(session, dataClass, event, size);
    const auto expected = Orvel::TestSupport::judgeByModel(event, dataClass.fields);
    require(result == expected.result, "the library and the model agree");
    const auto& queue = SessionAccess::eventQueue(session);
    if (result == AnalyticsResult::Success) {
        require(queue.size() == 1, "an accepted event is queued");
        checkQueued(session, queue.front(), expected.values);
    } else {
        require(queue.empty(), "nothing else is queued");
    }
    return 0;
}
