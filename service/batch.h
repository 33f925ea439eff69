#ifndef ORVEL_SERVICE_BATCH_H
#define ORVEL_SERVICE_BATCH_H

#include <string_view>
#include <vector>

#include "service/event_judge.h"
#include "service/json.h"
#include "service/json_text.h"
#include "service/store.h"

namespace Orvel::Service {

/// A batch document that has been read.
///
/// It has the form {"events": [{"appsession": {...}, "data": [event, ...]}]}, with exactly one
/// element in "events". "appsession" holds the texts "V", "DT", "1", "2", "3", "5", "6" and "7" and
/// the number "4". Other members are allowed everywhere.
class Batch {
  public:
    /// @param document must outlive the batch and what it gives.
    /// @throws Refusal MalformedJson when the document has not that form.
    explicit Batch(std::string_view document);

    const Session& session() const { return session_; }

    /// How many events it has.
    std::size_t size() const { return data_.size(); }

    /// Judges every event, in order. What it gives borrows from the batch.
    /// @param mayReport every class when nothing is said.
    std::vector<JudgedEvent> judge(const FindClass& findClass,
                                   const MayReport& mayReport = {}) const;

  private:
    JsonDocument json_;
    Session session_;
    JsonValue data_;
    /// Stands on the first event's characters.
    JsonCursor dataText_;
};

}  // namespace Orvel::Service

#endif
