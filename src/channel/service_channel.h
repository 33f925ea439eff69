#ifndef ORVEL_CHANNEL_SERVICE_CHANNEL_H
#define ORVEL_CHANNEL_SERVICE_CHANNEL_H

#include <memory>

#include "orvel/analytics/result.h"
#include "orvel/analytics/text.h"
#include "orvel/relay/rpc_client.h"

/// The way to the analytics service: each command opens a connection, shakes hands, says one thing
/// and closes the connection again, whatever becomes of it.
namespace Orvel::Analytics::Channel {

/// What one public operation needs to reach the service.
struct ServiceChannel {
    WideString endpointName;
    std::shared_ptr<Relay::Client::Core::RpcClient> client;
    WideString commandTarget;
};

ServiceChannel getServiceClient();

/// Registers a data class. Alone among the commands it tells why a connection could not be opened.
Emitters::AnalyticsResult registerCommand(ServiceChannel& channel, WideStringView appName,
                                          WideString document);

/// Sends a batch of events. Alone among the commands it fails when the handshake does, whatever
/// the service replied.
Emitters::AnalyticsResult collectCommand(ServiceChannel& channel, WideStringView appName,
                                         WideString document);

/// Asks for the consent record.
/// @param consent the record's text; written unless the command was never sent.
Emitters::AnalyticsResult getConsentCommand(ServiceChannel& channel, WideStringView appName,
                                            WideString& consent);

/// Stores the processing permissions.
Emitters::AnalyticsResult setConsentCommand(ServiceChannel& channel, WideStringView appName,
                                            WideString permissions);

/// Asks for the addresses of the privacy documents. Alone among the commands it takes a delivered
/// reply as a success without reading it.
/// @param documents the addresses' text; written only when the command was delivered.
Emitters::AnalyticsResult getPrivacyDocumentsCommand(ServiceChannel& channel,
                                                     WideStringView appName, WideString& documents);

}  // namespace Orvel::Analytics::Channel

#endif
