#include "channel/reply.h"

#include "channel/service_error.h"
#include "json/json.h"

namespace Orvel::Analytics::Channel {
namespace {

constexpr WideChar kColon = ':';

void removeFirst(WideString& text, WideStringView part) {
    const std::size_t at = text.find(part);
    if (at != WideString::npos) {
        text.erase(at, part.size());
    }
}

/// The end of the framing, which an application's name and token make of four colons; 0 when there
/// are fewer.
std::size_t framingSize(WideStringView reply) {
    std::size_t end = 0;
    for (int colons = 0; colons < 4; ++colons) {
        const std::size_t colon = reply.find(kColon, end);
        if (colon == WideStringView::npos) {
            return 0;
        }
        end = colon + 1;
    }
    return end;
}

}  // namespace

Emitters::AnalyticsResult parseServiceReply(WideStringView reply) {
    using Emitters::AnalyticsResult;
    if (reply.find(ORVEL_TEXT("ErrorCode")) == WideStringView::npos) {
        return AnalyticsResult::Success;
    }
    reply.remove_prefix(framingSize(reply));

    Json::Document document;
    const Json::Array results = document.parseObject(reply).getNamedArray(ORVEL_TEXT("Results"));
    const std::uint32_t count = results.size();
    if (count == 0) {
        return AnalyticsResult::GenericError;
    }
    // What precedes the error's name is gathered over all elements and never forgotten between
    // them: the service's error elements all begin alike.
    WideString preceding;
    WideString error;
    for (std::uint32_t index = 0; index < count; ++index) {
        error = results.getAt(index).stringify();
        const std::size_t colon = error.find(kColon);
        preceding.append(error, 0, colon == WideString::npos ? colon : colon + 1);
        if (colon != WideString::npos) {
            removeFirst(error, preceding);
        }
    }
    if (!error.empty()) {
        error.pop_back();  // The closing quotation mark.
    }
    return mapServiceErrorName(error);
}

}  // namespace Orvel::Analytics::Channel
