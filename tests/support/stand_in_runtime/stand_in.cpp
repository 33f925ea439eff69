#include "support/stand_in_runtime/stand_in.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <bit>
#include <stdexcept>

#include "support/stand_in_runtime/class_names.h"

namespace Orvel::StandIn {
namespace {

std::wstring registeredPath() {
    const std::wstring key = std::wstring(kClassesKey) + std::wstring(kClassNames.front());
    std::array<wchar_t, 1024> path{};
    DWORD size = sizeof path;
    if (RegGetValueW(HKEY_LOCAL_MACHINE, key.c_str(), kDllPathValue, RRF_RT_REG_SZ, nullptr,
                     path.data(), &size) != ERROR_SUCCESS) {
        throw std::runtime_error("no stand-in runtime is registered; ./dev windows registers it");
    }
    return path.data();
}

/// Loads the stand-in for the rest of the process, before the runtime does, and from the same file,
/// so that both have one instance.
Control* load() {
    const HMODULE library = LoadLibraryW(registeredPath().c_str());
    if (library == nullptr) {
        throw std::runtime_error("the registered stand-in runtime cannot be loaded");
    }
    const FARPROC function = GetProcAddress(library, kControlExport);
    if (function == nullptr) {
        throw std::runtime_error("what is registered for the runtime classes is no stand-in");
    }
    return std::bit_cast<GetControl>(function)();
}

void run(void* context) { (*static_cast<std::function<void()>*>(context))(); }

void check(bool isKnown, const std::string& name) {
    if (!isKnown) {
        throw std::invalid_argument("the stand-in runtime knows no " + name);
    }
}

}  // namespace

StandIn::StandIn() {
    static Control* const control = load();
    control_ = control;
    control_->reset();
}

StandIn::~StandIn() { control_->reset(); }

void StandIn::fail(const std::string& call, std::uint32_t status, std::uint32_t from,
                   std::uint32_t times) {
    check(control_->fail(call.c_str(), static_cast<std::int32_t>(status), from, times), call);
}

void StandIn::failAt(std::uint32_t index, std::uint32_t status) {
    control_->failAt(index, static_cast<std::int32_t>(status));
}

void StandIn::runInside(const std::string& call, std::function<void()> action) {
    actions_.push_back(std::move(action));
    check(control_->runInside(call.c_str(), {run, &actions_.back()}), call);
}

void StandIn::setAgile(const std::string& runtimeClass, bool agile) {
    check(control_->setAgile(runtimeClass.c_str(), agile), runtimeClass);
}

void StandIn::setNullLookupYieldsNothing() { control_->setNullLookupYieldsNothing(true); }

void StandIn::setDeviceFamilyVersion(std::wstring_view text) {
    control_->setDeviceFamilyVersion(text.data(), static_cast<std::uint32_t>(text.size()));
}

void StandIn::setOperatingSystem(std::wstring_view text) {
    control_->setOperatingSystem(text.data(), static_cast<std::uint32_t>(text.size()));
}

std::vector<std::string> StandIn::calls() const {
    std::vector<std::string> calls;
    for (std::uint32_t at = 0; at < control_->callCount(); ++at) {
        calls.emplace_back(control_->callName(at));
    }
    return calls;
}

std::size_t StandIn::count(std::string_view call) const {
    const auto all = calls();
    return static_cast<std::size_t>(std::count(all.begin(), all.end(), call));
}

std::vector<Factory> StandIn::factories(const std::string& runtimeClass) const {
    std::vector<Factory> factories;
    for (std::uint32_t at = 0; at < control_->factoryCount(runtimeClass.c_str()); ++at) {
        factories.push_back(control_->factory(runtimeClass.c_str(), at));
    }
    return factories;
}

std::uint32_t StandIn::factoryReferences(const std::string& runtimeClass) const {
    std::uint32_t references = 0;
    for (const Factory& factory : factories(runtimeClass)) {
        references += factory.references;
    }
    return references;
}

}  // namespace Orvel::StandIn
