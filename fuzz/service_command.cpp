/// The service's reader of commands: a conversation, one command a line. A line `@` begins another
/// one on the same store.

#include <memory>
#include <optional>
#include <string>

#include "fuzz/support/allocations.h"
#include "fuzz/support/consent_model.h"
#include "fuzz/support/input.h"
#include "fuzz/support/require.h"
#include "service/command.h"
#include "service/conversation.h"
#include "service/text.h"
#include "support/event_model.h"
#include "support/temporary_folder.h"

namespace Orvel::Fuzz {
namespace {

using TestSupport::PlainJson;
using Kind = PlainJson::Kind;
namespace Tokens = Service::Tokens;

/// A service without its process. Whatever it logs is a fault: no input may make it stumble.
struct World {
    Support::TemporaryFolder folder;
    Service::Store store{folder.path() / "analytics.db",
                         [] { return std::chrono::milliseconds(1'700'000'000'000); }};
    Service::Log log{[](std::string_view line) {
                         std::fprintf(stderr, "%.*s", static_cast<int>(line.size()), line.data());
                         require(false, "no command makes the service stumble");
                     },
                     Service::systemTime};
    Service::Settings settings;
};

/// What is stored stays for the next inputs, as making a store takes as long as hundreds of
/// commands; now and then there is a new one.
World& world() {
    constexpr int kInputs = 500;
    static std::unique_ptr<World> current;
    static int used = 0;
    if (current == nullptr || ++used == kInputs) {
        current.reset();
        current = std::make_unique<World>();
        used = 0;
    }
    return *current;
}

void checkSplitting(WideStringView text, WideStringView connected) {
    const auto command = Service::splitCommand(text, connected);
    if (command) {
        require(WideString(command->application).append(command->token).append(command->payload) ==
                    text,
                "a command is its three parts");
        require(command->token.starts_with(u"::") && command->token.ends_with(u"::"),
                "a token stands between double colons");
    }
}

void checkErrors(WideStringView json) {
    const auto text = TestSupport::wellFormed(json);
    const auto errors = text ? TestSupport::readPlainJson(*text, 2) : std::nullopt;
    require(errors && errors->kind == Kind::kObject && errors->member("Results") != nullptr,
            "an error reply holds its results");
    for (const PlainJson& error : errors->member("Results")->values) {
        require(error.kind == Kind::kString && error.text.starts_with("ErrorCode :"),
                "a result names an error");
        require(error.text != "ErrorCode :GenericError", "no command makes the service stumble");
    }
}

/// Everything behind the name of the connection.
void checkReply(WideStringView reply) {
    constexpr WideStringView kErrors = u"{\"Results\":[";
    const auto after = [&reply](WideStringView token) {
        return reply.substr(reply.rfind(token) + token.size());
    };
    const auto ends = [&reply](WideStringView token) { return reply.ends_with(token); };
    if (ends(u"]}") && reply.rfind(kErrors) != WideStringView::npos) {
        checkErrors(reply.substr(reply.rfind(kErrors)));
    } else if (reply.rfind(Tokens::kConsentRecord) != WideStringView::npos && ends(u"}}")) {
        ConsentObject consent;
        require(readConsentByModel(after(Tokens::kConsentRecord), consent),
                "a consent record can be read");
    } else if (reply.rfind(Tokens::kPrivacyDocuments) != WideStringView::npos && ends(u"}")) {
        PrivacyDocuments documents;
        require(readDocumentsByModel(after(Tokens::kPrivacyDocuments), documents),
                "the privacy documents can be read");
    } else {
        require(ends(Tokens::kSuccess) || ends(Tokens::kAcknowledged), "a reply is a known one");
    }
}

void converse(Input& input) {
    World& current = world();
    std::optional<Service::Conversation> conversation;
    while (!input.empty()) {
        const std::string_view line = input.line();
        if (line == "@" || !conversation) {
            conversation.emplace(current.store, current.settings, current.log,
                                 Relay::Server::Peer{});
        }
        const WideString text = wideOf(line);
        checkSplitting(text, {});
        checkSplitting(text, u"MyApp");
        const auto answer = [&] {
            const AllocationBound bound(400'000, 1000, line.size());
            return conversation->execute(WideString(Service::kTarget), 0, text);
        }();
        require(answer.status == 0, "every command is answered");
        checkReply(answer.text);
    }
}

}  // namespace
}  // namespace Orvel::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Orvel::Fuzz::Input input(data, size);
    Orvel::Fuzz::converse(input);
    return 0;
}
