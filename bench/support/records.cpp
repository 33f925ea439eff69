#include "bench/support/records.h"

#include "bench/support/events.h"
#include "events/event_record.h"
#include "json/json.h"

namespace Orvel::Bench {

std::list<WideString> plainRecords(std::size_t count) {
    Analytics::Json::Document document;
    const Analytics::Json::Object values = document.parseObject(plainEvent());
    return {count, Analytics::Events::eventRecord(document, values, PageView(), ORVEL_TEXT("1.0"))};
}

}  // namespace Orvel::Bench
