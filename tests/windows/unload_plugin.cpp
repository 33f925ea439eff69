/// A part of an application that comes and goes, and the library with it.

#include <orvel/analytics.h>

#include <exception>
#include <list>

namespace {

class Event final : public Orvel::Analytics::DataClass::BaseDataClass {
  public:
    Event() {
        name = L"Event";
        id = L"Evt";
        version = L"1.0";
    }
    void reservedOperation() override {}
    std::list<Orvel::Analytics::DataClass::DataClassFieldInfo> getFields() override { return {}; }
};

/// Builds a document and tries to send it; whether a service is there does not matter.
void announce(AnalyticsSession& session, Event& event) {
    try {
        session.RegisterDataClass(&event);
    } catch (const std::exception&) {
        return;
    }
}

}  // namespace

extern "C" {

/// Uses every class of the platform that the library knows.
/// @return whether an event was collected.
bool useLibrary() {
    try {
        AnalyticsSession session(L"MyApp", L"1");
        Event event;
        const auto collected = session.CollectEvent(&event, L"{\"a\":1}");
        announce(session, event);
        return collected == Orvel::Analytics::Emitters::AnalyticsResult::Success;
    } catch (const std::exception&) {
        return false;
    }
}
}
