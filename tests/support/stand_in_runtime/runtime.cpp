#include "support/stand_in_runtime/runtime.h"

#include <winstring.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace Orvel::StandIn {

Runtime& Runtime::instance() {
    static Runtime* const runtime = new Runtime;
    return *runtime;
}

void Runtime::reset() noexcept {
    const std::scoped_lock lock(mutex_);
    settings_ = Settings();
    trace_.clear();
    for (auto& factories : factories_) {
        std::erase_if(factories, [](const auto& factory) { return factory->references == 0; });
        std::move(factories.begin(), factories.end(), std::back_inserter(abandoned_));
        factories.clear();
    }
    objectsAtReset_ = objects.load();
    lateUses = 0;
}

bool Runtime::fail(const char* call, std::int32_t status, std::uint32_t from,
                   std::uint32_t times) noexcept {
    const auto index = find(kCalls, call);
    if (index) {
        const std::scoped_lock lock(mutex_);
        settings_.plans[*index].failure = {status, from, times, 0};
    }
    return index.has_value();
}

void Runtime::failAt(std::uint32_t index, std::int32_t status) noexcept {
    const std::scoped_lock lock(mutex_);
    settings_.failureAt = {trace_.size() + index, status};
}

bool Runtime::runInside(const char* call, Action action) noexcept {
    const auto index = find(kCalls, call);
    if (index) {
        const std::scoped_lock lock(mutex_);
        settings_.plans[*index].action = action;
    }
    return index.has_value();
}

bool Runtime::setAgile(const char* runtimeClass, bool agile) noexcept {
    const auto index = find(kClasses, runtimeClass);
    if (index) {
        const std::scoped_lock lock(mutex_);
        settings_.isNotAgile[*index] = !agile;
    }
    return index.has_value();
}

void Runtime::setNullLookupYieldsNothing(bool yieldsNothing) noexcept {
    const std::scoped_lock lock(mutex_);
    settings_.nullLookupYieldsNothing = yieldsNothing;
}

void Runtime::setDeviceFamilyVersion(const wchar_t* text, std::uint32_t length) noexcept {
    const std::scoped_lock lock(mutex_);
    settings_.deviceFamilyVersion.assign(text, length);
}

void Runtime::setOperatingSystem(const wchar_t* text, std::uint32_t length) noexcept {
    const std::scoped_lock lock(mutex_);
    settings_.operatingSystem.assign(text, length);
}

std::uint32_t Runtime::callCount() noexcept {
    const std::scoped_lock lock(mutex_);
    return static_cast<std::uint32_t>(trace_.size());
}

const char* Runtime::callName(std::uint32_t index) noexcept {
    const std::scoped_lock lock(mutex_);
    return kCalls.at(trace_.at(index)).data();
}

std::uint32_t Runtime::factoryCount(const char* runtimeClass) noexcept {
    const std::scoped_lock lock(mutex_);
    return static_cast<std::uint32_t>(factories_.at(find(kClasses, runtimeClass).value()).size());
}

Factory Runtime::factory(const char* runtimeClass, std::uint32_t index) noexcept {
    const std::scoped_lock lock(mutex_);
    const auto& kept = *factories_.at(find(kClasses, runtimeClass).value()).at(index);
    return {kept.calls, kept.references};
}

std::int32_t Runtime::liveObjects() noexcept { return objects - objectsAtReset_; }

std::uint32_t Runtime::usesAfterRelease() noexcept { return lateUses; }

HRESULT Runtime::statusOf(Failure& failure) {
    ++failure.seen;
    if (failure.seen < failure.from || failure.times == 0) {
        return S_OK;
    }
    --failure.times;
    return failure.status;
}

HRESULT Runtime::enter(Call call) {
    std::unique_lock lock(mutex_);
    Plan& plan = settings_.plans[call.index];
    HRESULT status = statusOf(plan.failure);
    if (settings_.failureAt && settings_.failureAt->index == trace_.size()) {
        status = settings_.failureAt->status;
    }
    trace_.push_back(call.index);
    const Action action = std::exchange(plan.action, {});
    lock.unlock();
    if (action.run != nullptr) {
        action.run(action.context);
    }
    return status;
}

IActivationFactory* Runtime::keep(RuntimeClass runtimeClass, std::unique_ptr<KeptFactory> factory) {
    const std::scoped_lock lock(mutex_);
    factories_[runtimeClass.index].push_back(std::move(factory));
    return factories_[runtimeClass.index].back()->asFactory();
}

bool Runtime::isAgile(RuntimeClass runtimeClass) {
    const std::scoped_lock lock(mutex_);
    return !settings_.isNotAgile[runtimeClass.index];
}

bool Runtime::nullLookupYieldsNothing() {
    const std::scoped_lock lock(mutex_);
    return settings_.nullLookupYieldsNothing;
}

std::wstring Runtime::deviceFamilyVersion() {
    const std::scoped_lock lock(mutex_);
    return settings_.deviceFamilyVersion;
}

std::wstring Runtime::operatingSystem() {
    const std::scoped_lock lock(mutex_);
    return settings_.operatingSystem;
}

HRESULT handOut(std::wstring_view text, HSTRING* value) {
    if (value == nullptr) {
        return E_POINTER;
    }
    return WindowsCreateString(text.data(), static_cast<UINT32>(text.size()), value);
}

std::wstring_view textOf(HSTRING string) {
    UINT32 length = 0;
    const wchar_t* const text = WindowsGetStringRawBuffer(string, &length);
    return {text, length};
}

}  // namespace Orvel::StandIn
