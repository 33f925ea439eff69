#ifndef ORVEL_SERVICE_LISTING_H
#define ORVEL_SERVICE_LISTING_H

#include <functional>
#include <string_view>

#include "service/store_reader.h"

namespace Orvel::Service {

/// Takes a listing's text, piece by piece.
using Output = std::function<void(std::string_view)>;

enum class ListingForm {
    /// Columns for people, with a heading.
    kText,
    /// One JSON object a line.
    kJson,
};

/// Lists events, oldest first. @throws SqlError
void listEvents(StoreReader& reader, const EventFilter& filter, ListingForm form,
                const Output& output);

/// Lists the registered data classes. @throws SqlError
void listClasses(StoreReader& reader, ListingForm form, const Output& output);

}  // namespace Orvel::Service

#endif
