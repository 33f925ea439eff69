#include <benchmark/benchmark.h>

#include <array>
#include <exception>
#include <vector>

#include "bench/relay/raw_exchange.h"
#include "bench/relay/relay_service.h"

// One operation over the relay: connect, greet, a command of 1 KB and its reply, close.

namespace Orvel::Bench {
namespace {

constexpr WideStringView kTarget = ORVEL_TEXT("TA");
constexpr std::size_t kCommandBytes = 1024;

void operate(benchmark::State& state) {
    const ServiceProcess service(serveRelay);
    const auto client = makeClient(service);
    const WideString command(kCommandBytes / sizeof(WideChar), ORVEL_TEXT('x'));
    WideString reply;
    for ([[maybe_unused]] auto iteration : state) {
        if (client->OpenConnection({}) != Relay::Status::kSuccess ||
            client->ExecuteCommand(WideString(kTarget), 0, command, reply) !=
                Relay::Status::kSuccess ||
            client->CloseConnection() != Relay::Status::kSuccess) {
            state.SkipWithError("an operation failed");
            break;
        }
    }
}

void operateRaw(benchmark::State& state) {
    const Exchange execution{kHeader + kTarget.size() * sizeof(WideChar) + kCommandBytes,
                             kHeader + kSuccess.size() * sizeof(WideChar)};
    const ServiceProcess service(rawService({kGreeting, execution}));
    const std::vector<std::byte> message(execution.message);
    std::vector<std::byte> answer(execution.answer);
    const std::filesystem::path socket = service.socket();
    try {
        for ([[maybe_unused]] auto iteration : state) {
            const RawConnection connection(socket);
            connection.exchange(std::span(message).first(kGreeting.message),
                                std::span(answer).first(kGreeting.answer));
            connection.exchange(message, answer);
        }
    } catch (const std::exception& failure) {
        state.SkipWithError(failure.what());
    }
}

BENCHMARK(operate)->Name("relay_operation/case")->UseRealTime();
BENCHMARK(operateRaw)->Name("relay_operation/floor")->UseRealTime();

}  // namespace
}  // namespace Orvel::Bench
