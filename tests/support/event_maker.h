#ifndef ORVEL_SUPPORT_EVENT_MAKER_H
#define ORVEL_SUPPORT_EVENT_MAKER_H

#include <cstddef>
#include <cstdint>
#include <list>
#include <random>
#include <string>

#include "orvel/analytics/data_class.h"

namespace Orvel::TestSupport {

/// Makes up data classes and texts of events that more or less follow them. The same seed gives the
/// same ones everywhere.
class EventMaker {
  public:
    using Fields = std::list<Analytics::DataClass::DataClassFieldInfo>;

    explicit EventMaker(std::uint64_t seed) : random_(seed) {}

    Fields fields();

    /// A text in UTF-8; now and then it is no JSON.
    std::string event(const Fields& fields);

  private:
    /// A number below another one.
    std::size_t below(std::size_t end) { return static_cast<std::size_t>(random_() % end); }
    bool once(std::size_t in) { return below(in) == 0; }

    template <std::size_t Count>
    const char* oneOf(const char* const (&texts)[Count]) {
        return texts[below(Count)];
    }

    std::string blanks();
    std::string string();
    std::string number();
    std::string value(int depth);
    std::string fieldValue(const std::string& type);
    std::string damaged(std::string text);

    std::mt19937_64 random_;
};

}  // namespace Orvel::TestSupport

#endif
