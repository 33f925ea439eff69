/// The stand-in itself, asked as the platform is: what is recorded of the platform's classes holds.

#include <initguid.h>
#include <windows.h>
// The ids are to be defined here, before anything else declares them.

#include <gtest/gtest.h>
#include <roapi.h>
#include <winstring.h>

#include <string>
#include <thread>

#include "support/stand_in_runtime/abi.h"
#include "support/stand_in_runtime/com_object.h"
#include "support/stand_in_runtime/stand_in.h"

namespace {

using namespace Orvel::StandIn;

constexpr const wchar_t* kObject = L"Windows.Data.Json.JsonObject";
constexpr const wchar_t* kArray = L"Windows.Data.Json.JsonArray";
constexpr const wchar_t* kValue = L"Windows.Data.Json.JsonValue";
constexpr const wchar_t* kDevice =
    L"Windows.Security.ExchangeActiveSyncProvisioning.EasClientDeviceInformation";

/// A text as the platform has it.
class Text {
  public:
    Text() = default;
    explicit Text(const std::wstring& text) {
        WindowsCreateString(text.data(), static_cast<UINT32>(text.size()), &string_);
    }
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    ~Text() { WindowsDeleteString(string_); }

    HSTRING get() const { return string_; }
    HSTRING* receive() { return &string_; }
    std::wstring copy() const {
        UINT32 length = 0;
        const wchar_t* const text = WindowsGetStringRawBuffer(string_, &length);
        return {text, length};
    }

  private:
    HSTRING string_ = nullptr;
};

template <typename Interface>
Reference<Interface> factoryOf(const wchar_t* runtimeClass) {
    void* factory = nullptr;
    EXPECT_EQ(RoGetActivationFactory(Text(runtimeClass).get(), Traits<Interface>::id(), &factory),
              S_OK);
    return Reference<Interface>::adopt(static_cast<Interface*>(factory));
}

template <typename Interface, typename Object>
Reference<Interface> viewed(const Reference<Object>& object) {
    void* view = nullptr;
    EXPECT_EQ(object->QueryInterface(Traits<Interface>::id(), &view), S_OK);
    return Reference<Interface>::adopt(static_cast<Interface*>(view));
}

template <typename Interface>
Reference<Interface> activate(const wchar_t* runtimeClass) {
    IInspectable* instance = nullptr;
    EXPECT_EQ(factoryOf<IActivationFactory>(runtimeClass)->ActivateInstance(&instance), S_OK);
    return viewed<Interface>(Reference<IInspectable>::adopt(instance));
}

Reference<IJsonObject> parse(const std::wstring& text) {
    IJsonObject* object = nullptr;
    EXPECT_EQ(factoryOf<IJsonObjectStatics>(kObject)->Parse(Text(text).get(), &object), S_OK);
    return Reference<IJsonObject>::adopt(object);
}

Reference<IJsonValue> member(const Reference<IJsonObject>& object, const wchar_t* name) {
    IJsonValue* value = nullptr;
    EXPECT_EQ(object->GetNamedValue(Text(name).get(), &value), S_OK);
    return Reference<IJsonValue>::adopt(value);
}

template <typename Object>
std::wstring textOf(const Reference<Object>& object) {
    Text text;
    EXPECT_EQ(viewed<IJsonValue>(object)->Stringify(text.receive()), S_OK);
    return text.copy();
}

template <typename Object>
bool isAgile(const Reference<Object>& object) {
    void* agile = nullptr;
    const bool is = SUCCEEDED(object->QueryInterface(IID_IAgileObject, &agile));
    if (is) {
        object->Release();
    }
    return is;
}

class StandInRuntime : public testing::Test {
  protected:
    static void SetUpTestSuite() { ASSERT_EQ(RoInitialize(RO_INIT_MULTITHREADED), S_OK); }
    static void TearDownTestSuite() { RoUninitialize(); }
    void TearDown() override {
        EXPECT_EQ(runtime.liveObjects(), 0);
        for (const std::string_view name : kClasses) {
            EXPECT_EQ(runtime.factoryReferences(std::string(name)), 0U) << name;
        }
    }

