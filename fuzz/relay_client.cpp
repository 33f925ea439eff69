/// The frames of a server as the client sees them. A line of numbers says how many bytes arrive at
/// a time, again and again; the rest is what the server sends.

#include <algorithm>
#include <cstring>
#include <vector>

#include "fuzz/support/allocations.h"
#include "fuzz/support/plain_frame.h"
#include "fuzz/support/require.h"
#include "fuzz/support/sizes.h"
#include "orvel/relay/rpc_client.h"
#include "relay/client/endpoint_client.h"

namespace Orvel::Fuzz {
namespace {

using namespace Relay;
using Client::Outcome;
using Client::TimePoint;

/// How a server receives and sends.
struct Manner {
    /// How many bytes arrive at a time.
    std::vector<std::size_t> sizes;
    bool isSlow = false;
};

/// A server that has said all it will ever say, to a client whose time passes while it waits.
class RecordedServer final : public Client::Transport {
  public:
    /// @param time outlives the transport.
    RecordedServer(std::string_view bytes, Manner manner, TimePoint& time)
        : bytes_(bytes), manner_(std::move(manner)), time_(time) {}

    TimePoint now() override { return time_; }
    std::int32_t connect(TimePoint) override {
        connected_ = true;
        return Status::kSuccess;
    }
    void disconnect() noexcept override { connected_ = false; }
    bool isConnected() const override { return connected_; }

    Client::Transfer send(std::span<const std::span<const std::byte>> pieces) override {
        std::size_t sent = 0;
        for (const auto piece : pieces) {
            sent += piece.size();
        }
        if (manner_.isSlow) {
            waits_ = !waits_;
            return waits_ ? Client::Transfer{Outcome::kNothingYet, 0}
                          : Client::Transfer{Outcome::kMoved, 1};
        }
        return {Outcome::kMoved, sent};
    }

    Client::Transfer receive(std::span<std::byte> room) override {
        require(!room.empty(), "the client has room for what it receives");
        const std::size_t wanted = manner_.sizes[turn_++ % manner_.sizes.size()];
        const std::size_t count = std::min({room.size(), bytes_.size(), wanted});
        if (count == 0) {
            return {Outcome::kLost, 0};
        }
        std::memcpy(room.data(), bytes_.data(), count);
        bytes_.remove_prefix(count);
        return {Outcome::kMoved, count};
    }

    Client::Readiness wait(bool sending, TimePoint until) override {
        const Client::Readiness ready{!bytes_.empty(), sending};
        // A server that falls silent costs the client the time that it waits at most.
        if (!ready.toReceive && !ready.toSend) {
            time_ = std::max(time_, until);
        }
        return ready;
    }

  private:
    std::string_view bytes_;
    Manner manner_;
    std::size_t turn_ = 0;
    bool waits_ = false;
    TimePoint& time_;
    bool connected_ = false;
};

constexpr WideStringView kCommandText = u"command";

struct Outcomes {
    std::vector<std::int32_t> statuses;
    std::vector<WideString> replies;

    bool operator==(const Outcomes&) const = default;
};

/// A greeting and three commands.
Outcomes converse(std::string_view bytes, Manner manner) {
    const AllocationBound bound(300'000, 100, bytes.size());
    TimePoint time{std::chrono::hours{1000}};
    const TimePoint begin = time;
    Client::EndpointClient client(std::make_unique<RecordedServer>(bytes, std::move(manner), time));
    Outcomes outcomes;
    outcomes.statuses.push_back(client.OpenConnection(u"argument"));
    for (int command = 0; command < 3; ++command) {
        WideString reply = u"untouched";
        const std::int32_t status =
            client.ExecuteCommand(u"TA", 0, WideString(kCommandText), reply);
        require(status == Status::kSuccess || reply == u"untouched",
                "a reply is written on success only");
        outcomes.statuses.push_back(status);
        outcomes.replies.push_back(reply);
    }
    require(time - begin <= Client::kConnectDeadline + 4 * Client::kLongestOperation,
            "no operation outlasts its deadline");
    return outcomes;
}

/// What the protocol says of the same bytes.
class Model {
  public:
    explicit Model(std::string_view bytes) : bytes_(bytes) {}

    Outcomes converse() {
        Outcomes outcomes;
        PlainFrame welcome;
        outcomes.statuses.push_back(closedUnless(Status::kSuccess, answer(kWelcome, 0, welcome)));
        std::uint32_t id = 0;
        for (int command = 0; command < 3; ++command) {
            WideString reply = u"untouched";
            outcomes.statuses.push_back(execute(welcome.code, id, reply));
            outcomes.replies.push_back(reply);
        }
        return outcomes;
    }

  private:
    std::int32_t execute(std::uint32_t largestBody, std::uint32_t& id, WideString& reply) {
        if (!open_) {
            return Status::kConnectionLost;
        }
        if (largestBody < kCommandText.size() * sizeof(WideChar)) {
            return Status::kTextTooLong;
        }
        PlainFrame frame;
        std::int32_t status = answer(kReply, ++id, frame);
        if (status == Status::kSuccess && frame.bodyLength > largestBody) {
            status = Status::kProtocolError;
        }
        if (status == Status::kSuccess && frame.bodyLength > bytes_.size()) {
            status = Status::kTimeout;
        }
        if (status == Status::kSuccess) {
            reply.resize(frame.bodyLength / sizeof(WideChar));
            std::memcpy(reply.data(), bytes_.data(), frame.bodyLength);
            bytes_.remove_prefix(frame.bodyLength);
            return status;
        }
        // Only an error frame leaves the two sides in step.
        return frame.type == kError ? status : closedUnless(Status::kSuccess, status);
    }

    /// The next frame that is no progress.
    std::int32_t answer(PlainFrameType expected, std::uint32_t id, PlainFrame& frame) {
        while (bytes_.size() >= kFrameHeader) {
            const auto next = readPlainFrame(bytes_);
            if (!next || next->id != id) {
                return Status::kProtocolError;
            }
            bytes_.remove_prefix(kFrameHeader);
            if (next->type == kError || next->type == expected) {
                frame = *next;
                return next->type == kError ? static_cast<std::int32_t>(next->code)
                                            : Status::kSuccess;
            }
            if (next->type != kProgress) {
                return Status::kProtocolError;
            }
        }
        return Status::kTimeout;
    }

    std::int32_t closedUnless(std::int32_t fine, std::int32_t status) {
        open_ = status == fine;
        return status;
    }

    std::string_view bytes_;
    bool open_ = true;
};

}  // namespace
}  // namespace Orvel::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Orvel::Fuzz;
    Input input(data, size);
    std::string_view line = input.line();
    constexpr std::string_view kSlow = "slow ";
    const bool isSlow = line.starts_with(kSlow);
    line.remove_prefix(isSlow ? kSlow.size() : 0);
    const auto sizes = readSizes(line);
    const std::string_view bytes = input.rest();
    if (isSlow) {
        // What is out of turn depends on how far the client is, so that only what holds for any
        // conversation is checked.
        converse(bytes, {sizes, isSlow});
    } else {
        const Outcomes whole = converse(bytes, {{bytes.size() + 1}});
        require(whole == Model(bytes).converse(), "the conversation goes as the protocol says");
        require(converse(bytes, {sizes}) == whole,
                "it does not matter how many bytes arrive at a time");
    }
    return 0;
}
