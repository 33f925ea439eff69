#ifndef ORVEL_FAULTS_STORED_DATA_H
#define ORVEL_FAULTS_STORED_DATA_H

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "service/store.h"

/// @file
/// A store with one application and one data class, for tests of what becomes of its events.

namespace Orvel::Faults {

/// Opens the store with a clock that stands still.
inline std::unique_ptr<Service::Store> openStore(const std::filesystem::path& database) {
    return std::make_unique<Service::Store>(database,
                                            [] { return std::chrono::milliseconds{1'000}; });
}

inline void registerNumbered(Service::Store& store) {
    store.registerClass("App", {.name = "", .id = "Numbered", .version = "1", .fields = {}});
}

/// Stores a batch of events with the numbers from `first` on. @throws Service::SqlError
inline void addNumbers(Service::Store& store, std::int32_t first, std::int32_t count,
                       std::size_t padding = 0) {
    const Service::StoredClass dataClass = store.latestClass("App", "Numbered").value();
    std::vector<std::string> contents;
    for (std::int32_t number = first; number < first + count; ++number) {
        contents.push_back(R"({"number":)" + std::to_string(number) + R"(,"padding":")" +
                           std::string(padding, 'x') + "\"}");
    }
    std::vector<Service::JudgedEvent> events(contents.size());
    for (std::size_t i = 0; i < contents.size(); ++i) {
        events[i].content = contents[i];
        events[i].dataClass = dataClass.id;
        events[i].time = "20240131T235959";
    }
    const Service::Session session{.versionTag = "",
                                   .started = "",
                                   .application = "App",
                                   .applicationVersion = "",
                                   .id = "",
                                   .counter = "0",
                                   .user = "",
                                   .device = "",
                                   .environment = ""};
    store.addBatch(session, 0, events);
}

}  // namespace Orvel::Faults

#endif
