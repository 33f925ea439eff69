/// What the runtime and the tests find in the DLL; stand_in_runtime.def exports it.

#include <algorithm>
#include <array>

#include "support/stand_in_runtime/factory.h"

using namespace Orvel::StandIn;

namespace {

struct Class {
    ClassNames names;
    MakeFactory* make;
};

constexpr std::array<Class, 5> kRuntimeClasses = {{
    {{L"Windows.Data.Json.JsonArray", "JsonArray", "JsonArray.Factory",
      "JsonArray.FactoryReleased"},
     makeJsonArrayFactory},
    {{L"Windows.Data.Json.JsonObject", "JsonObject", "JsonObject.Factory",
      "JsonObject.FactoryReleased"},
     makeJsonObjectFactory},
    {{L"Windows.Data.Json.JsonValue", "JsonValue", "JsonValue.Factory",
      "JsonValue.FactoryReleased"},
     makeJsonValueFactory},
    {{L"Windows.Security.ExchangeActiveSyncProvisioning.EasClientDeviceInformation",
      "EasClientDeviceInformation", "EasClientDeviceInformation.Factory",
      "EasClientDeviceInformation.FactoryReleased"},
     makeDeviceInformationFactory},
    {{L"Windows.System.Profile.AnalyticsInfo", "AnalyticsInfo", "AnalyticsInfo.Factory",
      "AnalyticsInfo.FactoryReleased"},
     makeAnalyticsInfoFactory},
}};

/// Whether the thread is in an apartment or the process has one for all threads. The platform
/// refuses to activate anything where it is not so; an emulated one does not mind.
bool isInApartment() {
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    return CoGetApartmentType(&type, &qualifier) != CO_E_NOTINITIALIZED;
}

}  // namespace

extern "C" {

HRESULT STDMETHODCALLTYPE DllGetActivationFactory(HSTRING classId, IActivationFactory** factory) {
    if (!isInApartment()) {
        return CO_E_NOTINITIALIZED;
    }
    const auto found =
        std::find_if(kRuntimeClasses.begin(), kRuntimeClasses.end(),
                     [&](const Class& c) { return textOf(classId) == c.names.full; });
    if (found == kRuntimeClasses.end()) {
        return CLASS_E_CLASSNOTAVAILABLE;
    }
    return perform(found->names.request, [&]() -> HRESULT {
        *factory = Runtime::instance().keep(found->names.name, found->make(found->names));
        return S_OK;
    });
}

/// Never: a test may still ask what became of the objects.
HRESULT STDMETHODCALLTYPE DllCanUnloadNow() { return S_FALSE; }

Control* standInRuntimeControl() { return &Runtime::instance(); }
}
