#ifndef ORVEL_STAND_IN_RUNTIME_CALLS_H
#define ORVEL_STAND_IN_RUNTIME_CALLS_H

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace Orvel::StandIn {

/// The runtime classes, each by the last part of its name.
inline constexpr std::array<std::string_view, 5> kClasses = {
    "AnalyticsInfo", "EasClientDeviceInformation", "JsonArray", "JsonObject", "JsonValue"};

/// Every call that a test can count, fail or interrupt. `FactoryReleased` is the moment after the
/// last reference to a factory is gone; it cannot fail.
inline constexpr auto kCalls = std::to_array<std::string_view>({
    "AnalyticsInfo.Factory",
    "AnalyticsInfo.FactoryReleased",
    "EasClientDeviceInformation.Factory",
    "EasClientDeviceInformation.ActivateInstance",
    "EasClientDeviceInformation.FactoryReleased",
    "JsonArray.Factory",
    "JsonArray.ActivateInstance",
    "JsonArray.FactoryReleased",
    "JsonObject.Factory",
    "JsonObject.ActivateInstance",
    "JsonObject.FactoryReleased",
    "JsonValue.Factory",
    "JsonValue.FactoryReleased",
    "IActivationFactory.QueryInterface",
    "IAgileObject.QueryInterface",
    "IAnalyticsInfoStatics.QueryInterface",
    "IAnalyticsInfoStatics.get_VersionInfo",
    "IAnalyticsVersionInfo.QueryInterface",
    "IAnalyticsVersionInfo.get_DeviceFamilyVersion",
    "IEasClientDeviceInformation.QueryInterface",
    "IEasClientDeviceInformation.get_OperatingSystem",
    "IJsonArray.QueryInterface",
    "IJsonObject.QueryInterface",
    "IJsonObject.GetNamedArray",
    "IJsonObject.GetNamedBoolean",
    "IJsonObject.GetNamedNumber",
    "IJsonObject.GetNamedObject",
    "IJsonObject.GetNamedString",
    "IJsonObject.GetNamedValue",
    "IJsonObject.SetNamedValue",
    "IJsonObjectStatics.QueryInterface",
    "IJsonObjectStatics.Parse",
    "IJsonValue.QueryInterface",
    "IJsonValue.get_ValueType",
    "IJsonValue.GetArray",
    "IJsonValue.GetBoolean",
    "IJsonValue.GetNumber",
    "IJsonValue.GetObject",
    "IJsonValue.GetString",
    "IJsonValue.Stringify",
    "IJsonValueStatics.QueryInterface",
    "IJsonValueStatics.CreateNumberValue",
    "IJsonValueStatics.CreateStringValue",
    "IMap.QueryInterface",
    "IMap.get_Size",
    "IMap.GetView",
    "IMap.HasKey",
    "IMap.Lookup",
    "IMapView.QueryInterface",
    "IMapView.get_Size",
    "IMapView.HasKey",
    "IMapView.Lookup",
    "IVector.QueryInterface",
    "IVector.Append",
    "IVector.get_Size",
    "IVector.GetAt",
});

template <std::size_t N>
constexpr std::optional<std::size_t> find(const std::array<std::string_view, N>& names,
                                          std::string_view name) {
    for (std::size_t index = 0; index < N; ++index) {
        if (names[index] == name) {
            return index;
        }
    }
    return std::nullopt;
}

/// A call, named in the source; a name that is not in the list does not compile.
struct Call {
    consteval Call(const char* name) : index(find(kCalls, name).value()) {}
    std::size_t index;
};

/// A class, likewise.
struct RuntimeClass {
    consteval RuntimeClass(const char* name) : index(find(kClasses, name).value()) {}
    std::size_t index;
};

}  // namespace Orvel::StandIn

#endif