    StandIn runtime;
    const std::wstring allTypes =
        L"{\"z\":null,\"b\":true,\"n\":1.5,\"s\":\"x\",\"a\":[1],\"o\":{}}";
};

TEST_F(StandInRuntime, TellsTheTypeOfAValue) {
    const auto object = parse(allTypes);
    std::wstring types;
    for (const wchar_t* const name : {L"z", L"b", L"n", L"s", L"a", L"o"}) {
        JsonValueType type{};
        EXPECT_EQ(member(object, name)->get_ValueType(&type), S_OK);
        types += std::to_wstring(static_cast<int>(type));
    }
    EXPECT_EQ(types, L"012345");
}

TEST_F(StandInRuntime, GivesTheContentOfAValueOfTheType) {
    const auto object = parse(allTypes);
    Text text;
    double number = 0;
    boolean truth = 0;
    IJsonArray* array = nullptr;
    IJsonObject* inner = nullptr;
    EXPECT_EQ(member(object, L"s")->GetString(text.receive()), S_OK);
    EXPECT_EQ(member(object, L"n")->GetNumber(&number), S_OK);
    EXPECT_EQ(member(object, L"b")->GetBoolean(&truth), S_OK);
    EXPECT_EQ(member(object, L"a")->GetArray(&array), S_OK);
    EXPECT_EQ(member(object, L"o")->GetObject(&inner), S_OK);
    EXPECT_EQ(text.copy(), L"x");
    EXPECT_EQ(number, 1.5);
    EXPECT_EQ(truth, 1);
    EXPECT_EQ(textOf(Reference<IJsonArray>::adopt(array)), L"[1]");
    EXPECT_EQ(textOf(Reference<IJsonObject>::adopt(inner)), L"{}");
}

TEST_F(StandInRuntime, RefusesTheContentOfAnotherType) {
    const auto null = member(parse(allTypes), L"z");
    Text text;
    double number = 0;
    boolean truth = 0;
    IJsonArray* array = nullptr;
    IJsonObject* object = nullptr;
    EXPECT_EQ(null->GetString(text.receive()), kIllegalMethodCall);
    EXPECT_EQ(null->GetNumber(&number), kIllegalMethodCall);
    EXPECT_EQ(null->GetBoolean(&truth), kIllegalMethodCall);
    EXPECT_EQ(null->GetArray(&array), kIllegalMethodCall);
    EXPECT_EQ(null->GetObject(&object), kIllegalMethodCall);
    EXPECT_EQ(null->GetString(nullptr), kIllegalMethodCall);
    EXPECT_EQ(null->GetArray(nullptr), E_POINTER);
    EXPECT_EQ(null->GetObject(nullptr), E_POINTER);
}

TEST_F(StandInRuntime, RefusesMembersThatAreMissingOrOfAnotherType) {
    const auto object = parse(allTypes);
    Text text;
    double number = 0;
    boolean truth = 0;
    IJsonValue* value = nullptr;
    EXPECT_EQ(object->GetNamedValue(Text(L"x").get(), &value), kJsonValueNotFound);
    EXPECT_EQ(object->GetNamedString(Text(L"S").get(), text.receive()), kJsonValueNotFound);
    EXPECT_EQ(object->GetNamedNumber(nullptr, &number), kJsonValueNotFound);
    EXPECT_EQ(object->GetNamedString(Text(L"n").get(), text.receive()), kIllegalMethodCall);
    EXPECT_EQ(object->GetNamedNumber(Text(L"z").get(), &number), kIllegalMethodCall);
    EXPECT_EQ(object->GetNamedBoolean(Text(L"s").get(), &truth), kIllegalMethodCall);
    EXPECT_EQ(object->GetNamedBoolean(Text(L"x").get(), nullptr), E_POINTER);
    EXPECT_EQ(object->GetNamedNumber(Text(L"n").get(), &number), S_OK);
    EXPECT_EQ(number, 1.5);
}

TEST_F(StandInRuntime, RefusesWhatIsOutOfBounds) {
    const auto map = viewed<ValueMap>(parse(allTypes));
    IJsonValue* value = nullptr;
    EXPECT_EQ(map->Lookup(Text(L"x").get(), &value), kOutOfBounds);
    const auto vector = viewed<ValueVector>(activate<IJsonArray>(kArray));
    EXPECT_EQ(vector->GetAt(0, &value), kOutOfBounds);
}

TEST_F(StandInRuntime, ShowsTheSameMapDirectlyAndInAView) {
    const auto object = parse(allTypes);
    const auto map = viewed<ValueMap>(object);
    ValueMapView* given = nullptr;
    ASSERT_EQ(map->GetView(&given), S_OK);
    const auto view = Reference<ValueMapView>::adopt(given);
    object->SetNamedValue(Text(L"new").get(), member(object, L"n").get());
    UINT32 size = 0;
    boolean found = 0;
    EXPECT_EQ(map->get_Size(&size), S_OK);
    EXPECT_EQ(size, 7U);
    EXPECT_EQ(view->get_Size(&size), S_OK);
    EXPECT_EQ(size, 7U);
    EXPECT_EQ(map->HasKey(Text(L"new").get(), &found), S_OK);
    EXPECT_EQ(found, 1);
    IJsonValue* value = nullptr;
    ASSERT_EQ(map->Lookup(Text(L"new").get(), &value), S_OK);
    EXPECT_EQ(textOf(Reference<IJsonValue>::adopt(value)), L"1.5");
}

TEST_F(StandInRuntime, RemovesAMemberThatIsSetToNothing) {
    const auto object = parse(L"{\"a\":1,\"b\":2,\"c\":3}");
    EXPECT_EQ(object->SetNamedValue(Text(L"b").get(), nullptr), S_OK);
    EXPECT_EQ(object->SetNamedValue(Text(L"x").get(), nullptr), S_OK);
    EXPECT_EQ(object->SetNamedValue(Text(L"c").get(), member(object, L"a").get()), S_OK);
    EXPECT_EQ(textOf(object), L"{\"a\":1,\"c\":1}");
}

TEST_F(StandInRuntime, SharesAChildBetweenParents) {
    const auto object = activate<IJsonObject>(kObject);
    const auto array = activate<IJsonArray>(kArray);
    {
        IJsonValue* value = nullptr;
        ASSERT_EQ(factoryOf<IJsonValueStatics>(kValue)->CreateStringValue(nullptr, &value), S_OK);
        const auto child = Reference<IJsonValue>::adopt(value);
        object->SetNamedValue(Text(L"a").get(), child.get());
        viewed<ValueVector>(array)->Append(child.get());
    }
    EXPECT_EQ(textOf(object), L"{\"a\":\"\"}");
    EXPECT_EQ(textOf(array), L"[\"\"]");
}

TEST_F(StandInRuntime, SaysWhatIsAgile) {
    EXPECT_TRUE(isAgile(factoryOf<IActivationFactory>(kObject)));
    EXPECT_TRUE(isAgile(factoryOf<IActivationFactory>(kDevice)));
    EXPECT_TRUE(isAgile(activate<IJsonObject>(kObject)));
    EXPECT_TRUE(isAgile(activate<IJsonArray>(kArray)));
    EXPECT_FALSE(isAgile(activate<IEasClientDeviceInformation>(kDevice)));
}

TEST_F(StandInRuntime, AnObjectThatIsNotAgileServesItsThreadOnly) {
    const auto device = activate<IEasClientDeviceInformation>(kDevice);
    Text name;
    HRESULT status = S_OK;
    std::thread([&] { status = device->get_OperatingSystem(name.receive()); }).join();
    EXPECT_EQ(status, RPC_E_WRONG_THREAD);
    EXPECT_EQ(device->get_OperatingSystem(name.receive()), S_OK);
    EXPECT_EQ(name.copy(), L"Windows");
}

TEST_F(StandInRuntime, AFactoryIsNoInstance) {
    void* object = nullptr;
    EXPECT_EQ(factoryOf<IActivationFactory>(kObject)->QueryInterface(kJsonObjectId, &object),
              E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    IInspectable* value = nullptr;
    EXPECT_EQ(factoryOf<IActivationFactory>(kValue)->ActivateInstance(&value), E_NOTIMPL);
}

TEST_F(StandInRuntime, AnObjectKnowsItsClassAndInterfaces) {
    const auto object = activate<IJsonObject>(kObject);
    Text name;
    EXPECT_EQ(object->GetRuntimeClassName(name.receive()), S_OK);
    EXPECT_EQ(name.copy(), kObject);
    ULONG count = 0;
    IID* ids = nullptr;
    ASSERT_EQ(object->GetIids(&count, &ids), S_OK);
    EXPECT_EQ(count, 4U);
    for (ULONG at = 0; at < count; ++at) {
        void* view = nullptr;
        EXPECT_EQ(object->QueryInterface(ids[at], &view), S_OK);
        object->Release();
    }
    CoTaskMemFree(ids);
}

TEST_F(StandInRuntime, KnowsNoOtherCallsAndClasses) {
    EXPECT_THROW(runtime.fail("IJsonObject.Nothing", 0x80004005), std::invalid_argument);
    EXPECT_THROW(runtime.runInside("Nothing", [] {}), std::invalid_argument);
    EXPECT_THROW(runtime.setAgile("Nothing", false), std::invalid_argument);
}

}  // namespace
