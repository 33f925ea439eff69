#ifndef ORVEL_STAND_IN_RUNTIME_STAND_IN_H
#define ORVEL_STAND_IN_RUNTIME_STAND_IN_H

#include <cstdint>
#include <functional>
#include <limits>
#include <list>
#include <string>
#include <string_view>
#include <vector>

#include "support/stand_in_runtime/control.h"

namespace Orvel::StandIn {

/// A test's hold on the stand-in runtime: the very DLL that is registered for the runtime classes.
/// One for each test; what it set is forgotten with it.
///
/// Calls and classes are named as control.h says; a name that does not exist raises
/// std::invalid_argument.
class StandIn {
  public:
    static constexpr std::uint32_t kAlways = std::numeric_limits<std::uint32_t>::max();

    /// @throws std::runtime_error when no stand-in is registered.
    StandIn();
    StandIn(const StandIn&) = delete;
    StandIn& operator=(const StandIn&) = delete;
    ~StandIn();

    /// Lets a call fail from its `from`-th time on, `times` times.
    void fail(const std::string& call, std::uint32_t status, std::uint32_t from = 1,
              std::uint32_t times = kAlways);
    /// Lets the `index`-th call from now on fail, whichever it is, counted from 0.
    void failAt(std::uint32_t index, std::uint32_t status);
    /// Runs `action` once, inside the next such call.
    void runInside(const std::string& call, std::function<void()> action);
    void setAgile(const std::string& runtimeClass, bool agile);
    void setNullLookupYieldsNothing();
    void setDeviceFamilyVersion(std::wstring_view text);
    void setOperatingSystem(std::wstring_view text);

    /// The names of the calls so far, in their order.
    [[nodiscard]] std::vector<std::string> calls() const;
    /// How often one was called.
    [[nodiscard]] std::size_t count(std::string_view call) const;
    /// The factories of a class, in the order in which they were asked for.
    [[nodiscard]] std::vector<Factory> factories(const std::string& runtimeClass) const;
    /// The references to all those factories of a class.
    [[nodiscard]] std::uint32_t factoryReferences(const std::string& runtimeClass) const;
    [[nodiscard]] std::int32_t liveObjects() const { return control_->liveObjects(); }
    [[nodiscard]] std::uint32_t usesAfterRelease() const { return control_->usesAfterRelease(); }

  private:
    Control* control_;
    std::list<std::function<void()>> actions_;  // Stay in place while the stand-in knows them.
};

}  // namespace Orvel::StandIn

#endif
