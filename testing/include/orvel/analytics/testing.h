#ifndef ORVEL_ANALYTICS_TESTING_H
#define ORVEL_ANALYTICS_TESTING_H

/// @file
/// A service for an application's own tests. The matchers for GoogleTest are not among these
/// headers: see `orvel/analytics/testing/matchers.h`.

/// @namespace Orvel::Analytics::Testing
/// A service inside an application's own tests.

#include "orvel/analytics/testing/answer.h"             // IWYU pragma: export
#include "orvel/analytics/testing/records.h"            // IWYU pragma: export
#include "orvel/analytics/testing/scripted_endpoint.h"  // IWYU pragma: export
#include "orvel/analytics/testing/service.h"            // IWYU pragma: export
#include "orvel/analytics/testing/value.h"              // IWYU pragma: export

#endif
