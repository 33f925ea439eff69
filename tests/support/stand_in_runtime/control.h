#ifndef ORVEL_STAND_IN_RUNTIME_CONTROL_H
#define ORVEL_STAND_IN_RUNTIME_CONTROL_H

#include <cstdint>

/// The door through which a test reaches the stand-in for the platform's runtime classes. Tests use
/// `StandIn` (stand_in.h), which finds the door; what passes here is plain data, because a test and
/// the stand-in each have a C++ runtime of their own.
///
/// A call is named as in calls.h: `JsonObject.Factory` for a request for a class's factory,
/// `JsonObject.ActivateInstance`, `IJsonObject.SetNamedValue`, `IJsonValue.QueryInterface`. A class
/// goes by the last part of its name. Every operation may be called from any thread, from within
/// an action too.
namespace Orvel::StandIn {

/// One factory that was handed out.
struct Factory {
    std::uint32_t calls = 0;       ///< Calls of its methods, activations included.
    std::uint32_t references = 0;  ///< References to it that are held.
};

/// What is to be done inside a call; it may call the runtime itself.
struct Action {
    void (*run)(void* context) = nullptr;
    void* context = nullptr;
};

class Control {
  public:
    /// Forgets what was set and what happened; what is still held does not count any more.
    virtual void reset() noexcept = 0;

    /// Lets a call give `status` and leave its results untouched.
    /// @param from the first failing one, counted from 1 on from now.
    /// @return whether there is such a call.
    virtual bool fail(const char* call, std::int32_t status, std::uint32_t from,
                      std::uint32_t times) noexcept = 0;
    /// Lets the `index`-th call of all from now on give `status`, counted from 0.
    virtual void failAt(std::uint32_t index, std::int32_t status) noexcept = 0;
    /// Runs `action` once, at the start of the next such call and on its thread.
    /// @return whether there is such a call.
    virtual bool runInside(const char* call, Action action) noexcept = 0;
    /// Whether the factories of a class say that they are agile; they do by default.
    /// @return whether there is such a class.
    virtual bool setAgile(const char* runtimeClass, bool agile) noexcept = 0;
    /// Whether looking up a null member succeeds without a value object.
    virtual void setNullLookupYieldsNothing(bool yieldsNothing) noexcept = 0;
    virtual void setDeviceFamilyVersion(const wchar_t* text, std::uint32_t length) noexcept = 0;
    virtual void setOperatingSystem(const wchar_t* text, std::uint32_t length) noexcept = 0;

    /// The number of calls since the reset, and the name of each, in their order.
    virtual std::uint32_t callCount() noexcept = 0;
    virtual const char* callName(std::uint32_t index) noexcept = 0;

    /// The number of a class's factories that were handed out since the reset, and each of them, in
    /// the order of the requests.
    virtual std::uint32_t factoryCount(const char* runtimeClass) noexcept = 0;
    virtual Factory factory(const char* runtimeClass, std::uint32_t index) noexcept = 0;

    /// How many more objects other than factories are held than at the reset.
    virtual std::int32_t liveObjects() noexcept = 0;
    /// How often a factory was used although its last reference had been released.
    virtual std::uint32_t usesAfterRelease() noexcept = 0;

  protected:
    ~Control() = default;
};

/// The name of the exported function that gives the one `Control` of the process.
inline constexpr const char* kControlExport = "standInRuntimeControl";
using GetControl = Control* (*)();

}  // namespace Orvel::StandIn

#endif
