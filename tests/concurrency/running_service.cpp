#include "concurrency/running_service.h"

#include <stdlib.h>

#include <latch>

#include "service/conversation.h"
#include "service/serve.h"
#include "service/store_reader.h"

namespace Orvel::TestSupport {
namespace {

std::filesystem::path database(const Support::TemporaryFolder& folder) {
    return folder.path() / "analytics.db";
}

}  // namespace

RunningService::RunningService()
    : log_([this](std::string_view) { ++complaints_; }, Service::systemTime),
      store_(std::make_unique<Service::Store>(database(folder_), Service::systemTime)) {
    ::setenv("ORVEL_RPC_DIRECTORY", folder_.path().c_str(), 1);
    const auto converse = [this](const Relay::Server::Peer& peer) {
        return std::make_unique<Service::Conversation>(*store_, settings_, log_, peer);
    };
    server_ = std::make_unique<Relay::Server::Server>(
        Relay::Server::endpointSocket(Service::kEndpoint), converse);
    thread_ = std::thread([this] { server_->run(); });
}

RunningService::~RunningService() {
    stop();
    ::unsetenv("ORVEL_RPC_DIRECTORY");
}

void RunningService::stop() {
    if (thread_.joinable()) {
        server_->stop();
        thread_.join();
    }
}

std::vector<std::string> RunningService::storedEvents() const {
    std::vector<std::string> events;
    Service::EventFilter good;
    good.kind = Service::EventFilter::Kind::kGood;
    Service::StoreReader(database(folder_)).forEachEvent(good, [&](const Service::EventRow& row) {
        events.emplace_back(row.content);
    });
    return events;
}

void onThreads(int count, const std::function<void(int)>& work) {
    std::latch start(count);
    std::vector<std::thread> threads;
    threads.reserve(static_cast<std::size_t>(count));
    for (int number = 0; number < count; ++number) {
        threads.emplace_back([&, number] {
            start.arrive_and_wait();
            work(number);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace Orvel::TestSupport
