#ifndef ORVEL_MEMORY_ANSWERING_SERVICE_H
#define ORVEL_MEMORY_ANSWERING_SERVICE_H

#include <memory>
#include <vector>

#include "orvel/analytics/text.h"

namespace Orvel::TestSupport {

/// The service that the sessions of a test program reach, by whichever RPC client the program is
/// linked with. It acknowledges everything and has one consent record. One at a time.
class AnsweringService {
  public:
    AnsweringService();
    AnsweringService(const AnsweringService&) = delete;
    AnsweringService& operator=(const AnsweringService&) = delete;
    ~AnsweringService();

    /// What stands between it and the sessions, in a word.
    static const char* client();

    /// From now on the answer to every command but a handshake; with an empty text, the usual one.
    void answerWith(WideString reply);

    /// The commands that arrived since `forget`, in their order and without handshakes.
    std::vector<WideString> commands() const;

    /// Forgets the commands that have arrived, and the answer.
    void forget();

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

/// The usual answer to a command. A collected batch is acknowledged at some length.
WideString usualAnswer(const WideString& command);

}  // namespace Orvel::TestSupport

#endif
