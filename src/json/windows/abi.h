#ifndef ORVEL_JSON_WINDOWS_ABI_H
#define ORVEL_JSON_WINDOWS_ABI_H

#include <hstring.h>
#include <inspectable.h>
#include <windows.h>

/// The interfaces of the platform that the library calls, as its binary interface has them: the
/// order of the methods is the order in the virtual table, after the three of `IUnknown` and the
/// three of `IInspectable`. Objects that a method gives carry a reference; texts that it gives are
/// deleted by the caller; what it is given is only borrowed.
///
/// They are declared here because no compiler but Microsoft's has the projection of its SDK.
namespace Orvel::Analytics::Json::Abi {

using Boolean = unsigned char;

struct ActivationFactory : ::IInspectable {
    static constexpr GUID kId{
        0x00000035, 0x0000, 0x0000, {0xc0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

    virtual HRESULT STDMETHODCALLTYPE ActivateInstance(::IInspectable** instance) = 0;
};

/// Tells that an object may be used from any apartment; it has no methods of its own.
struct AgileObject : ::IUnknown {
    static constexpr GUID kId{
        0x94ea2b94, 0xe9cc, 0x49e0, {0xc0, 0xff, 0xee, 0x64, 0xca, 0x8f, 0x5b, 0x90}};
};

struct JsonArray;
struct JsonObject;

struct JsonValue : ::IInspectable {
    static constexpr GUID kId{
        0xa3219ecb, 0xf0b3, 0x4dcd, {0xbe, 0xee, 0x19, 0xd4, 0x8c, 0xd3, 0xed, 0x1e}};

    virtual HRESULT STDMETHODCALLTYPE get_ValueType(int* type) = 0;
    virtual HRESULT STDMETHODCALLTYPE Stringify(HSTRING* text) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetString(HSTRING* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetNumber(double* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetBoolean(Boolean* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetArray(JsonArray** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetObject(JsonObject** value) = 0;
};

struct JsonValueStatics : ::IInspectable {
    static constexpr GUID kId{
        0x5f6b544a, 0x2f53, 0x48e1, {0x91, 0xa3, 0xf7, 0x8b, 0x50, 0xa6, 0x34, 0x5c}};

    virtual HRESULT STDMETHODCALLTYPE Parse(HSTRING text, JsonValue** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE TryParse(HSTRING text, JsonValue** value,
                                               Boolean* succeeded) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateBooleanValue(Boolean boolean, JsonValue** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateNumberValue(double number, JsonValue** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateStringValue(HSTRING text, JsonValue** value) = 0;
};

struct JsonObject : ::IInspectable {
    static constexpr GUID kId{
        0x064e24dd, 0x29c2, 0x4f83, {0x9a, 0xc1, 0x9e, 0xe1, 0x15, 0x78, 0xbe, 0xb3}};

    virtual HRESULT STDMETHODCALLTYPE GetNamedValue(HSTRING name, JsonValue** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetNamedValue(HSTRING name, JsonValue* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetNamedObject(HSTRING name, JsonObject** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetNamedArray(HSTRING name, JsonArray** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetNamedString(HSTRING name, HSTRING* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetNamedNumber(HSTRING name, double* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetNamedBoolean(HSTRING name, Boolean* value) = 0;
};

struct JsonObjectStatics : ::IInspectable {
    static constexpr GUID kId{
        0x2289f159, 0x54de, 0x45d8, {0xab, 0xcc, 0x22, 0x60, 0x3f, 0xa0, 0x66, 0xa0}};

    virtual HRESULT STDMETHODCALLTYPE Parse(HSTRING text, JsonObject** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE TryParse(HSTRING text, JsonObject** value,
                                               Boolean* succeeded) = 0;
};

struct JsonArray : ::IInspectable {
    static constexpr GUID kId{
        0x08c1ddb6, 0x0cbd, 0x4a9a, {0xb5, 0xd3, 0x2f, 0x85, 0x2d, 0xc3, 0x7e, 0x81}};

    virtual HRESULT STDMETHODCALLTYPE GetObjectAt(UINT32 index, JsonObject** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetArrayAt(UINT32 index, JsonArray** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetStringAt(UINT32 index, HSTRING* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetNumberAt(UINT32 index, double* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetBooleanAt(UINT32 index, Boolean* value) = 0;
};

/// `IMapView<String, IJsonValue>`.
struct JsonMapView : ::IInspectable {
    static constexpr GUID kId{
        0xeecd690c, 0x1ff3, 0x529f, {0x92, 0x3f, 0x9b, 0x1c, 0x31, 0xfd, 0x3d, 0x0f}};

    virtual HRESULT STDMETHODCALLTYPE Lookup(HSTRING name, JsonValue** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Size(UINT32* size) = 0;
    virtual HRESULT STDMETHODCALLTYPE HasKey(HSTRING name, Boolean* found) = 0;
    virtual HRESULT STDMETHODCALLTYPE Split(JsonMapView** first, JsonMapView** second) = 0;
};

/// `IMap<String, IJsonValue>`.
struct JsonMap : ::IInspectable {
    static constexpr GUID kId{
        0xc9d9a725, 0x786b, 0x5113, {0xb4, 0xb7, 0x9b, 0x61, 0x76, 0x4c, 0x22, 0x0b}};

    virtual HRESULT STDMETHODCALLTYPE Lookup(HSTRING name, JsonValue** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Size(UINT32* size) = 0;
    virtual HRESULT STDMETHODCALLTYPE HasKey(HSTRING name, Boolean* found) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetView(JsonMapView** view) = 0;
    virtual HRESULT STDMETHODCALLTYPE Insert(HSTRING name, JsonValue* value, Boolean* replaced) = 0;
    virtual HRESULT STDMETHODCALLTYPE Remove(HSTRING name) = 0;
    virtual HRESULT STDMETHODCALLTYPE Clear() = 0;
};

/// `IVector<IJsonValue>`, as far as it is called.
struct JsonVector : ::IInspectable {
    static constexpr GUID kId{
        0xd44662bc, 0xdce3, 0x59a8, {0x92, 0x72, 0x4b, 0x21, 0x0f, 0x33, 0x90, 0x8b}};

    virtual HRESULT STDMETHODCALLTYPE GetAt(UINT32 index, JsonValue** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Size(UINT32* size) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetView(::IInspectable** view) = 0;
    virtual HRESULT STDMETHODCALLTYPE IndexOf(JsonValue* value, UINT32* index, Boolean* found) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetAt(UINT32 index, JsonValue* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE InsertAt(UINT32 index, JsonValue* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE RemoveAt(UINT32 index) = 0;
    virtual HRESULT STDMETHODCALLTYPE Append(JsonValue* value) = 0;
};

/// `Windows.System.Profile.IAnalyticsVersionInfo`.
struct AnalyticsVersionInfo : ::IInspectable {
    static constexpr GUID kId{
        0x926130b8, 0x9955, 0x4c74, {0xbd, 0xc1, 0x7c, 0xd0, 0xde, 0xcf, 0x9b, 0x03}};

    virtual HRESULT STDMETHODCALLTYPE get_DeviceFamily(HSTRING* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_DeviceFamilyVersion(HSTRING* value) = 0;
};

/// `Windows.System.Profile.IAnalyticsInfoStatics`.
struct AnalyticsInfoStatics : ::IInspectable {
    static constexpr GUID kId{
        0x1d5ee066, 0x188d, 0x5ba9, {0x43, 0x87, 0xac, 0xae, 0xb0, 0xe7, 0xe3, 0x05}};

    virtual HRESULT STDMETHODCALLTYPE get_VersionInfo(AnalyticsVersionInfo** value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_DeviceForm(HSTRING* value) = 0;
};

/// `Windows.Security.ExchangeActiveSyncProvisioning.IEasClientDeviceInformation`.
struct EasClientDeviceInformation : ::IInspectable {
    static constexpr GUID kId{
        0x54dfd981, 0x1968, 0x4ca3, {0xb9, 0x58, 0xe5, 0x95, 0xd1, 0x65, 0x05, 0xeb}};

    virtual HRESULT STDMETHODCALLTYPE get_Id(GUID* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_OperatingSystem(HSTRING* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_FriendlyName(HSTRING* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_SystemManufacturer(HSTRING* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_SystemProductName(HSTRING* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_SystemSku(HSTRING* value) = 0;
};

}  // namespace Orvel::Analytics::Json::Abi

#endif
