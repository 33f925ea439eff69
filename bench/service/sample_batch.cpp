#include "bench/service/sample_batch.h"

#include <list>

#include "bench/support/events.h"
#include "bench/support/records.h"
#include "channel/tokens.h"
#include "dataclass/registration.h"
#include "events/event_batch.h"

namespace Orvel::Bench {
namespace {

namespace Token = Analytics::Channel::Token;

constexpr WideStringView kApplication = ORVEL_TEXT("Benchmark");

Analytics::Session::AppSession sampleSession() {
    Analytics::Session::AppSession session;
    session.appName = kApplication;
    session.appVersion = ORVEL_TEXT("1.0");
    session.versionTag = ORVEL_TEXT("1.0");
    session.sessionId = ORVEL_TEXT("0b9ed7c6-6f0a-4d0e-9f39-6f2d1a4e8c11");
    session.userId = ORVEL_TEXT("5d1f1c57-2f4b-4f0e-8a4e-0c1d7b9a6e23");
    session.deviceId = ORVEL_TEXT("Linux 6.1.0.0");
    session.environment = ORVEL_TEXT("Production");
    session.startTime = 1'795'000'000;
    return session;
}

WideString framed(WideStringView token, WideStringView payload = {}) {
    WideString command(kApplication);
    command.append(token).append(payload);
    return command;
}

WideString registrationText() {
    PageView pageView;
    return Analytics::DataClass::registrationDocument(pageView);
}

/// The same ones, of the same second, for what is sent and what is stored.
const std::list<WideString>& records() {
    static const std::list<WideString> records = plainRecords(kEventsOfABatch);
    return records;
}

/// A record is an object with one member, which is named for the data class.
std::string valuesOf(const WideString& record) {
    const std::string text = toUtf8(record);
    const std::size_t begin = text.find('{', 1);
    return text.substr(begin, text.size() - 1 - begin);
}

}  // namespace

SampleCommands::SampleCommands()
    : handshake(framed(Token::kConnectApp)),
      acknowledgement(framed(Token::kAck)),
      registration(framed(Token::kRegisterDataclass, registrationText())),
      collection(framed(Token::kCollectDataclass,
                        Analytics::Events::eventBatch(sampleSession(), records()))),
      success(framed(Token::kSuccess)) {}

SampleRows::SampleRows() : session(sampleSession()), version("1.0"), time("20261121T120000") {
    for (const WideString& record : records()) {
        contents.push_back(valuesOf(record));
    }
}

}  // namespace Orvel::Bench
