#include "cli/consent.h"

#include <fmt/format.h>

#include <ostream>
#include <string>
#include <string_view>

#include "cli/consent_view.h"
#include "cli/result_names.h"
#include "cli/service_probe.h"
#include "orvel/analytics.h"

namespace Orvel::Tool {

namespace {

using Analytics::Emitters::AnalyticsResult;

/// A verdict other than success.
class Refusal : public Failure {
  public:
    Refusal(AnalyticsResult result, std::string_view what)
        : Failure(ExitStatus::Refused, fmt::format("{} failed: {}", what, describeResult(result))),
          result_(result) {}

    [[nodiscard]] AnalyticsResult result() const noexcept { return result_; }

  private:
    AnalyticsResult result_;
};

/// Calls an operation of the session, and raises whatever is not success.
/// @param what the operation, in words for the message.
template <typename Operation>
void perform(std::string_view what, Operation operation) {
    AnalyticsResult result{};
    try {
        result = operation();
    } catch (const Analytics::hresult_error& error) {
        // A service that has gone away since it was probed can look like one that talks nonsense.
        requireService();
        throw Failure(
            ExitStatus::Failed,
            fmt::format("{} failed: the service's reply cannot be read: {}", what, error.what()));
    }
    if (result == AnalyticsResult::GenericError) {
        requireService();
    }
    if (result != AnalyticsResult::Success) {
        throw Refusal(result, what);
    }
}

ConsentObject readRecord(AnalyticsSession& session, std::string_view what) {
    ConsentObject record;
    perform(what, [&] { return session.GetConsent(&record); });
    return record;
}

/// Runs the steps of a command against a service that can be reached, and notes how they ended.
template <typename Steps>
Outcome conclude(const ConsentOptions& options, Steps steps) {
    Outcome outcome;
    try {
        AnalyticsSession session = makeSession(options.session);
        requireService();
        steps(session);
        outcome.result = AnalyticsResult::Success;
    } catch (const Refusal& refusal) {
        outcome = {refusal.status(), refusal.result(), refusal.what()};
    } catch (const Failure& failure) {
        outcome = {failure.status(), {}, failure.what()};
    }
    return outcome;
}

/// Writes what a command has to say, in the form asked for.
ExitStatus show(const Outcome& outcome, const ConsentOptions& options, const std::string& text,
                const std::string& json, Console& console) {
    if (!outcome.error.empty()) {
        console.err << "orvel-analytics: " << printable(outcome.error) << '\n';
    }
    console.out << (options.json ? json : text);
    flushOutput(console);
    return outcome.status;
}

}  // namespace

ExitStatus getConsent(const ConsentOptions& options, Console& console) {
    std::optional<ConsentObject> record;
    const Outcome outcome = conclude(options, [&](AnalyticsSession& session) {
        record = readRecord(session, "reading the consent record");
    });
    return show(outcome, options, record ? recordText(*record) : std::string(),
                recordJson(record, outcome), console);
}

ExitStatus setConsent(const ConsentOptions& options, Console& console) {
    bool changed = false;
    std::optional<ConsentObject> record;
    const Outcome outcome = conclude(options, [&](AnalyticsSession& session) {
        ProcessingPermissions permissions =
            readRecord(session, "reading the consent record").processingPermissions;
        permissions.marketing = options.marketing.value_or(permissions.marketing);
        permissions.support = options.support.value_or(permissions.support);
        permissions.productEnhancement =
            options.productEnhancement.value_or(permissions.productEnhancement);
        perform("changing the consent", [&] { return session.SetConsent(permissions); });
        changed = true;
        record = readRecord(session, "the consent was changed, but reading it back");
    });
    return show(outcome, options, changeText(changed, record), changeJson(changed, record, outcome),
                console);
}

ExitStatus showDocuments(const ConsentOptions& options, Console& console) {
    std::optional<PrivacyDocuments> documents;
    const Outcome outcome = conclude(options, [&](AnalyticsSession& session) {
        PrivacyDocuments read;
        perform("reading the addresses of the privacy documents",
                [&] { return session.GetDocumentURLs(&read); });
        documents = std::move(read);
    });
    return show(outcome, options, documents ? documentsText(*documents) : std::string(),
                documentsJson(documents, outcome), console);
}

}  // namespace Orvel::Tool
