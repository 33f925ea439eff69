#ifndef ORVEL_STAND_IN_RUNTIME_ABI_H
#define ORVEL_STAND_IN_RUNTIME_ABI_H

#include <activation.h>
#include <inspectable.h>
#include <windows.foundation.collections.h>
#include <windows.h>
#include <windows.security.exchangeactivesyncprovisioning.h>
#include <windows.system.profile.h>

#include "support/stand_in_runtime/calls.h"

// The graphics header's macro would rename the method of IJsonValue.
#undef GetObject

/// The interfaces that the stand-in implements. They are declared apart from the library's, so that
/// the two check each other; where the platform's headers know an interface, it is theirs.
namespace Orvel::StandIn {

using ABI::Windows::Foundation::Collections::IMap;
using ABI::Windows::Foundation::Collections::IMapView;
using ABI::Windows::Foundation::Collections::IVector;
using ABI::Windows::Foundation::Collections::IVectorView;
using ABI::Windows::Security::ExchangeActiveSyncProvisioning::IEasClientDeviceInformation;
using ABI::Windows::System::Profile::IAnalyticsInfoStatics;
using ABI::Windows::System::Profile::IAnalyticsVersionInfo;

struct IJsonArray;
struct IJsonObject;

enum class JsonValueType : std::int32_t {
    Null = 0,
    Boolean = 1,
    Number = 2,
    String = 3,
    Array = 4,
    Object = 5,
};

struct IJsonValue : IInspectable {
    virtual HRESULT STDMETHODCALLTYPE get_ValueType(JsonValueType* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE Stringify(HSTRING* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetString(HSTRING* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetNumber(double* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetBoolean(boolean* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetArray(IJsonArray** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetObject(IJsonObject** value) = 0;
};

struct IJsonValueStatics : IInspectable {
    virtual HRESULT STDMETHODCALLTYPE Parse(HSTRING input, IJsonValue** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE TryParse(HSTRING input, IJsonValue** result,
                                               boolean* succeeded) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateBooleanValue(boolean input, IJsonValue** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateNumberValue(double input, IJsonValue** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateStringValue(HSTRING input, IJsonValue** value) = 0;
};

struct IJsonObject : IInspectable {
    virtual HRESULT STDMETHODCALLTYPE GetNamedValue(HSTRING name, IJsonValue** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetNamedValue(HSTRING name, IJsonValue* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetNamedObject(HSTRING name, IJsonObject** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetNamedArray(HSTRING name, IJsonArray** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetNamedString(HSTRING name, HSTRING* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetNamedNumber(HSTRING name, double* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetNamedBoolean(HSTRING name, boolean* value) = 0;
};

struct IJsonObjectStatics : IInspectable {
    virtual HRESULT STDMETHODCALLTYPE Parse(HSTRING input, IJsonObject** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE TryParse(HSTRING input, IJsonObject** result,
                                               boolean* succeeded) = 0;
};

struct IJsonArray : IInspectable {
    virtual HRESULT STDMETHODCALLTYPE GetObjectAt(UINT32 index, IJsonObject** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetArrayAt(UINT32 index, IJsonArray** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetStringAt(UINT32 index, HSTRING* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetNumberAt(UINT32 index, double* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetBooleanAt(UINT32 index, boolean* value) = 0;
};

using ValueMap = IMap<HSTRING, IJsonValue*>;
using ValueMapView = IMapView<HSTRING, IJsonValue*>;
using ValueVector = IVector<IJsonValue*>;
using ValueVectorView = IVectorView<IJsonValue*>;

inline constexpr GUID kJsonValueId{
    0xa3219ecb, 0xf0b3, 0x4dcd, {0xbe, 0xee, 0x19, 0xd4, 0x8c, 0xd3, 0xed, 0x1e}};
inline constexpr GUID kJsonValueStaticsId{
    0x5f6b544a, 0x2f53, 0x48e1, {0x91, 0xa3, 0xf7, 0x8b, 0x50, 0xa6, 0x34, 0x5c}};
inline constexpr GUID kJsonObjectId{
    0x064e24dd, 0x29c2, 0x4f83, {0x9a, 0xc1, 0x9e, 0xe1, 0x15, 0x78, 0xbe, 0xb3}};
inline constexpr GUID kJsonObjectStaticsId{
    0x2289f159, 0x54de, 0x45d8, {0xab, 0xcc, 0x22, 0x60, 0x3f, 0xa0, 0x66, 0xa0}};
inline constexpr GUID kJsonArrayId{
    0x08c1ddb6, 0x0cbd, 0x4a9a, {0xb5, 0xd3, 0x2f, 0x85, 0x2d, 0xc3, 0x7e, 0x81}};
inline constexpr GUID kValueMapId{
    0xc9d9a725, 0x786b, 0x5113, {0xb4, 0xb7, 0x9b, 0x61, 0x76, 0x4c, 0x22, 0x0b}};
inline constexpr GUID kValueMapViewId{
    0xeecd690c, 0x1ff3, 0x529f, {0x92, 0x3f, 0x9b, 0x1c, 0x31, 0xfd, 0x3d, 0x0f}};
inline constexpr GUID kValueVectorId{
    0xd44662bc, 0xdce3, 0x59a8, {0x92, 0x72, 0x4b, 0x21, 0x0f, 0x33, 0x90, 0x8b}};

/// What an object tells of an interface: its id, and the name of the call that asks for it.
template <typename Interface>
struct Traits;

#define ORVEL_STAND_IN_INTERFACE(Interface, interfaceId, queryName) \
    template <>                                                     \
    struct Traits<Interface> {                                      \
        static const GUID& id() { return interfaceId; }             \
        static constexpr Call query = queryName ".QueryInterface";  \
    }

ORVEL_STAND_IN_INTERFACE(IActivationFactory, IID_IActivationFactory, "IActivationFactory");
ORVEL_STAND_IN_INTERFACE(IAgileObject, IID_IAgileObject, "IAgileObject");
ORVEL_STAND_IN_INTERFACE(IAnalyticsInfoStatics,
                         IID___x_ABI_CWindows_CSystem_CProfile_CIAnalyticsInfoStatics,
                         "IAnalyticsInfoStatics");
ORVEL_STAND_IN_INTERFACE(IAnalyticsVersionInfo,
                         IID___x_ABI_CWindows_CSystem_CProfile_CIAnalyticsVersionInfo,
                         "IAnalyticsVersionInfo");
ORVEL_STAND_IN_INTERFACE(
    IEasClientDeviceInformation,
    IID___x_ABI_CWindows_CSecurity_CExchangeActiveSyncProvisioning_CIEasClientDeviceInformation,
    "IEasClientDeviceInformation");
ORVEL_STAND_IN_INTERFACE(IJsonArray, kJsonArrayId, "IJsonArray");
ORVEL_STAND_IN_INTERFACE(IJsonObject, kJsonObjectId, "IJsonObject");
ORVEL_STAND_IN_INTERFACE(IJsonObjectStatics, kJsonObjectStaticsId, "IJsonObjectStatics");
ORVEL_STAND_IN_INTERFACE(IJsonValue, kJsonValueId, "IJsonValue");
ORVEL_STAND_IN_INTERFACE(IJsonValueStatics, kJsonValueStaticsId, "IJsonValueStatics");
ORVEL_STAND_IN_INTERFACE(ValueMap, kValueMapId, "IMap");
ORVEL_STAND_IN_INTERFACE(ValueMapView, kValueMapViewId, "IMapView");
ORVEL_STAND_IN_INTERFACE(ValueVector, kValueVectorId, "IVector");

#undef ORVEL_STAND_IN_INTERFACE

inline constexpr HRESULT kInvalidJsonString = static_cast<HRESULT>(0x83750007);
inline constexpr HRESULT kInvalidJsonNumber = static_cast<HRESULT>(0x83750008);
inline constexpr HRESULT kJsonValueNotFound = static_cast<HRESULT>(0x83750009);
inline constexpr HRESULT kImplementationLimit = static_cast<HRESULT>(0x8007050C);
inline constexpr HRESULT kOutOfBounds = static_cast<HRESULT>(0x8000000B);
inline constexpr HRESULT kIllegalMethodCall = static_cast<HRESULT>(0x8000000E);

}  // namespace Orvel::StandIn

#endif
