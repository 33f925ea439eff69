#include "service/listing.h"

#include <fmt/format.h>

#include <string>

#include "service/calendar.h"
#include "service/data_class.h"
#include "service/json_object_text.h"
#include "service/visible_text.h"

namespace Orvel::Service {

namespace {

std::string jsonLine(const JsonObjectText& object) {
    return visibleText(singleLine(object.finish())) + "\n";
}

std::string eventJson(const EventRow& event) {
    JsonObjectText line;
    // A text, because few readers of JSON keep all the digits of such a number.
    line.text("id", std::to_string(event.id))
        .text("received", utcText(event.received))
        .text("application", event.application)
        .text("application_version", event.applicationVersion)
        .text("session", event.session)
        .json("session_counter", event.sessionCounter)
        .text("session_started", event.sessionStarted)
        .text("version_tag", event.versionTag)
        .text("user", event.user)
        .text("device", event.device)
        .text("environment", event.environment)
        .json("uid", std::to_string(event.peerUser))
        .optionalText("class", event.className);
    if (event.error.empty()) {
        line.optionalText("version", event.version)
            .text("time", event.time)
            .json("values", event.content);
    } else {
        line.text("error", event.error).text("path", event.path).text("text", event.content);
    }
    return jsonLine(line);
}

constexpr const char* kEventColumns = "{:<24}  {:<20}  {:<20}  {:<15}  {}\n";

std::string eventText(const EventRow& event) {
    std::string content = singleLine(event.content);
    if (!event.error.empty()) {
        content = fmt::format("{} at {}: {}", event.error, event.path, content);
    }
    return fmt::format(fmt::runtime(kEventColumns), utcText(event.received),
                       visibleText(event.application), visibleText(event.className.value_or("-")),
                       event.error.empty() ? event.time : "refused", visibleText(content));
}

std::string classJson(const ClassRow& row) {
    return jsonLine(JsonObjectText()
                        .text("application", row.application)
                        .text("id", row.id)
                        .text("version", row.version)
                        .text("name", row.name)
                        .json("fields", row.fields)
                        .text("first_registered", utcText(row.firstRegistered))
                        .text("last_registered", utcText(row.lastRegistered))
                        .boolean("latest", row.latest));
}

std::string classText(const ClassRow& row) {
    std::string text =
        fmt::format("{} {} ({}) of {}, registered {}{}\n", visibleText(row.id),
                    visibleText(row.version), visibleText(row.name), visibleText(row.application),
                    utcText(row.lastRegistered), row.latest ? ", latest" : "");
    for (const Field& field : readFieldsText(row.fields)) {
        text += fmt::format("    {:<20}  {:<16}  {:<12}  {}\n", visibleText(field.id),
                            visibleText(field.type), "nullable " + visibleText(field.nullable),
                            visibleText(field.name));
    }
    return text;
}

}  // namespace

void listEvents(StoreReader& reader, const EventFilter& filter, ListingForm form,
                const Output& output) {
    if (form == ListingForm::kText) {
        output(fmt::format(fmt::runtime(kEventColumns), "RECEIVED", "APPLICATION", "CLASS", "TIME",
                           "VALUES"));
    }
    reader.forEachEvent(filter, [form, &output](const EventRow& event) {
        output(form == ListingForm::kJson ? eventJson(event) : eventText(event));
    });
}

void listClasses(StoreReader& reader, ListingForm form, const Output& output) {
    reader.forEachClass([form, &output](const ClassRow& row) {
        output(form == ListingForm::kJson ? classJson(row) : classText(row));
    });
}

}  // namespace Orvel::Service
