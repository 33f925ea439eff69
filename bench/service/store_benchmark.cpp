#include <benchmark/benchmark.h>

#include <atomic>
#include <exception>
#include <memory>
#include <thread>
#include <vector>

#include "bench/service/bare_database.h"
#include "bench/service/running_service.h"
#include "bench/service/sample_batch.h"

// The service storing batches durably, against bare SQLite that inserts the same rows with the same
// settings, a transaction a batch. SQLite has one writer at a time, so that one thread which stores
// one batch after the other is the fastest way to store those of eight clients, too: several would
// do the same work and wait for each other besides. What both measure is the time of one batch.

namespace Orvel::Bench {
namespace {

constexpr int kClients = 8;
constexpr int kBatchesOfAClient = 4;
constexpr int kBatchesOfARound = kClients * kBatchesOfAClient;

void checkStored(benchmark::State& state, const std::filesystem::path& database,
                 const SampleRows& rows) {
    if (!state.error_occurred() && !holdsBatches(database, rows, state.iterations())) {
        state.SkipWithError("not every event was stored as it was sent");
    }
}

void oneClient(benchmark::State& state) {
    const SampleCommands commands;
    RunningService service;
    ServiceClient client(commands);
    for ([[maybe_unused]] auto iteration : state) {
        if (!client.sendBatch()) {
            state.SkipWithError("a batch was not acknowledged");
            break;
        }
    }
    service.stop();
    checkStored(state, service.database(), SampleRows());
}

using Clients = std::vector<ServiceClient>;

/// Every client sends its batches, all at the same time.
bool sendRound(Clients& clients) {
    std::atomic<bool> good = true;
    std::vector<std::jthread> threads;
    for (ServiceClient& client : clients) {
        threads.emplace_back([&client, &good] {
            for (int batch = 0; batch < kBatchesOfAClient; ++batch) {
                good = client.sendBatch() && good;
            }
        });
    }
    threads.clear();
    return good;
}

void eightClients(benchmark::State& state) {
    const SampleCommands commands;
    RunningService service;
    Clients clients;
    for (int client = 0; client < kClients; ++client) {
        clients.emplace_back(commands);
    }
    while (state.KeepRunningBatch(kBatchesOfARound)) {
        if (!sendRound(clients)) {
            state.SkipWithError("a batch was not acknowledged");
            break;
        }
    }
    service.stop();
    checkStored(state, service.database(), SampleRows());
}

void bareDatabase(benchmark::State& state) {
    const SampleRows rows;
    const DiskFolder folder;
    const std::filesystem::path file = folder.path() / "analytics.db";
    {
        BareDatabase database(file, rows);
        for ([[maybe_unused]] auto iteration : state) {
            database.storeBatch();
        }
    }
    checkStored(state, file, rows);
}

BENCHMARK(oneClient)->Name("store_one/case")->UseRealTime();
BENCHMARK(bareDatabase)->Name("store_one/floor")->UseRealTime();
BENCHMARK(eightClients)->Name("store_eight/case")->UseRealTime();
BENCHMARK(bareDatabase)->Name("store_eight/floor")->UseRealTime();

}  // namespace
}  // namespace Orvel::Bench
