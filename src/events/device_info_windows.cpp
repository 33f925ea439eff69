#include "events/device_info.h"
#include "json/windows/abi.h"
#include "json/windows/factory.h"
#include "json/windows/runtime.h"

namespace Orvel::Analytics::Events {
namespace {

using Json::check;

constinit Json::RuntimeClass analyticsInfo{L"Windows.System.Profile.AnalyticsInfo"};
constinit Json::RuntimeClass deviceInformation{
    L"Windows.Security.ExchangeActiveSyncProvisioning.EasClientDeviceInformation"};

}  // namespace

WideString deviceFamilyVersion() {
    Json::ComPointer<Json::Abi::AnalyticsVersionInfo> versionInfo;
    check(analyticsInfo.statics<Json::Abi::AnalyticsInfoStatics>()->get_VersionInfo(
              versionInfo.receive()),
          "AnalyticsInfo.VersionInfo");
    Json::requireObject(versionInfo.get(), "AnalyticsInfo.VersionInfo");
    Json::ReceivedString version;
    check(versionInfo->get_DeviceFamilyVersion(version.receive()),
          "AnalyticsVersionInfo.DeviceFamilyVersion");
    return version.copy();
}

WideString operatingSystemName() {
    const auto device =
        Json::query<Json::Abi::EasClientDeviceInformation>(deviceInformation.activate().get());
    Json::ReceivedString name;
    check(device->get_OperatingSystem(name.receive()),
          "EasClientDeviceInformation.OperatingSystem");
    return name.copy();
}

}  // namespace Orvel::Analytics::Events
