#ifndef ORVEL_SUPPORT_FAULT_TABLE_H
#define ORVEL_SUPPORT_FAULT_TABLE_H

#include <atomic>
#include <cstdint>
#include <string>

namespace Orvel::Support {

/// One kind of fault that a program injects: how often it did, and how often it then observed what
/// the fault must lead to. It is in the program's table from its making to its end, so faults are
/// variables of a source file. Any thread counts.
class Fault {
  public:
    /// @param name what goes wrong, without a bar.
    explicit Fault(std::string name);
    Fault(const Fault&) = delete;
    Fault& operator=(const Fault&) = delete;
    ~Fault();

    void inject(std::uint64_t times = 1) { injected_ += times; }
    void observe(std::uint64_t times = 1) { observed_ += times; }

    const std::string& name() const { return name_; }
    std::uint64_t injected() const { return injected_; }
    std::uint64_t observed() const { return observed_; }

  private:
    const std::string name_;
    std::atomic<std::uint64_t> injected_ = 0;
    std::atomic<std::uint64_t> observed_ = 0;
};

/// The program's faults, a line each.
std::string faultTable();

/// Whether every fault of the program was injected, and its effect observed, at least once.
bool everyFaultCounted();

}  // namespace Orvel::Support

#endif
