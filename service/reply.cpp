#include "service/reply.h"

namespace Orvel::Service {

WideString plainReply(WideStringView application, WideStringView token) {
    WideString reply(application);
    reply += token;
    return reply;
}

WideString errorReply(WideStringView application, WideStringView token,
                      const std::vector<ErrorName>& errors) {
    WideString reply = plainReply(application, token);
    appendAscii(reply, R"({"Results":[)");
    std::string_view separator;
    for (const ErrorName error : errors) {
        appendAscii(reply, separator);
        appendAscii(reply, R"("ErrorCode :)");
        appendAscii(reply, error);
        appendAscii(reply, R"(")");
        separator = ",";
    }
    appendAscii(reply, "]}");
    return reply;
}

}  // namespace Orvel::Service
