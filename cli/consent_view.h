#ifndef ORVEL_CLI_CONSENT_VIEW_H
#define ORVEL_CLI_CONSENT_VIEW_H

#include <optional>
#include <string>

#include "cli/failure.h"
#include "orvel/analytics/consent_object.h"
#include "orvel/analytics/result.h"

/// @file
/// The consent record and the privacy documents as they are shown. Texts for people are lines of a
/// label and a value, in which no value can steer a terminal; those for programs are one JSON
/// object on one line. Every text ends with a line end.

namespace Orvel::Tool {

/// How a command ended.
struct Outcome {
    ExitStatus status = ExitStatus::Success;
    /// The library's verdict; nothing when the command broke off before there was one.
    std::optional<Analytics::Emitters::AnalyticsResult> result;
    /// Why the command did not succeed; empty when it did.
    std::string error;
};

/// A consent record for people.
[[nodiscard]] std::string recordText(const ConsentObject& record);

/// What came of a change, for people: empty when nothing was changed.
[[nodiscard]] std::string changeText(bool changed, const std::optional<ConsentObject>& record);

/// Addresses for people.
[[nodiscard]] std::string documentsText(const PrivacyDocuments& documents);

/// The same for programs.
[[nodiscard]] std::string recordJson(const std::optional<ConsentObject>& record,
                                     const Outcome& outcome);
[[nodiscard]] std::string changeJson(bool changed, const std::optional<ConsentObject>& record,
                                     const Outcome& outcome);
[[nodiscard]] std::string documentsJson(const std::optional<PrivacyDocuments>& documents,
                                        const Outcome& outcome);

}  // namespace Orvel::Tool

#endif
