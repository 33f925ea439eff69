#ifndef ORVEL_ANALYTICS_TESTING_ANSWER_H
#define ORVEL_ANALYTICS_TESTING_ANSWER_H

#include <cstdint>
#include <string>
#include <string_view>

#include "orvel/analytics/result.h"
#include "orvel/analytics/testing/export.h"
#include "orvel/analytics/text.h"

/// @file
/// What a `Service` answers.

namespace Orvel::Analytics::Testing {

/// The steps of a conversation with the service that can be answered. Each operation of a session
/// that needs the service connects, greets and gives its one command.
enum class Step {
    /// Opening the connection.
    Connect,
    /// Saying which application this is.
    Greet,
    /// `AnalyticsSession::RegisterDataClass`.
    RegisterDataClass,
    /// `AnalyticsSession::SendEvents`.
    SendEvents,
    /// `AnalyticsSession::GetConsent`.
    GetConsent,
    /// `AnalyticsSession::SetConsent`.
    SetConsent,
    /// `AnalyticsSession::GetDocumentURLs`.
    GetDocumentURLs,
};

/// An answer to a step. A plain value that owns its texts.
class ORVEL_ANALYTICS_TESTING_EXPORT Answer {
  public:
    /// What is answered.
    enum class Kind {
        /// The step succeeds.
        Success,
        /// The service reports an error.
        Error,
        /// The RPC client gives a status, and there is no reply.
        Status,
        /// There is no answer.
        Silence,
        /// The reply is a text.
        Text,
    };

    /// The step succeeds.
    Answer() = default;

    /// The step succeeds.
    [[nodiscard]] static Answer success();

    /// The service reports an error. Not for `Step::Connect`.
    /// @param result the error, one of those that a service names.
    /// @throws std::invalid_argument for any other result, such as `FieldValueTooLong`.
    [[nodiscard]] static Answer error(Emitters::AnalyticsResult result);

    /// The service reports an error by a name, known or not. Not for `Step::Connect`.
    /// @param name ASCII.
    [[nodiscard]] static Answer error(std::string_view name);

    /// The RPC client does not get through and gives a status: for `Step::Connect` the connection
    /// cannot be opened, for any other step the connection is lost.
    /// @param status a system error code other than 0, such as 1722 (nobody serves), 5 (not
    ///     permitted) or 1726 (the connection was lost).
    /// @throws std::invalid_argument for 0.
    [[nodiscard]] static Answer status(std::int32_t status);

    /// The service never answers. The operation returns at once, as it would after the RPC client's
    /// deadline: with the status 1460, while the service's fake clock moves on by the deadline.
    [[nodiscard]] static Answer silence();

    /// The service replies with this text, whatever it is. Not for `Step::Connect`.
    [[nodiscard]] static Answer text(WideString reply);

    /// What is answered.
    [[nodiscard]] Kind kind() const noexcept { return kind_; }
    /// The status of `Kind::Status`; otherwise 0.
    [[nodiscard]] std::int32_t status() const noexcept { return status_; }
    /// The reply of `Kind::Text`, or the name of `Kind::Error`; otherwise empty.
    [[nodiscard]] const WideString& text() const noexcept { return text_; }

  private:
    Kind kind_ = Kind::Success;
    std::int32_t status_ = 0;
    WideString text_;
};

}  // namespace Orvel::Analytics::Testing

#endif
