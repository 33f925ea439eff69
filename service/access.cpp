#include "service/access.h"

namespace Orvel::Service {

namespace {

template <typename Set, typename Value>
bool allows(const std::optional<Set>& allowed, const Value& value) {
    return !allowed || allowed->find(value) != allowed->end();
}

}  // namespace

bool Access::mayConnect(std::string_view application, std::uint32_t user) const {
    if (!allows(users, user) || !allows(applications, application)) {
        return false;
    }
    return !applications || allows(applications->find(application)->second.users, user);
}

bool Access::mayUse(std::string_view application, std::string_view dataClass) const {
    if (!applications) {
        return true;
    }
    const auto entry = applications->find(application);
    return entry != applications->end() && allows(entry->second.dataClasses, dataClass);
}

}  // namespace Orvel::Service
