#include "bench/service/running_service.h"

#include <stdlib.h>

#include <csignal>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

namespace Orvel::Bench {

DiskFolder::DiskFolder() {
    std::string name = ORVEL_DISK_FOLDER "/data-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("cannot make " + name);
    }
    path_ = name;
}

DiskFolder::~DiskFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

RunningService::RunningService() {
    // Whatever settings this machine has: the defaults, but for limits that a fast machine reaches.
    const std::filesystem::path settings = endpoint_.path() / "settings.toml";
    std::ofstream(settings) << "[limits]\nevents_per_day = 0\nstored_bytes = 0\n";
    ::setenv("ORVEL_RPC_DIRECTORY", endpoint_.path().c_str(), 1);
    process_ = std::make_unique<Support::Process>(
        ORVEL_ANALYTICSD, std::vector<std::string>{"serve", "--data", data_.path().string(),
                                                   "--settings", settings.string()});
    for (std::string line = process_->errorLine();
         line.find(R"("event":"listening")") == std::string::npos; line = process_->errorLine()) {
        if (line.empty()) {
            throw std::runtime_error("the service does not listen");
        }
    }
}

void RunningService::stop() {
    process_->signal(SIGTERM);
    if (process_->wait() != 0) {
        throw std::runtime_error("the service did not end well");
    }
}

ServiceClient::ServiceClient(const SampleCommands& commands)
    : commands_(commands),
      client_(Relay::Client::Native::RpcClient::GetClientForEndpoint(
          ORVEL_TEXT("OrvelAnalyticsRpcEndpoint"))) {
    if (client_->OpenConnection({}) != Relay::Status::kSuccess ||
        !says(commands.handshake, commands.acknowledgement) ||
        !says(commands.registration, commands.success)) {
        throw std::runtime_error("the service does not take the registration");
    }
}

bool ServiceClient::sendBatch() { return says(commands_.collection, commands_.success); }

bool ServiceClient::says(const WideString& command, const WideString& reply) {
    return client_->ExecuteCommand(ORVEL_TEXT("TA"), 0, command, reply_) ==
               Relay::Status::kSuccess &&
           reply_ == reply;
}

}  // namespace Orvel::Bench
