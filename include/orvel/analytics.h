#ifndef ORVEL_ANALYTICS_H
#define ORVEL_ANALYTICS_H

/// @file
/// Everything an application needs to report its events to the analytics service of its machine.

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
