#include "support/stand_in_runtime/factory.h"

namespace Orvel::StandIn {
namespace {

/// Windows.System.Profile.AnalyticsVersionInfo. What no user of the stand-in calls answers
/// E_NOTIMPL, here as in the other classes.
class VersionInfo final : public ComObject<IAnalyticsVersionInfo, IAgileObject> {
  public:
    HRESULT STDMETHODCALLTYPE get_DeviceFamily(HSTRING*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_DeviceFamilyVersion(HSTRING* value) override {
        return perform("IAnalyticsVersionInfo.get_DeviceFamilyVersion",
                       [&] { return handOut(Runtime::instance().deviceFamilyVersion(), value); });
    }

  protected:
    std::wstring_view runtimeClassName() const override {
        return L"Windows.System.Profile.AnalyticsVersionInfo";
    }
};

class AnalyticsInfoFactory final : public CountedFactory<IAnalyticsInfoStatics> {
  public:
    using CountedFactory::CountedFactory;

    HRESULT STDMETHODCALLTYPE get_VersionInfo(IAnalyticsVersionInfo** value) override {
        return performCounted("IAnalyticsInfoStatics.get_VersionInfo", [&]() -> HRESULT {
            *value = new VersionInfo;
            return S_OK;
        });
    }
    HRESULT STDMETHODCALLTYPE get_DeviceForm(HSTRING*) override { return E_NOTIMPL; }
};

/// Windows.Security.ExchangeActiveSyncProvisioning.EasClientDeviceInformation. The platform does
/// not say that its instances are agile, so they serve the thread that made them only.
class DeviceInformation final : public ComObject<IEasClientDeviceInformation> {
  public:
    HRESULT STDMETHODCALLTYPE get_Id(GUID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_OperatingSystem(HSTRING* value) override {
        return perform("IEasClientDeviceInformation.get_OperatingSystem", [&] {
            return GetCurrentThreadId() == thread_
                       ? handOut(Runtime::instance().operatingSystem(), value)
                       : RPC_E_WRONG_THREAD;
        });
    }
    HRESULT STDMETHODCALLTYPE get_FriendlyName(HSTRING*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_SystemManufacturer(HSTRING*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_SystemProductName(HSTRING*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_SystemSku(HSTRING*) override { return E_NOTIMPL; }

  protected:
    std::wstring_view runtimeClassName() const override {
        return L"Windows.Security.ExchangeActiveSyncProvisioning.EasClientDeviceInformation";
    }

  private:
    DWORD thread_ = GetCurrentThreadId();
};

class DeviceInformationFactory final : public CountedFactory<> {
  public:
    using CountedFactory::CountedFactory;

    HRESULT STDMETHODCALLTYPE ActivateInstance(IInspectable** instance) override {
        return performCounted("EasClientDeviceInformation.ActivateInstance", [&]() -> HRESULT {
            *instance = new DeviceInformation;
            return S_OK;
        });
    }
};

}  // namespace

std::unique_ptr<KeptFactory> makeAnalyticsInfoFactory(const ClassNames& names) {
    return std::make_unique<AnalyticsInfoFactory>(names);
}

std::unique_ptr<KeptFactory> makeDeviceInformationFactory(const ClassNames& names) {
    return std::make_unique<DeviceInformationFactory>(names);
}

}  // namespace Orvel::StandIn
