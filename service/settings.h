#ifndef ORVEL_SERVICE_SETTINGS_H
#define ORVEL_SERVICE_SETTINGS_H

#include <cstdint>
#include <string>

#include "service/access.h"

namespace Orvel::Service {

/// Where the privacy documents are; empty when there is none.
struct PrivacyAddresses {
    std::string privacy;
    std::string warranty;
    std::string telemetry;

    bool operator==(const PrivacyAddresses&) const = default;
};

/// How much the service takes on. 0 is no limit where it says so.
struct Limits {
    /// The longest command or reply, in bytes of UTF-16; at most 1 GiB.
    std::int64_t commandBytes = std::int64_t{64} << 20;
    /// The events of one batch.
    std::int64_t batchEvents = 100'000;
    /// The fields of one data class: every event of a batch is held to each of them.
    std::int64_t classFields = 1000;
    /// The events that are stored for one application on one day, by UTC; 0 is no limit.
    std::int64_t eventsPerDay = 1'000'000;
    /// What the database may hold, in bytes; 0 is no limit.
    std::int64_t storedBytes = std::int64_t{1} << 30;
    /// How long events are kept; 0 is no limit.
    std::int64_t storedDays = 90;
    /// Connections at a time.
    std::int64_t connections = 1024;
    /// How long a connection may be silent between commands.
    std::int64_t idleSeconds = 300;
    /// How long a command or a reply on its way may make no progress.
    std::int64_t stalledSeconds = 10;
    /// How long a command or a reply may be on its way.
    std::int64_t transferSeconds = 60;

    bool operator==(const Limits&) const = default;
};

/// What whoever runs the service settles. As it is made, it holds the defaults.
struct Settings {
    std::string deviceSerialNumber;
    std::string countryCode;
    std::string tenant;
    /// Where the consent comes from as long as no application has set it.
    std::string consentSource = "default";
    /// Whether somebody else than the user decides on this device's consent.
    bool managed = false;
    /// Whether events may be stored.
    bool processData = true;
    PrivacyAddresses privacyAddresses;
    Limits limits = {};
    Access access = {};
    /// The octal mode of the socket's file; empty for the one that follows from who runs the
    /// service and from `socketGroup`.
    std::string socketMode{};
    /// The group of the socket's file; empty for that of the process.
    std::string socketGroup{};

    bool operator==(const Settings&) const = default;
};

}  // namespace Orvel::Service

#endif
