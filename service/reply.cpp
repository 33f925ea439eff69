#include "service/reply.h"

#include <stdexcept>

namespace Orvel::Service {

WideString plainReply(WideStringView application, WideStringView token) {
    WideString reply(application);
    reply += token;
    return reply;
}

WideString jsonReply(WideStringView application, WideStringView token, std::string_view json) {
    const auto text = toUtf16(json);
    if (!text) {
        throw std::invalid_argument("a text of the reply is ill-formed");
    }
    return plainReply(application, token) + *text;
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
