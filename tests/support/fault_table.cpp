#include "support/fault_table.h"

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

#include "support/fault_line.h"

namespace Orvel::Support {

namespace {

struct Registry {
    std::mutex mutex;
    std::vector<const Fault*> faults;
};

// Made when the first fault asks for it, whichever source file that is in.
Registry& registry() {
    static Registry all;
    return all;
}

}  // namespace

Fault::Fault(std::string name) : name_(std::move(name)) {
    const std::scoped_lock lock(registry().mutex);
    registry().faults.push_back(this);
}

Fault::~Fault() {
    const std::scoped_lock lock(registry().mutex);
    std::erase(registry().faults, this);
}

std::string faultTable() {
    const std::scoped_lock lock(registry().mutex);
    std::string table;
    for (const Fault* fault : registry().faults) {
        table += faultLine(fault->name(), fault->injected(), fault->observed()) + '\n';
    }
    return table;
}

bool everyFaultCounted() {
    const std::scoped_lock lock(registry().mutex);
    return std::none_of(registry().faults.begin(), registry().faults.end(), [](const Fault* fault) {
        return fault->injected() == 0 || fault->observed() == 0;
    });
}

}  // namespace Orvel::Support
