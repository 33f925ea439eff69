#ifndef ORVEL_ANALYTICS_TESTING_SERVICE_H
#define ORVEL_ANALYTICS_TESTING_SERVICE_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "orvel/analytics/consent_object.h"
#include "orvel/analytics/privacy_documents.h"
#include "orvel/analytics/testing/answer.h"
#include "orvel/analytics/testing/export.h"
#include "orvel/analytics/testing/records.h"
#include "orvel/analytics/text.h"

/// @file
/// A service for an application's own tests.

namespace Orvel::Analytics::Testing {

/// How long the RPC client waits for a connection.
inline constexpr std::chrono::milliseconds kConnectDeadline{2'000};
/// How long the RPC client waits for an answer of which not a byte comes.
inline constexpr std::chrono::milliseconds kAnswerDeadline{10'000};

/// An analytics service inside a test. Every `AnalyticsSession` of the process reaches it as long
/// as it lives; of several the one that was made last counts. While there is none, an operation
/// that needs the service raises `std::logic_error`.
///
/// It accepts everything until it is told otherwise, records what arrives, and keeps a consent
/// record. It judges no event and no data class: the library's own checks hold, the service's do
/// not. There is no socket, no file, no thread and no waiting.
///
/// Threads: any thread may call any operation, here and of sessions. A service is made and
/// destroyed while no session is at work.
///
/// Errors: `std::bad_alloc` from every operation that is not `noexcept`.
class ORVEL_ANALYTICS_TESTING_EXPORT Service {
  public:
    /// A service that accepts everything, has recorded nothing, and keeps a consent record with
    /// empty texts, in which data may be processed, the device is not managed and no permission is
    /// known.
    Service();
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;
    /// The service made before this one, if there is one, counts again.
    ~Service();

    /// From now on, this is the answer to every such step.
    /// @throws std::invalid_argument when the step cannot be answered so.
    void answer(Step step, Answer answer);

    /// This is the answer to the next such step alone; said several times, to the ones after it.
    /// What `answer` said holds again afterwards.
    /// @throws std::invalid_argument when the step cannot be answered so.
    void answerNext(Step step, Answer answer);

    /// From now on, no connection can be opened.
    /// @param status the RPC client's status for it; 1722 says that nobody serves, 5 that this user
    ///     may not connect.
    /// @throws std::invalid_argument for 0.
    void refuseConnections(std::int32_t status = 1722);

    /// From now on, every step succeeds again, those included for which `answerNext` was called.
    void acceptEverything();

    /// Replaces the consent record. A service refuses batches with `NotRightAccessToWrite` when its
    /// record says that no data may be processed, and changes of the permissions with
    /// `UnableToSetConsentForManagedDevice` when it says that the device is managed.
    void setConsent(const ConsentObject& consent);

    /// Replaces the documents' addresses, which are part of the consent record.
    void setDocuments(const PrivacyDocuments& documents);

    /// The consent record. An accepted `SetConsent` has replaced its permissions, and its source by
    /// the application's name.
    [[nodiscard]] ConsentObject consent() const;

    /// The data classes that applications tried to register, in their order.
    [[nodiscard]] std::vector<Registration> registrations() const;

    /// The batches that applications tried to send, in their order.
    [[nodiscard]] std::vector<Batch> batches() const;

    /// The events that a real service would have: those of every accepted batch, in their order.
    [[nodiscard]] std::vector<Event> events() const;

    /// The changes of the consent that applications tried to make, in their order.
    [[nodiscard]] std::vector<ConsentChange> consentChanges() const;

    /// How often a connection was asked for, refused ones included: each operation that needs the
    /// service asks once.
    [[nodiscard]] std::size_t connections() const;

    /// The commands that arrived, word for word and in their order, without greetings.
    [[nodiscard]] std::vector<WideString> commands() const;

    /// Forgets everything recorded. Answers, consent record and clock stay as they are.
    void forget();

    /// What the fake clock has moved: how long the operations so far would have waited in vain.
    [[nodiscard]] std::chrono::milliseconds waited() const;

    /// Calls a function whenever the fake clock moves, so that a clock of the application's own can
    /// move along. It runs on the thread of the operation that would have waited, before that
    /// operation returns, and may call any operation of this service.
    /// @param moved is given by how much; null calls nothing.
    void onWait(std::function<void(std::chrono::milliseconds)> moved);

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace Orvel::Analytics::Testing

#endif
