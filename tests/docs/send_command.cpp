/// Sends one command to the service: send_command NAME TOKEN <PAYLOAD. Fails when the service's
/// replies are not an acknowledged handshake and a success.

#include <orvel/relay/rpc_client.h>

#include <iostream>
#include <iterator>
#include <string>

namespace {

using Orvel::Relay::WideString;

/// The payloads of the documentation are UTF-8, of which all is in the first plane.
WideString wide(const std::string& text) {
    WideString result;
    for (std::size_t at = 0; at < text.size();) {
        const auto lead = static_cast<unsigned char>(text[at++]);
        unsigned unit = lead;
        int more = 0;
        if (lead >= 0xE0) {
            unit = lead & 0x0FU;
            more = 2;
        } else if (lead >= 0xC0) {
            unit = lead & 0x1FU;
            more = 1;
        }
        for (; more > 0 && at < text.size(); --more) {
            unit = unit << 6U | (static_cast<unsigned char>(text[at++]) & 0x3FU);
        }
        result += static_cast<Orvel::Relay::WideChar>(unit);
    }
    return result;
}

std::string narrow(const WideString& text) {
    std::string result;
    for (const auto unit : text) {
        result += unit < 0x80 ? static_cast<char>(unit) : '?';
    }
    return result;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "send_command NAME TOKEN <PAYLOAD\n";
        return 2;
    }
    const std::string name = argv[1];
    const std::string token = std::string("::") + argv[2] + "::";
    const std::string payload(std::istreambuf_iterator<char>(std::cin), {});
    const auto client = Orvel::Relay::Client::Native::RpcClient::GetClientForEndpoint(
        wide("OrvelAnalyticsRpcEndpoint"));
    if (client->OpenConnection({}) != 0) {
        std::cerr << "the service cannot be reached\n";
        return 1;
    }
    const auto ask = [&](const std::string& command) {
        WideString reply;
        client->ExecuteCommand(wide("TA"), 0, wide(command), reply);
        std::cout << narrow(reply) << '\n';
        return narrow(reply);
    };
    const bool greeted = ask(name + "::CONNECT_APP::") == name + "::ACK::";
    const bool taken = greeted && ask(name + token + payload) == name + "::SUCCESS::";
    client->CloseConnection();
    return taken ? 0 : 1;
}
