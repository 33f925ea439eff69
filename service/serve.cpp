#include "service/serve.h"

#include <chrono>
#include <exception>
#include <memory>
#include <string>

#include "orvel/relay/server.h"
#include "service/conversation.h"
#include "service/data_folder.h"
#include "service/housekeeping.h"
#include "service/process.h"
#include "service/service_manager.h"
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

/// What is damaged is kept, so that what can be saved of it can be; the service goes on without it,
/// as it would otherwise lose everything that comes from now on.
std::unique_ptr<Store> openStore(DataFolder& folder, const Limits& limits, Log& log) {
    const auto open = [&folder, &limits] {
        return std::make_unique<Store>(folder.database(), systemTime, limits);
    };
    try {
        return open();
    } catch (const DamagedDatabase& damage) {
        const auto aside = folder.keepDatabaseAside();
        log.write("database_kept_aside", {{"reason", damage.what()}, {"file", aside.string()}});
    } catch (const SqlError& error) {
        throw SqlError("the database " + folder.database().string() +
                       " cannot be used: " + error.what());
    }
    return open();
}

Relay::Server::Options optionsOf(const Settings& settings) {
    Relay::Server::Options options = optionsWithin(settings.limits);
    if (!settings.socketGroup.empty()) {
        options.socketGroup = groupNamed(settings.socketGroup);
    }
    constexpr int kOctal = 8;
    if (!settings.socketMode.empty()) {
        options.socketMode =
            static_cast<std::uint32_t>(std::stoul(settings.socketMode, nullptr, kOctal));
    } else if (options.socketGroup) {
        options.socketMode = 0660;
    } else {
        options.socketMode = runsAsRoot() ? 0666 : 0600;
    }
    return options;
}

void runServer(const std::filesystem::path& dataFolder,
               const std::optional<std::filesystem::path>& settingsFile, const std::string& version,
               Log& log) {
    log.write("started", {{"version", version},
                          {"data", dataFolder.string()},
                          {"settings", settingsFile ? settingsFile->string() : ""}});
    const Settings settings = settingsFile ? readSettings(*settingsFile) : Settings{};
    const Relay::Server::Options options = optionsOf(settings);
    DataFolder folder(dataFolder);
    const auto store = openStore(folder, settings.limits, log);
    const auto converse = [&](const Relay::Server::Peer& peer) {
        return std::make_unique<Conversation>(*store, settings, log, peer);
    };
    const auto handedOver = Relay::Server::takeHandedOverSocket();
    Relay::Server::Server server =
        handedOver
            ? Relay::Server::Server(*handedOver, converse, options)
            : Relay::Server::Server(Relay::Server::endpointSocket(kEndpoint), converse, options);
    server.stopOnSignals();
    log.write("listening", {{"endpoint", kEndpoint}, {"socket", server.socket().string()}});
    tellServiceManager(kReady);
    {
        const Housekeeping housekeeping(*store, log);
        server.run();
    }
    tellServiceManager(kStopping);
    ignoreFurtherSignals();
}

}  // namespace

bool serve(const std::optional<std::filesystem::path>& dataFolder,
           const std::optional<std::filesystem::path>& settingsFile, const std::string& version,
           Log& log) {
    surviveFailingWrites();
    allowManyDescriptors();
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
