#ifndef ORVEL_FAULTS_REPORTER_H
#define ORVEL_FAULTS_REPORTER_H

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "faults/ledger.h"
#include "orvel/relay/rpc_client.h"

namespace Orvel::Faults {

/// An application that reports numbered events, and believes nothing but replies. It finds the
/// service as ORVEL_RPC_DIRECTORY says. One thread at a time.
class Reporter {
  public:
    /// Nothing is connected yet; until `open` nothing can be said.
    Reporter() = default;
    ~Reporter();
    Reporter(const Reporter&) = delete;
    Reporter& operator=(const Reporter&) = delete;

    /// Connects anew. @return the relay's status.
    std::int32_t open();
    /// Connects and introduces itself. @return whether that was granted.
    bool greet();
    /// Does the same, and registers the data class. @return whether all of it was granted.
    bool connect();
    /// Ends the connection.
    void close();

    /// Sends a batch of so many events, and writes down what came of it.
    /// @return whether the connection can be used further.
    bool report(Ledger& ledger, std::int32_t count);

    /// Sends a command after the application's name.
    /// @return the reply without that name, or what went wrong.
    std::string say(const std::string& command);

  private:
    std::shared_ptr<Relay::Client::Core::RpcClient> client_;
};

/// Several reporters, each on a thread of its own, that report for as long as their connections
/// last or until they are told to stop.
class Crowd {
  public:
    /// @param seed for the sizes of their batches.
    Crowd(Ledger& ledger, int reporters, std::uint64_t seed);
    Crowd(const Crowd&) = delete;
    Crowd& operator=(const Crowd&) = delete;
    ~Crowd();

    /// Waits until so many further events were acknowledged, or until no connection is left.
    void waitFor(std::uint64_t acknowledged);

    /// Returns when every reporter has ended. @param stop whether they are to end by themselves.
    void finish(bool stop);

  private:
    void work(std::uint64_t seed);

    Ledger& ledger_;
    const std::uint64_t before_;
    std::atomic<bool> stopped_ = false;
    std::mutex mutex_;
    std::condition_variable progress_;
    int working_;
    std::vector<std::thread> threads_;
};

}  // namespace Orvel::Faults

#endif
