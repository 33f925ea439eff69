#include <orvel/analytics.h>

#include <iostream>
#include <list>

namespace {

using namespace Orvel::Analytics;

class Click final : public DataClass::BaseDataClass {
  public:
    Click() {
        name = ORVEL_TEXT("Click");
        id = ORVEL_TEXT("click");
        version = ORVEL_TEXT("1");
    }
    void reservedOperation() override {}
    std::list<DataClass::DataClassFieldInfo> getFields() override { return {}; }
};

}  // namespace

/// Nobody serves the endpoint that the test chose: the session works, and says so.
int main() {
    AnalyticsSession session(ORVEL_TEXT("Consumer"), ORVEL_TEXT("1.0"));
    Click click;
    const auto registered = session.RegisterDataClass(&click);
    const auto collected = session.CollectEvent(&click, ORVEL_TEXT("{\"x\":1}"));
    const auto sent = session.SendEvents();
    std::cout << static_cast<int>(registered) << ' ' << static_cast<int>(collected) << ' '
              << static_cast<int>(sent) << '\n';
    try {
        AnalyticsSession refused({}, {});
    } catch (const char* message) {
        std::cout << message << '\n';
    }
    return 0;
}
