#include "service/serve.h"

#include <exception>
#include <memory>

#include "orvel/relay/server.h"
#include "service/conversation.h"
#include "service/data_folder.h"
#include "service/process.h"
#include "service/settings_file.h"
#include "service/store.h"

namespace Orvel::Service {

namespace {

void runServer(const std::filesystem::path& dataFolder,
               const std::optional<std::filesystem::path>& settingsFile, const std::string& version,
               Log& log) {
    log.write("started", {{"version", version},
                          {"data", dataFolder.string()},
                          {"settings", settingsFile ? settingsFile->string() : ""}});
    const Settings settings = settingsFile ? readSettings(*settingsFile) : Settings{};
    const DataFolder folder(dataFolder);
    Store store(folder.database(), systemTime);
    const auto socket = Relay::Server::endpointSocket(kEndpoint);
    Relay::Server::Server server(socket, [&](const Relay::Server::Peer& peer) {
        return std::make_unique<Conversation>(store, settings, log, peer);
    });
    server.stopOnSignals();
    log.write("listening", {{"endpoint", kEndpoint}, {"socket", socket.string()}});
    server.run();
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
