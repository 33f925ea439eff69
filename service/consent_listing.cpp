#include "service/consent_listing.h"

#include <fmt/format.h>

#include <string>

#include "service/calendar.h"
#include "service/consent_record.h"
#include "service/json_object_text.h"
#include "service/visible_text.h"

namespace Orvel::Service {

namespace {

std::string recordText(const Settings& settings, const std::optional<GivenConsent>& given) {
    std::string text;
    const auto add = [&text](std::string_view name, std::string_view value) {
        text += fmt::format("{:<20}  {}\n", name, value.empty() ? "-" : visibleText(value));
    };
    const Permissions permissions = given ? given->permissions : Permissions{};
    add("marketing", permissions.marketing);
    add("support", permissions.support);
    add("product enhancement", permissions.productEnhancement);
    add("last set", given ? utcText(given->time) : "never");
    add("source", given ? given->source : settings.consentSource);
    add("process data", settings.processData ? "yes" : "no");
    add("managed", settings.managed ? "yes" : "no");
    add("device serial number", settings.deviceSerialNumber);
    add("country", settings.countryCode);
    add("tenant", settings.tenant);
    add("privacy statement", settings.privacyAddresses.privacy);
    add("warranty", settings.privacyAddresses.warranty);
    add("telemetry statement", settings.privacyAddresses.telemetry);
    return text;
}

constexpr const char* kColumns = "{:<24}  {:<20}  {:>10}  {:<20}  {:<20}  {}\n";

std::string stepText(const std::string& before, const std::string& after) {
    return before == after ? after : fmt::format("{} -> {}", before, after);
}

std::string changeText(const ConsentChange& change) {
    return fmt::format(fmt::runtime(kColumns), utcText(change.received),
                       visibleText(change.application), change.peerUser,
                       stepText(change.before.marketing, change.after.marketing),
                       stepText(change.before.support, change.after.support),
                       stepText(change.before.productEnhancement, change.after.productEnhancement));
}

std::string changeJson(const ConsentChange& change) {
    const std::string line = JsonObjectText()
                                 .text("timestamp", utcText(change.received))
                                 .text("application", change.application)
                                 .json("uid", std::to_string(change.peerUser))
                                 .text("consent_source", change.source)
                                 .json("before", permissionsText(change.before))
                                 .json("after", permissionsText(change.after))
                                 .finish();
    return visibleText(line) + "\n";
}

}  // namespace

void showConsent(StoreReader& reader, const Settings& settings, ListingForm form,
                 const Output& output) {
    const auto given = reader.consent();
    output(form == ListingForm::kJson ? visibleText(consentRecordText(settings, given)) + "\n"
                                      : recordText(settings, given));
}

void listConsentChanges(StoreReader& reader, ListingForm form, const Output& output) {
    if (form == ListingForm::kText) {
        output(fmt::format(fmt::runtime(kColumns), "TIME", "APPLICATION", "UID", "MARKETING",
                           "SUPPORT", "PRODUCT ENHANCEMENT"));
    }
    reader.forEachConsentChange([form, &output](const ConsentChange& change) {
        output(form == ListingForm::kJson ? changeJson(change) : changeText(change));
    });
}

}  // namespace Orvel::Service
