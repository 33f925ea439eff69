/// The service behind the real RPC client: a server of this process, on threads of its own, which
/// never lack memory.

#include <cstdlib>
#include <mutex>
#include <thread>
#include <utility>

#include "memory/answering_service.h"
#include "orvel/relay/server.h"
#include "support/temporary_folder.h"

namespace Orvel::TestSupport {

/// What the conversations share. Nothing that a server's thread has allocated is freed before the
/// end, so that the test's thread can count what is its own.
struct Book {
    std::mutex mutex;
    std::vector<WideString> commands;
    std::size_t forgotten = 0;
    WideString answer;
};

namespace {

namespace Server = Relay::Server;

class BookedConversation final : public Server::Conversation {
  public:
    explicit BookedConversation(Book& book) : book_(book) {}

    Server::Answer execute(const WideString& /*target*/, std::uint32_t /*argument*/,
                           WideString command) override {
        WideString answer = usualAnswer(command);
        if (!command.ends_with(ORVEL_TEXT("::CONNECT_APP::"))) {
            const std::lock_guard lock(book_.mutex);
            book_.commands.push_back(std::move(command));
            answer = book_.answer.empty() ? answer : book_.answer;
        }
        return {0, std::move(answer)};
    }

  private:
    Book& book_;
};

std::filesystem::path socketIn(const std::filesystem::path& folder) {
    ::setenv("ORVEL_RPC_DIRECTORY", folder.c_str(), 1);
    return Server::endpointSocket("OrvelAnalyticsRpcEndpoint");
}

}  // namespace

struct AnsweringService::Impl {
    ~Impl() {
        server.stop();
        thread.join();
    }

    Support::TemporaryFolder folder;
    Book book;
    Server::Server server{socketIn(folder.path()), [this](const Server::Peer&) {
                              return std::make_unique<BookedConversation>(book);
                          }};
    std::thread thread{[this] { server.run(); }};
};

AnsweringService::AnsweringService() : impl_(std::make_unique<Impl>()) {}

AnsweringService::~AnsweringService() = default;

const char* AnsweringService::client() { return "relay"; }

void AnsweringService::answerWith(WideString reply) {
    const std::lock_guard lock(impl_->book.mutex);
    impl_->book.answer = std::move(reply);
}

std::vector<WideString> AnsweringService::commands() const {
    const std::lock_guard lock(impl_->book.mutex);
    const auto& all = impl_->book.commands;
    return {all.begin() + static_cast<std::ptrdiff_t>(impl_->book.forgotten), all.end()};
}

void AnsweringService::forget() {
    const std::lock_guard lock(impl_->book.mutex);
    impl_->book.forgotten = impl_->book.commands.size();
    WideString().swap(impl_->book.answer);
}

}  // namespace Orvel::TestSupport
