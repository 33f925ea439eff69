#include "faults/reporter.h"

#include <random>

namespace Orvel::Faults {

namespace {

constexpr const char* kName = "Reporter";
constexpr const char* kRegistration =
    R"(::REGISTER_DATACLASS::{"name":"Numbered","id":"Numbered","version":"1","fields":[)"
    R"({"id":"number","name":"Number","nullable":"false","type":"integer"}]})";
constexpr const char* kBatchBegin =
    R"(::COLLECT_DATACLASS::{"events":[{"appsession":{"V":"1","DT":"20240131T235959",)"
    R"("1":"Reporter","2":"2","3":"S","4":0,"5":"U","6":"D","7":"Production"},"data":[)";
constexpr const char* kBatchEnd = "]}]}";
constexpr std::int32_t kLargestBatch = 20;

Relay::WideString wide(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }

std::string batchCommand(std::int32_t first, std::int32_t count) {
    std::string text = kBatchBegin;
    for (std::int32_t number = first; number < first + count; ++number) {
        text += number == first ? "" : ",";
        text += R"({"Numbered":{"number":)" + std::to_string(number) +
                R"(,"DT":"20240131T235959","V":"1"}})";
    }
    return text + kBatchEnd;
}

}  // namespace

Reporter::~Reporter() { close(); }

std::int32_t Reporter::open() {
    close();
    client_ = Relay::Client::Native::RpcClient::GetClientForEndpoint(
        ORVEL_RELAY_TEXT("OrvelAnalyticsRpcEndpoint"));
    return client_->OpenConnection({});
}

bool Reporter::greet() { return open() == 0 && say("::CONNECT_APP::") == "::ACK::"; }

bool Reporter::connect() { return greet() && say(kRegistration) == "::SUCCESS::"; }

void Reporter::close() {
    if (client_) {
        client_->CloseConnection();
        client_.reset();
    }
}

std::string Reporter::say(const std::string& command) {
    Relay::WideString reply;
    const auto status =
        client_->ExecuteCommand(ORVEL_RELAY_TEXT("TA"), 0, wide(kName + command), reply);
    if (status != 0) {
        return "status " + std::to_string(status);
    }
    std::string text;
    for (const Relay::WideChar unit : reply) {
        text += static_cast<char>(unit);
    }
    return text.starts_with(kName) ? text.substr(std::string(kName).size()) : text;
}

bool Reporter::report(Ledger& ledger, std::int32_t count) {
    SentBatch batch{ledger.takeNumbers(count), count, Told::kNothing};
    const std::string reply = say(batchCommand(batch.first, count));
    if (reply == "::SUCCESS::") {
        batch.told = Told::kAcknowledged;
    } else if (!reply.starts_with("status ")) {
        batch.told = Told::kRefused;
    }
    ledger.record(batch);
    return batch.told != Told::kNothing;
}

Crowd::Crowd(Ledger& ledger, int reporters, std::uint64_t seed)
    : ledger_(ledger), before_(ledger.acknowledged()), working_(reporters) {
    std::mt19937_64 seeds(seed);
    for (int i = 0; i < reporters; ++i) {
        threads_.emplace_back([this, own = seeds()] { work(own); });
    }
}

Crowd::~Crowd() { finish(true); }

void Crowd::work(std::uint64_t seed) {
    std::mt19937_64 random(seed);
    std::uniform_int_distribution<std::int32_t> size(1, kLargestBatch);
    Reporter reporter;
    bool goesOn = reporter.connect();
    while (goesOn && !stopped_) {
        goesOn = reporter.report(ledger_, size(random));
        const std::scoped_lock lock(mutex_);
        progress_.notify_all();
    }
    const std::scoped_lock lock(mutex_);
    --working_;
    progress_.notify_all();
}

void Crowd::waitFor(std::uint64_t acknowledged) {
    std::unique_lock lock(mutex_);
    progress_.wait(lock, [this, acknowledged] {
        return ledger_.acknowledged() >= before_ + acknowledged || working_ == 0;
    });
}

void Crowd::finish(bool stop) {
    stopped_ = stop;
    for (std::thread& thread : threads_) {
        thread.join();
    }
    threads_.clear();
}

}  // namespace Orvel::Faults
