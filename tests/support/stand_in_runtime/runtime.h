#ifndef ORVEL_STAND_IN_RUNTIME_RUNTIME_H
#define ORVEL_STAND_IN_RUNTIME_RUNTIME_H

#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/stand_in_runtime/abi.h"
#include "support/stand_in_runtime/control.h"

namespace Orvel::StandIn {

/// A factory as the runtime keeps it: also when nobody holds it any more, so that a late use is
/// noticed instead of touching freed memory.
class KeptFactory {
  public:
    virtual ~KeptFactory() = default;
    [[nodiscard]] virtual IActivationFactory* asFactory() = 0;

    std::atomic<std::uint32_t> calls = 0;
    std::atomic<std::uint32_t> references = 1;
};

/// What was set and what happened, for the whole process.
class Runtime final : public Control {
  public:
    /// The one of the process. It lives until the process ends: a library may release what it holds
    /// later than the stand-in's own statics are destroyed.
    static Runtime& instance();

    void reset() noexcept override;
    bool fail(const char* call, std::int32_t status, std::uint32_t from,
              std::uint32_t times) noexcept override;
    void failAt(std::uint32_t index, std::int32_t status) noexcept override;
    bool runInside(const char* call, Action action) noexcept override;
    bool setAgile(const char* runtimeClass, bool agile) noexcept override;
    void setNullLookupYieldsNothing(bool yieldsNothing) noexcept override;
    void setDeviceFamilyVersion(const wchar_t* text, std::uint32_t length) noexcept override;
    void setOperatingSystem(const wchar_t* text, std::uint32_t length) noexcept override;
    std::uint32_t callCount() noexcept override;
    const char* callName(std::uint32_t index) noexcept override;
    std::uint32_t factoryCount(const char* runtimeClass) noexcept override;
    Factory factory(const char* runtimeClass, std::uint32_t index) noexcept override;
    std::int32_t liveObjects() noexcept override;
    std::uint32_t usesAfterRelease() noexcept override;

    /// Notes a call and does what the test wants done inside it.
    /// @return the status with which the test wants it to fail, or S_OK.
    HRESULT enter(Call call);

    /// Keeps a factory that was just made, and hands out its first reference.
    IActivationFactory* keep(RuntimeClass runtimeClass, std::unique_ptr<KeptFactory> factory);

    [[nodiscard]] bool isAgile(RuntimeClass runtimeClass);
    [[nodiscard]] bool nullLookupYieldsNothing();
    [[nodiscard]] std::wstring deviceFamilyVersion();
    [[nodiscard]] std::wstring operatingSystem();

    std::atomic<std::int32_t> objects = 0;
    std::atomic<std::uint32_t> lateUses = 0;

  private:
    struct Failure {
        HRESULT status = S_OK;
        std::uint32_t from = 1;
        std::uint32_t times = 0;
        std::uint32_t seen = 0;
    };
    struct Plan {
        Failure failure;
        Action action;
    };
    struct FailureAt {
        std::size_t index;
        HRESULT status;
    };
    struct Settings {
        std::array<Plan, kCalls.size()> plans;
        std::array<bool, kClasses.size()> isNotAgile{};
        std::optional<FailureAt> failureAt;
        bool nullLookupYieldsNothing = false;
        std::wstring deviceFamilyVersion = L"2814751015243250";
        std::wstring operatingSystem = L"Windows";
    };

    static HRESULT statusOf(Failure& failure);

    std::mutex mutex_;
    Settings settings_;
    std::vector<std::size_t> trace_;
    std::array<std::vector<std::unique_ptr<KeptFactory>>, kClasses.size()> factories_;
    /// Still held when a test ended; whoever holds them may use them yet.
    std::vector<std::unique_ptr<KeptFactory>> abandoned_;
    std::atomic<std::int32_t> objectsAtReset_ = 0;
};

/// Does the work of one call, unless the test wants the call to fail.
template <typename Work>
HRESULT perform(Call call, Work work) {
    const HRESULT status = Runtime::instance().enter(call);
    if (FAILED(status)) {
        return status;
    }
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

/// Gives a copy of `text` to the caller.
HRESULT handOut(std::wstring_view text, HSTRING* value);

std::wstring_view textOf(HSTRING string);

}  // namespace Orvel::StandIn

#endif
