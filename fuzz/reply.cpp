/// What the service replies to each of the five commands. A line `OPERATION OPEN HANDSHAKE COMMAND`
/// with a letter and three statuses, a line with the handshake's reply (none for the right one),
/// and the command's reply.

#include <charconv>
#include <optional>
#include <string>

#include "channel/service_error.h"
#include "fuzz/support/allocations.h"
#include "fuzz/support/consent_model.h"
#include "fuzz/support/fields.h"
#include "fuzz/support/input.h"
#include "fuzz/support/require.h"
#include "orvel/analytics/testing/scripted_endpoint.h"
#include "support/event_model.h"
#include "support/session_access.h"

namespace Orvel::Fuzz {
namespace {

using Analytics::Emitters::AnalyticsResult;
using Analytics::Session::SessionAccess;
using TestSupport::PlainJson;
/// Nothing where the JSON layer's error is raised.
using Result = std::optional<AnalyticsResult>;

struct Exchange {
    char operation = 'r';
    std::int32_t open = 0;
    std::int32_t handshake = 0;
    std::int32_t command = 0;
    WideString acknowledgement;
    WideString reply;

    [[nodiscard]] bool isOpen() const { return open == 0; }
    [[nodiscard]] bool isGreeted() const {
        return isOpen() && handshake == 0 && acknowledgement == u"MyApp::ACK::";
    }
};

std::int32_t takeNumber(Input& input) {
    const std::string_view digits = input.until(' ');
    std::int32_t number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return number;
}

Exchange readExchange(Input& input) {
    Input settings(input.line());
    Exchange exchange;
    const std::string_view operation = settings.until(' ');
    const bool isKnown =
        operation.size() == 1 && std::string_view("cgsd").find(operation) != std::string_view::npos;
    exchange.operation = isKnown ? operation.front() : 'r';
    exchange.open = takeNumber(settings);
    exchange.handshake = takeNumber(settings);
    exchange.command = takeNumber(settings);
    exchange.acknowledgement = wideOf(input.line());
    if (exchange.acknowledgement.empty()) {
        exchange.acknowledgement = u"MyApp::ACK::";
    }
    exchange.reply = wideOf(input.rest());
    return exchange;
}

/// What follows the fourth colon; all where there are fewer.
WideString withoutFraming(const WideString& reply) {
    int colons = 0;
    for (std::size_t at = 0; at < reply.size(); ++at) {
        colons += reply[at] == ':' ? 1 : 0;
        if (colons == 4) {
            return reply.substr(at + 1);
        }
    }
    return reply;
}

/// The error that the last of the results names.
AnalyticsResult errorOf(const PlainJson& results) {
    std::string gathered;
    std::string error;
    for (const PlainJson& element : results.values) {
        error = TestSupport::plainText(element);
        const std::size_t colon = error.find(':');
        gathered += error.substr(0, colon == std::string::npos ? colon : colon + 1);
        const std::size_t at = colon == std::string::npos ? colon : error.find(gathered);
        if (at != std::string::npos) {
            error.erase(at, gathered.size());
        }
    }
    if (error.empty()) {
        return AnalyticsResult::GenericError;
    }
    error.pop_back();
    return Analytics::Channel::mapServiceErrorName(toWide(error));
}

Result parsedByModel(const WideString& reply) {
    if (reply.find(u"ErrorCode") == WideString::npos) {
        return AnalyticsResult::Success;
    }
    const auto text = TestSupport::wellFormed(withoutFraming(reply));
    const auto json =
        text ? TestSupport::readPlainJson(*text, TestSupport::kDeepestEvent) : std::nullopt;
    const PlainJson* const results =
        json && json->kind == PlainJson::Kind::kObject ? json->member("Results") : nullptr;
    if (results == nullptr || results->kind != PlainJson::Kind::kArray) {
        return std::nullopt;
    }
    return errorOf(*results);
}

/// What the two operations with a payload hand on to the reader.
WideString payloadOf(const Exchange& exchange) {
    const bool getsConsent = exchange.operation == 'g';
    const bool hasPayload = exchange.isGreeted() && (getsConsent || exchange.command == 0);
    WideString payload = hasPayload ? exchange.reply : WideString();
    const WideString mark = getsConsent ? u"::CONSENT_RECORD::" : u"MyApp::PRIVACY_DOCUMENTS::";
    const std::size_t at = payload.find(mark);
    if (at != WideString::npos) {
        payload.erase(getsConsent ? 0 : at, getsConsent ? at + mark.size() : mark.size());
    }
    return payload;
}

Result statusByModel(const Exchange& exchange) {
    if (!exchange.isOpen()) {
        const bool tells = exchange.operation == 'r';
        return tells && exchange.open == 1722 ? AnalyticsResult::ServiceUnavailable
               : tells && exchange.open == 5  ? AnalyticsResult::AccessDenied
                                              : AnalyticsResult::GenericError;
    }
    if (!exchange.isGreeted()) {
        return exchange.operation == 'c' ? AnalyticsResult::GenericError
                                         : parsedByModel(exchange.acknowledgement);
    }
    if (exchange.operation == 'd') {
        return exchange.command == 0 ? AnalyticsResult::Success : parsedByModel(exchange.reply);
    }
    return exchange.command == 0 ? parsedByModel(exchange.reply) : AnalyticsResult::GenericError;
}

Result expectedOf(const Exchange& exchange) {
    const Result status = statusByModel(exchange);
    if (exchange.operation == 'g' && status == AnalyticsResult::Success) {
        ConsentObject consent;
        return readConsentByModel(payloadOf(exchange), consent) ? status : std::nullopt;
    }
    if (exchange.operation == 'd' && status) {
        PrivacyDocuments documents;
        return readDocumentsByModel(payloadOf(exchange), documents) ? status : std::nullopt;
    }
    return status;
}

AnalyticsResult getConsent(AnalyticsSession& session) {
    ConsentObject consent;
    consent.tenant = u"untouched";
    consent.processData = consent.managed = false;
    const ConsentObject before = consent;
    try {
        const AnalyticsResult result = session.GetConsent(&consent);
        require(result == AnalyticsResult::Success || areSame(consent, before),
                "a failure leaves the consent record alone");
        return result;
    } catch (const Analytics::hresult_error&) {
        require(areSame(consent, before), "an error leaves the consent record alone");
        throw;
    }
}

AnalyticsResult operate(AnalyticsSession& session, char operation) {
    FieldsClass dataClass;
    PrivacyDocuments documents;
    switch (operation) {
        case 'c':
            return session.SendEvents();
        case 'g':
            return getConsent(session);
        case 's':
            return session.SetConsent({});
        case 'd':
            return session.GetDocumentURLs(&documents);
        default:
            return session.RegisterDataClass(&dataClass);
    }
}

Result perform(AnalyticsSession& session, char operation, std::size_t size) {
    const AllocationBound bound(60'000, 400, size);
    try {
        return operate(session, operation);
    } catch (const Analytics::hresult_error&) {
        return std::nullopt;
    }
}

}  // namespace
}  // namespace Orvel::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Orvel::Fuzz;
    Input input(data, size);
    const Exchange exchange = readExchange(input);
    Orvel::Analytics::Testing::ScriptedEndpoint script;
    script.openStatus = exchange.open;
    script.executions = {{exchange.handshake, exchange.acknowledgement},
                         {exchange.command, exchange.reply}};
    static const AnalyticsSession begun(u"MyApp", u"1.2");
    AnalyticsSession session(begun);
    FieldsClass dataClass;
    session.CollectEvent(&dataClass, u"{\"a\":1}");

    const auto result = perform(session, exchange.operation, size);
    require(result == expectedOf(exchange), "the result is that of the model");
    require(script.closed == (exchange.isOpen() ? 1 : 0), "what was opened is closed");
    require(script.clientsAlive == 0, "the client is released");
    const bool sent = exchange.operation == 'c';
    require(SessionAccess::eventQueue(session).empty() == sent, "only sending empties the queue");
    const auto identifier = [](AnalyticsSession& of) -> const Orvel::WideString& {
        return SessionAccess::appSession(of).sessionId;
    };
    AnalyticsSession before(begun);
    require((identifier(session) != identifier(before)) == sent, "only sending renews the session");
    return 0;
}
