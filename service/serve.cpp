#include "service/serve.h"

#include <exception>
#include <memory>

#include "orvel/relay/server.h"
#include "service/conversation.h"
#include "service/data_folder.h"
#include "service/process.h"
#include "service/store.h"

namespace Orvel::Service {

namespace {

void runServer(const std::filesystem::path& dataFolder, Log& log) {
    const DataFolder folder(dataFolder);
    Store store(folder.database(), systemTime);
    const auto socket = Relay::Server::endpointSocket(kEndpoint);
    Relay::Server::Server server(socket, [&store, &log](const Relay::Server::Peer& peer) {
        return std::make_unique<Conversation>(store, log, peer);
    });
    server.stopOnSignals();
    log.write("listening", {{"endpoint", kEndpoint}, {"socket", socket.string()}});
    server.run();
}

}  // namespace

bool serve(const std::filesystem::path& dataFolder, const std::string& version, Log& log) {
    surviveFailingWrites();
    log.write("started", {{"version", version}, {"data", dataFolder.string()}});
    try {
        runServer(dataFolder, log);
    } catch (const std::exception& error) {
        log.write("failed", {{"reason", error.what()}});
        return false;
    }
    log.write("stopped");
    return true;
}

}  // namespace Orvel::Service
