#ifndef ORVEL_MEMORY_SESSION_SCENE_H
#define ORVEL_MEMORY_SESSION_SCENE_H

#include <nlohmann/json.hpp>

#include <memory>
#include <string>
#include <vector>

#include "memory/answering_service.h"
#include "orvel/analytics.h"
#include "support/data_classes.h"

namespace Orvel::TestSupport {

/// A session whose operations lack memory, with events in its queue.
class SessionScene {
  public:
    using Result = Analytics::Emitters::AnalyticsResult;

    /// @param queued how many events are in the queue.
    explicit SessionScene(AnsweringService& answering, std::size_t queued = 2,
                          WideString application = ORVEL_TEXT("AnApplication"));
    SessionScene(const SessionScene&) = delete;
    SessionScene& operator=(const SessionScene&) = delete;
    ~SessionScene();

    /// Collects an event, which is expected to reach the service one day.
    void collect(const std::string& event);

    /// The events of the queue, or those of the batches that the service was sent.
    std::vector<nlohmann::json> queue();
    std::vector<nlohmann::json> delivered() const;

    /// Whether the session is the one that it was at first, and not a renewed one.
    bool isSameSession();

    /// The session goes on: what is in its queue and one event more reach the service.
    void expectUsable();

    AnsweringService& service;
    AnalyticsSession session;
    TestDataClass evt;
    /// The events that were in the queue at first.
    std::vector<nlohmann::json> collected;
    Result result = Result::Success;

  private:
    WideString application_;
    WideString firstSessionId_;
    WideString firstUserId_;
};

/// A text without anything that a JSON text would have to escape.
std::string plainText(std::size_t length);

}  // namespace Orvel::TestSupport

#endif
