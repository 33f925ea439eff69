#ifndef ORVEL_SUPPORT_RAISED_STATUS_H
#define ORVEL_SUPPORT_RAISED_STATUS_H

#include <cstdint>

#include "orvel/analytics/hresult_error.h"

namespace Orvel::TestSupport {

/// The status that an operation raises; 0 when it raises nothing.
template <typename Operation>
std::uint32_t raisedStatus(Operation operation) {
    try {
        operation();
    } catch (const Analytics::hresult_error& error) {
        return static_cast<std::uint32_t>(error.code());
    }
    return 0;
}

}  // namespace Orvel::TestSupport

#endif
