#ifndef ORVEL_ANALYTICS_H
#define ORVEL_ANALYTICS_H

/// @file
/// Everything an application needs to report its events to the analytics service of its machine.

/// @namespace Orvel
/// What the libraries of this project declare, but for `AnalyticsSession`, `ConsentObject`,
/// `PrivacyDocuments` and `ProcessingPermissions`, which stand outside any namespace.

/// @namespace Orvel::Analytics
/// The client library and the errors that it raises.

/// @namespace Orvel::Analytics::DataClass
/// Data classes: what an application's events look like.

/// @namespace Orvel::Analytics::Emitters
/// The result codes of the public operations.

/// @namespace Orvel::Analytics::Session
/// The identity of a running application.

#include "orvel/analytics/app_session.h"             // IWYU pragma: export
#include "orvel/analytics/consent_object.h"          // IWYU pragma: export
#include "orvel/analytics/data_class.h"              // IWYU pragma: export
#include "orvel/analytics/hresult_error.h"           // IWYU pragma: export
#include "orvel/analytics/privacy_documents.h"       // IWYU pragma: export
#include "orvel/analytics/processing_permissions.h"  // IWYU pragma: export
#include "orvel/analytics/result.h"                  // IWYU pragma: export
#include "orvel/analytics/session.h"                 // IWYU pragma: export
#include "orvel/analytics/text.h"                    // IWYU pragma: export

#endif
