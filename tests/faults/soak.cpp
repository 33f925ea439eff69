#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "faults/ledger.h"
#include "faults/reporter.h"
#include "support/fault_table.h"
#include "support/service_process.h"

/// Kills the service at random moments while eight clients send, starts it again, and holds what is
/// stored against what the clients were told.
///
///     orvel-soak SERVICE rounds|minutes NUMBER [SEED]

namespace Orvel::Faults {
namespace {

using Support::Fault;
using Support::Process;
using Support::ServiceProcess;

constexpr int kReporters = 8;
/// After so many rounds the service gets a new data folder, so that a long soak does not spend its
/// time on reading what it has stored.
constexpr int kRoundsOfAFolder = 20;
constexpr std::uint64_t kMostBeforeAKill = 300;
constexpr std::int64_t kLongestDelay = 5'000;
constexpr std::int64_t kLongestStart = 15'000;

Fault killed{"the service is killed while eight clients send"};
Fault killedAtStart{"the service is killed while it starts"};

using Random = std::mt19937_64;

/// The moment of a kill must not depend on that of a reply, which clients and service share.
void waitAtMost(std::int64_t microseconds, Random& random) {
    std::uniform_int_distribution<std::int64_t> delay(0, microseconds);
    std::this_thread::sleep_for(std::chrono::microseconds(delay(random)));
}

/// Starts the service and kills it at once, or as soon as it listens, or in between.
void killAtStart(const ServiceProcess& service, Random& random) {
    Process process(service.program(),
                    {"serve", "--data", service.dataFolder().string(), "--settings",
                     service.settingsFile().string()},
                    {"ORVEL_RPC_DIRECTORY=" + service.endpointFolder().string()});
    waitAtMost(kLongestStart, random);
    process.signal(SIGKILL);
    process.wait();
    killedAtStart.inject();
}

/// One data folder, through its rounds.
class Campaign {
  public:
    Campaign(const std::string& program, Random& random) : service_(program), random_(random) {
        service_.start();
        service_.useEndpoint();
    }

    /// @throws std::runtime_error when a promise was broken, or nothing was put to the test.
    void round() {
        const std::uint64_t before = ledger_.acknowledged();
        killWhileClientsSend();
        if (ledger_.acknowledged() == before) {
            throw std::runtime_error("nothing was acknowledged before the kill");
        }
        const bool alsoAtStart = random_() % 2 == 0;
        if (alsoAtStart) {
            killAtStart(service_, random_);
        }
        service_.start();
        check();
        killed.observe();
        killedAtStart.observe(alsoAtStart ? 1 : 0);
    }

    const Account& account() const { return account_; }

  private:
    void killWhileClientsSend() {
        Crowd crowd(ledger_, kReporters, random_());
        std::uniform_int_distribution<std::uint64_t> events(1, kMostBeforeAKill);
        crowd.waitFor(events(random_));
        waitAtMost(kLongestDelay, random_);
        service_.kill();
        killed.inject();
        crowd.finish(false);
    }

    void check() {
        const auto database = service_.dataFolder() / "analytics.db";
        account_ = ledger_.account(storedNumbers(database));
        if (!account_.isKept()) {
            throw std::runtime_error("a promise was broken: " + account_.text());
        }
        const std::string integrity = integrityOf(database);
        if (integrity != "ok") {
            throw std::runtime_error("the database is not sound: " + integrity);
        }
    }

    ServiceProcess service_;
    Random& random_;
    Ledger ledger_;
    Account account_;
};

/// Rounds until `goesOn` says no more.
template <typename Condition>
Account soak(const std::string& program, Random& random, Condition goesOn) {
    Account all;
    while (goesOn()) {
        Campaign campaign(program, random);
        for (int round = 0; round < kRoundsOfAFolder && goesOn(); ++round) {
            campaign.round();
        }
        all += campaign.account();
    }
    return all;
}

Account soakForRounds(const std::string& program, Random& random, std::uint64_t rounds) {
    return soak(program, random, [rounds] { return killed.injected() < rounds; });
}

Account soakForMinutes(const std::string& program, Random& random, std::uint64_t minutes) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::minutes(minutes);
    return soak(program, random, [end] { return Clock::now() < end; });
}

int run(const std::vector<std::string>& arguments) {
    if (arguments.size() < 4 || (arguments[2] != "rounds" && arguments[2] != "minutes")) {
        std::cerr << "usage: orvel-soak SERVICE rounds|minutes NUMBER [SEED]\n";
        return 2;
    }
    const std::uint64_t number = std::stoull(arguments[3]);
    const std::uint64_t seed =
        arguments.size() > 4 ? std::stoull(arguments[4]) : std::random_device{}();
    std::cout << "seed " << seed << std::endl;
    Random random(seed);
    const Account account = arguments[2] == "rounds" ? soakForRounds(arguments[1], random, number)
                                                     : soakForMinutes(arguments[1], random, number);
    std::cout << "events: " << account.text() << '\n' << Support::faultTable();
    if (!Support::everyFaultCounted()) {
        throw std::runtime_error("a fault was never injected, or its effect never observed");
    }
    return 0;
}

}  // namespace
}  // namespace Orvel::Faults

int main(int argc, char** argv) {
    try {
        return Orvel::Faults::run({argv, argv + argc});
    } catch (const std::exception& error) {
        std::cerr << "orvel-soak: " << error.what() << '\n' << Orvel::Support::faultTable();
        return 1;
    }
}
