#include "memory/answering_service.h"
#include "support/consent_documents.h"

namespace Orvel::TestSupport {
namespace {

// Made once: what makes JSON here is not what is to lack memory.
const WideString& record() {
    static const WideString text = toWide(consentDocument().dump());
    return text;
}

const WideString& addresses() {
    static const WideString text = toWide(privacyDocument().dump());
    return text;
}

}  // namespace

WideString usualAnswer(const WideString& command) {
    const std::size_t end = command.find(ORVEL_TEXT("::"));
    const WideString application = command.substr(0, end);
    const WideString token = command.substr(end, command.find(ORVEL_TEXT("::"), end + 2) + 2 - end);
    if (token == ORVEL_TEXT("::CONNECT_APP::")) {
        return application + ORVEL_TEXT("::ACK::");
    }
    if (token == ORVEL_TEXT("::GET_CONSENT::")) {
        return application + ORVEL_TEXT("::CONSENT_RECORD::") + record();
    }
    if (token == ORVEL_TEXT("::GET_PRIVACY_DOCUMENTS::")) {
        return application + ORVEL_TEXT("::PRIVACY_DOCUMENTS::") + addresses();
    }
    // Too long for what a client has ready for a short one.
    return application + ORVEL_TEXT("::SUCCESS::") + WideString(10'000, ' ');
}

}  // namespace Orvel::TestSupport
