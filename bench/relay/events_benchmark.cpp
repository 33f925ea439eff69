#include <benchmark/benchmark.h>

#include <exception>
#include <span>
#include <vector>

#include "bench/relay/raw_exchange.h"
#include "bench/relay/relay_service.h"
#include "bench/support/events.h"
#include "orvel/analytics/session.h"

// 1,000 events collected and sent, against putting the same batch together from pieces that are
// ready, and sending it over a raw socket.

namespace Orvel::Bench {
namespace {

using Analytics::Emitters::AnalyticsResult;

constexpr int kEvents = 1000;
constexpr WideStringView kTarget = ORVEL_TEXT("TA");
constexpr WideStringView kHandshake = ORVEL_TEXT("Benchmark::CONNECT_APP::");

void collectAndSend(benchmark::State& state) {
    const ServiceProcess service(serveRelay);
    useService(service);
    AnalyticsSession session(WideString(kApplication), ORVEL_TEXT("1.0"));
    PageView pageView;
    if (session.RegisterDataClass(&pageView) != AnalyticsResult::Success) {
        state.SkipWithError("the data class was refused");
    }
    for ([[maybe_unused]] auto iteration : state) {
        bool good = true;
        for (int event = 0; event < kEvents; ++event) {
            good =
                session.CollectEvent(&pageView, plainEvent()) == AnalyticsResult::Success && good;
        }
        if (!good || session.SendEvents() != AnalyticsResult::Success) {
            state.SkipWithError("events were refused");
            break;
        }
    }
}

// A frame's header and the command's target, in front of the command.
constexpr std::size_t kFrameUnits = kHeader / sizeof(WideChar) + kTarget.size();

/// The frame of a command that sends a batch, in memory that it keeps.
class BatchFrame {
  public:
    BatchFrame() : event_(plainEvent()) { event_.pop_back(); }

    std::span<const std::byte> write() {
        frame_.assign(kFrameUnits, WideChar());
        frame_.append(kBegin);
        for (int event = 0; event < kEvents; ++event) {
            frame_.append(kRecordBegin).append(event_).append(kRecordEnd);
        }
        // There is no comma behind the last event.
        frame_.pop_back();
        frame_.append(kEnd);
        return std::as_bytes(std::span(frame_));
    }

  private:
    static constexpr WideStringView kBegin = ORVEL_TEXT("Benchmark::COLLECT_DATACLASS::")
        ORVEL_TEXT(R"({"events":[{"appsession":{"V":"1.0","DT":"20261121T120000",)")
            ORVEL_TEXT(R"("1":"Benchmark","2":"1.0",)")
                ORVEL_TEXT(R"("3":"{0f8fad5b-d9cb-469f-a165-70867728950e}","4":0,)")
                    ORVEL_TEXT(R"("5":"{7c9e6679-7425-40de-944b-e07fc1f90ae7}",)")
                        ORVEL_TEXT(R"("6":"Debian GNU/Linux 12","7":"Production"},"data":[)");
    static constexpr WideStringView kRecordBegin = ORVEL_TEXT(R"({"PageView":)");
    static constexpr WideStringView kRecordEnd =
        ORVEL_TEXT(R"(,"DT":"20261121T120000","V":"1.0"}},)");
    static constexpr WideStringView kEnd = ORVEL_TEXT("]}]}");

    WideString event_;
    WideString frame_;
};

Exchange command(std::size_t units, WideStringView reply) {
    return {units * sizeof(WideChar), kHeader + reply.size() * sizeof(WideChar)};
}

void writeAndSendRaw(benchmark::State& state) {
    BatchFrame batch;
    const Exchange handshake = command(kFrameUnits + kHandshake.size(), kAcknowledged);
    const Exchange report = command(batch.write().size() / sizeof(WideChar), kSuccess);
    const ServiceProcess service(rawService({kGreeting, handshake, report}));
    const std::vector<std::byte> message(handshake.message);
    std::vector<std::byte> answer(report.answer);
    const std::filesystem::path socket = service.socket();
    try {
        for ([[maybe_unused]] auto iteration : state) {
            const std::span<const std::byte> frame = batch.write();
            const RawConnection connection(socket);
            connection.exchange(std::span(message).first(kGreeting.message),
                                std::span(answer).first(kGreeting.answer));
            connection.exchange(message, std::span(answer).first(handshake.answer));
            connection.exchange(frame, answer);
        }
    } catch (const std::exception& failure) {
        state.SkipWithError(failure.what());
    }
}

BENCHMARK(collectAndSend)->Name("thousand_events/case")->UseRealTime();
BENCHMARK(writeAndSendRaw)->Name("thousand_events/floor")->UseRealTime();

}  // namespace
}  // namespace Orvel::Bench
