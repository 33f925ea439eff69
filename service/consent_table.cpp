#include "service/consent_table.h"

namespace Orvel::Service {

namespace {

constexpr const char* kLast = R"sql(
    SELECT marketing, support, product_enhancement, received, source
    FROM consent_change ORDER BY id DESC LIMIT 1)sql";

constexpr const char* kChanges = R"sql(
    SELECT marketing, support, product_enhancement, received, source, peer_user, application.name
    FROM consent_change CROSS JOIN application ON application.id = application_id
    ORDER BY consent_change.id)sql";

Permissions permissionsOf(const Statement& row) {
    return {.marketing = std::string(row.text(0)),
            .support = std::string(row.text(1)),
            .productEnhancement = std::string(row.text(2))};
}

}  // namespace

std::optional<GivenConsent> lastConsent(const Database& database) {
    Statement last(database, kLast);
    if (!last.step()) {
        return std::nullopt;
    }
    return GivenConsent{.time = std::chrono::milliseconds{last.integer(3)},
                        .source = std::string(last.text(4)),
                        .permissions = permissionsOf(last)};
}

void visitConsentChanges(const Database& database,
                         const std::function<void(const ConsentChange&)>& visit) {
    Statement changes(database, kChanges);
    Permissions before;
    while (changes.step()) {
        const Permissions after = permissionsOf(changes);
        visit({.received = changes.integer(3),
               .peerUser = changes.integer(5),
               .application = changes.text(6),
               .source = changes.text(4),
               .before = before,
               .after = after});
        before = after;
    }
}

}  // namespace Orvel::Service
