#ifndef ORVEL_STAND_IN_RUNTIME_CLASS_NAMES_H
#define ORVEL_STAND_IN_RUNTIME_CLASS_NAMES_H

#include <array>
#include <string_view>

namespace Orvel::StandIn {

/// The runtime classes that the stand-in stands in for.
inline constexpr std::array<std::wstring_view, 5> kClassNames = {
    L"Windows.Data.Json.JsonArray", L"Windows.Data.Json.JsonObject", L"Windows.Data.Json.JsonValue",
    L"Windows.Security.ExchangeActiveSyncProvisioning.EasClientDeviceInformation",
    L"Windows.System.Profile.AnalyticsInfo"};

/// Where the runtime looks in the machine's registry for the DLL of a class: the key above the
/// classes' own, and the value that names the DLL.
inline constexpr std::wstring_view kClassesKey =
    L"Software\\Microsoft\\WindowsRuntime\\ActivatableClassId\\";
inline constexpr const wchar_t* kDllPathValue = L"DllPath";

}  // namespace Orvel::StandIn

#endif
