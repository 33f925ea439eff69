#include "tests/relay/other_user.h"

#include <sys/wait.h>
#include <unistd.h>

namespace Orvel::Relay::Testing {
namespace {

constexpr int kNoExit = 254;
constexpr int kNotAllowed = 255;

}  // namespace

bool becomeUser(uid_t user) {
    return user == ::geteuid() ||
           (::setresgid(user, user, user) == 0 && ::setresuid(user, user, user) == 0);
}

int asUser(uid_t user, const std::function<int()>& check) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(becomeUser(user) ? check() : kNotAllowed);
    }
    int state = 0;
    ::waitpid(child, &state, 0);
    return WIFEXITED(state) ? WEXITSTATUS(state) : kNoExit;
}

bool canBecomeOthers() {
    return asUser(kNobody, [] { return 0; }) == 0 && asUser(kStranger, [] { return 0; }) == 0;
}

}  // namespace Orvel::Relay::Testing
