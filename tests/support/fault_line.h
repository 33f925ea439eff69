#ifndef ORVEL_SUPPORT_FAULT_LINE_H
#define ORVEL_SUPPORT_FAULT_LINE_H

#include <cstdint>
#include <iomanip>
#include <sstream>
#include <string>

namespace Orvel::Support {

/// A line of the tables of faults, without its end: `fault | NAME | injected N | observed N`. It
/// begins so that it is found among what else a program prints.
inline std::string faultLine(const std::string& name, std::uint64_t injected,
                             std::uint64_t observed) {
    constexpr int kName = 72;
    constexpr int kCount = 7;
    std::ostringstream line;
    line << "fault | " << std::left << std::setw(kName) << name << std::right << " | injected "
         << std::setw(kCount) << injected << " | observed " << std::setw(kCount) << observed;
    return line.str();
}

}  // namespace Orvel::Support

#endif
