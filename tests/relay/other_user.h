#ifndef ORVEL_RELAY_OTHER_USER_H
#define ORVEL_RELAY_OTHER_USER_H

#include <sys/types.h>

#include <functional>

namespace Orvel::Relay::Testing {

/// Two users without rights.
inline constexpr uid_t kNobody = 65534;
inline constexpr uid_t kStranger = 65533;

/// Makes this process run as a user, for good.
/// @return false when it may not.
bool becomeUser(uid_t user);

/// Runs a check as a user, in a process of its own; the check's number, at most 253, is returned.
int asUser(uid_t user, const std::function<int()>& check);

/// Whether this process may run others as users of its choice, which takes root.
bool canBecomeOthers();

}  // namespace Orvel::Relay::Testing

#endif
