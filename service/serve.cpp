#include "service/serve.h"

#include <chrono>
#include <exception>
#include <memory>

#include "orvel/relay/server.h"
#include "service/conversation.h"
#include "service/data_folder.h"
#include "service/housekeeping.h"
#include "service/process.h"
#include "service/settings_file.h"
#include "service/store.h"

namespace Orvel::Service {

namespace {

Relay::Server::Options optionsWithin(const Limits& limits) {
    Relay::Server::Options options;
    options.largestBody = static_cast<std::uint32_t>(limits.commandBytes);
    options.connections = static_cast<std::size_t>(limits.connections);
    options.idleDeadline = std::chrono::seconds{limits.idleSeconds};
    options.frameDeadline = std::chrono::seconds{limits.stalledSeconds};
    options.wholeFrameDeadline = std::chrono::seconds{limits.transferSeconds};
    return options;
}

void runServer(const std::filesystem::path& dataFolder,
               const std::optional<std::filesystem::path>& settingsFile, const std::string& version,
               Log& log) {
    log.write("started", {{"version", version},
                          {"data", dataFolder.string()},
                          {"settings", settingsFile ? settingsFile->string() : ""}});
    const Settings settings = settingsFile ? readSettings(*settingsFile) : Settings{};
    const DataFolder folder(dataFolder);
    Store store(folder.database(), systemTime, settings.limits);
    const auto socket = Relay::Server::endpointSocket(kEndpoint);
    Relay::Server::Server server(
        socket,
        [&](const Relay::Server::Peer& peer) {
            return std::make_unique<Conversation>(store, settings, log, peer);
        },
        optionsWithin(settings.limits));
    server.stopOnSignals();
    log.write("listening", {{"endpoint", kEndpoint}, {"socket", socket.string()}});
    {
        const Housekeeping housekeeping(store, log);
        server.run();
    }
    ignoreFurtherSignals();
}

}  // namespace

bool serve(const std::optional<std::filesystem::path>& dataFolder,
           const std::optional<std::filesystem::path>& settingsFile, const std::string& version,
           Log& log) {
    surviveFailingWrites();
    try {
        runServer(dataFolder ? *dataFolder : defaultDataFolder(),
                  settingsFile ? settingsFile : defaultSettingsFile(runsAsRoot()), version, log);
    } catch (const std::exception& error) {
        log.write("failed", {{"reason", error.what()}});
        return false;
    }
    log.write("stopped");
    return true;
}

}  // namespace Orvel::Service
