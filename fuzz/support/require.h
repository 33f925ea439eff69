#ifndef ORVEL_FUZZ_REQUIRE_H
#define ORVEL_FUZZ_REQUIRE_H

#include <cstdio>
#include <cstdlib>

namespace Orvel::Fuzz {

/// Ends the process, which makes the input at hand a finding, unless the property holds.
inline void require(bool holds, const char* property) {
    if (!holds) {
        std::fprintf(stderr, "BROKEN: %s\n", property);
        std::abort();
    }
}

}  // namespace Orvel::Fuzz

#endif
