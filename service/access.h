#ifndef ORVEL_SERVICE_ACCESS_H
#define ORVEL_SERVICE_ACCESS_H

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace Orvel::Service {

/// Users of this machine, by their numbers.
using Users = std::set<std::uint32_t>;

/// What is allowed to an application. Where nothing is said, everything is.
struct AllowedApplication {
    /// Who may run it.
    std::optional<Users> users = std::nullopt;
    /// The identifiers of the classes that it may register and report.
    std::optional<std::set<std::string, std::less<>>> dataClasses = std::nullopt;

    bool operator==(const AllowedApplication&) const = default;
};

/// Who may talk with the service. Where nothing is said, whoever can connect may.
struct Access {
    std::optional<Users> users = std::nullopt;
    /// By their names.
    std::optional<std::map<std::string, AllowedApplication, std::less<>>> applications =
        std::nullopt;

    /// Whether this user may talk with the service as this application.
    bool mayConnect(std::string_view application, std::uint32_t user) const;

    /// Whether an application that may connect may register and report a class.
    bool mayUse(std::string_view application, std::string_view dataClass) const;

    bool operator==(const Access&) const = default;
};

}  // namespace Orvel::Service

#endif
