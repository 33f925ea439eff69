/// What of an event's road depends on the JSON backend, where that is the portable one.

#include "session/events_fixture.h"

namespace Orvel::TestSupport {
namespace {

class PortableEvents : public Events {};

TEST_F(PortableEvents, KeepEveryNumberAndTextAsWritten) {
    const std::string values =
        "{\"big\":12345678901234567890,\"cjk\":\"\u6f22\u5b57\",\"emoji\":\"\U0001F600\","
        "\"escapes\":\"\\\"\\\\\\n\\u0000\\u001F\",\"nested\":{\"a\":[1,{\"b\":null}]},\"t\":true}";
    evt.dateTime = 0;
    ASSERT_EQ(collect(evt, toWide(values)), 0);
    const std::string stamped =
        "{\"Evt\":" + values.substr(0, values.size() - 1) + ",\"DT\":\"\",\"V\":\"\"}}";
    EXPECT_EQ(toUtf8(queue().front()), stamped);
}

TEST_F(PortableEvents, AreTakenAndSentUpToTheLimitOfNesting) {
    WideString event = ORVEL_TEXT("{\"a\":");
    event.append(1023, '[').append(1023, ']').append(1, '}');
    EXPECT_EQ(collect(evt, event), 0);
    EXPECT_EQ(send(), 0);
    EXPECT_NE(script.executed.back().command.find(WideString(1023, '[')), WideString::npos);
}

}  // namespace
}  // namespace Orvel::TestSupport
