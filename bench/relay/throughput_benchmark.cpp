#include <benchmark/benchmark.h>

#include <exception>
#include <memory>
#include <utility>
#include <vector>

#include "bench/relay/raw_exchange.h"
#include "bench/relay/relay_service.h"

// One command of 100 MB. It is handed over on both sides: the client gives its text away, and the
// server makes one that the conversation may keep. So the floor, too, has memory on both sides that
// is given back, which takes the larger part of its time; but its receiver knows the length and
// takes all of it at once.

namespace Orvel::Bench {
namespace {

constexpr std::size_t kCommandBytes = 100'000'000;

void transfer(benchmark::State& state) {
    const ServiceProcess service(serveRelay);
    const auto client = makeClient(service);
    const WideString text(kCommandBytes / sizeof(WideChar), ORVEL_TEXT('x'));
    WideString reply;
    for ([[maybe_unused]] auto iteration : state) {
        state.PauseTiming();
        WideString command = text;
        state.ResumeTiming();
        if (client->OpenConnection({}) != Relay::Status::kSuccess ||
            client->ExecuteCommand({}, 0, std::move(command), reply) != Relay::Status::kSuccess ||
            client->CloseConnection() != Relay::Status::kSuccess) {
            state.SkipWithError("the command failed");
            break;
        }
    }
}

void transferRaw(benchmark::State& state) {
    const Exchange execution{kHeader + kCommandBytes, kHeader + kSuccess.size() * sizeof(WideChar)};
    const ServiceProcess service(rawService({kGreeting, execution}, Memory::kFresh));
    const std::vector<std::byte> message(execution.message);
    std::vector<std::byte> answer(execution.answer);
    const std::filesystem::path socket = service.socket();
    try {
        for ([[maybe_unused]] auto iteration : state) {
            state.PauseTiming();
            auto given = std::make_unique<std::vector<std::byte>>(message);
            state.ResumeTiming();
            const RawConnection connection(socket);
            connection.exchange(std::span(message).first(kGreeting.message),
                                std::span(answer).first(kGreeting.answer));
            connection.exchange(*given, answer);
            given.reset();
        }
    } catch (const std::exception& failure) {
        state.SkipWithError(failure.what());
    }
}

BENCHMARK(transfer)->Name("relay_throughput/case")->UseRealTime();
BENCHMARK(transferRaw)->Name("relay_throughput/floor")->UseRealTime();

}  // namespace
}  // namespace Orvel::Bench
