#include "support/stand_in_runtime/factory.h"
#include "support/stand_in_runtime/json_text.h"
#include "support/stand_in_runtime/json_values.h"

namespace Orvel::StandIn {
namespace {

class JsonArrayFactory final : public CountedFactory<> {
  public:
    using CountedFactory::CountedFactory;

    HRESULT STDMETHODCALLTYPE ActivateInstance(IInspectable** instance) override {
        return performCounted("JsonArray.ActivateInstance", [&]() -> HRESULT {
            *instance = static_cast<IJsonArray*>(makeArray().release());
            return S_OK;
        });
    }
};

class JsonObjectFactory final : public CountedFactory<IJsonObjectStatics> {
  public:
    using CountedFactory::CountedFactory;

    HRESULT STDMETHODCALLTYPE ActivateInstance(IInspectable** instance) override {
        return performCounted("JsonObject.ActivateInstance", [&]() -> HRESULT {
            *instance = static_cast<IJsonObject*>(makeObject().release());
            return S_OK;
        });
    }

    HRESULT STDMETHODCALLTYPE Parse(HSTRING input, IJsonObject** value) override {
        return performCounted("IJsonObjectStatics.Parse", [&]() -> HRESULT {
            if (value == nullptr) {
                return E_POINTER;
            }
            Reference<Node> parsed;
            const HRESULT status = parse(textOf(input), parsed);
            if (FAILED(status)) {
                return status;
            }
            IJsonObject* const object = parsed->asObject();
            return object == nullptr ? kInvalidJsonString : share(object, value);
        });
    }
    HRESULT STDMETHODCALLTYPE TryParse(HSTRING, IJsonObject**, boolean*) override {
        return E_NOTIMPL;
    }
};

class JsonValueFactory final : public CountedFactory<IJsonValueStatics> {
  public:
    using CountedFactory::CountedFactory;

    HRESULT STDMETHODCALLTYPE Parse(HSTRING, IJsonValue**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE TryParse(HSTRING, IJsonValue**, boolean*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE CreateBooleanValue(boolean, IJsonValue**) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE CreateNumberValue(double input, IJsonValue** value) override {
        return performCounted("IJsonValueStatics.CreateNumberValue", [&]() -> HRESULT {
            *value = makeNumber(input).release();
            return S_OK;
        });
    }
    HRESULT STDMETHODCALLTYPE CreateStringValue(HSTRING input, IJsonValue** value) override {
        return performCounted("IJsonValueStatics.CreateStringValue", [&]() -> HRESULT {
            *value = makeString(std::wstring(textOf(input))).release();
            return S_OK;
        });
    }
};

}  // namespace

std::unique_ptr<KeptFactory> makeJsonArrayFactory(const ClassNames& names) {
    return std::make_unique<JsonArrayFactory>(names);
}

std::unique_ptr<KeptFactory> makeJsonObjectFactory(const ClassNames& names) {
    return std::make_unique<JsonObjectFactory>(names);
}

std::unique_ptr<KeptFactory> makeJsonValueFactory(const ClassNames& names) {
    return std::make_unique<JsonValueFactory>(names);
}

}  // namespace Orvel::StandIn
