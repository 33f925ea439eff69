#ifndef ORVEL_BENCH_SUPPORT_EVENTS_H
#define ORVEL_BENCH_SUPPORT_EVENTS_H

#include <list>
#include <vector>

#include "orvel/analytics/data_class.h"
#include "orvel/analytics/text.h"

namespace Orvel::Bench {

/// A data class of eight fields: three varchars, three integers, a number and a boolean.
class PageView final : public Analytics::DataClass::BaseDataClass {
  public:
    PageView();

    void reservedOperation() override {}
    std::list<Analytics::DataClass::DataClassFieldInfo> getFields() override { return fields_; }

  private:
    std::list<Analytics::DataClass::DataClassFieldInfo> fields_;
};

/// One event of that class, of 207 ASCII characters: all eight fields and nothing else.
const WideString& plainEvent();

/// Events of that class as applications write them: 100 to 600 code units, two of five with Chinese
/// or emoji, with nested objects and arrays beside the fields and escapes in their texts. The same
/// events in every run.
std::vector<WideString> mixedEvents(std::size_t count);

}  // namespace Orvel::Bench

#endif
