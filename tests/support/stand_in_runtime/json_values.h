#ifndef ORVEL_STAND_IN_RUNTIME_JSON_VALUES_H
#define ORVEL_STAND_IN_RUNTIME_JSON_VALUES_H

#include <cstddef>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "support/stand_in_runtime/node.h"

/// The JSON classes. What no user of the stand-in calls answers E_NOTIMPL.
namespace Orvel::StandIn {

Reference<Node> makeNull();
Reference<Node> makeBoolean(bool value);
Reference<Node> makeNumber(double value);
Reference<Node> makeString(std::wstring value);

/// Windows.Data.Json.JsonObject. Members keep the order in which they came.
class JsonObject final : public JsonNode<IJsonObject, ValueMap> {
  public:
    JsonValueType type() const override { return JsonValueType::Object; }
    void write(std::wstring& text) const override;
    IJsonObject* asObject() override { return this; }

    void set(const std::wstring& name, Reference<Node> value);
    void remove(const std::wstring& name);
    /// The member's value, or null.
    Node* find(HSTRING name) const;
    UINT32 size() const { return static_cast<UINT32>(members_.size()); }

    HRESULT STDMETHODCALLTYPE GetNamedValue(HSTRING name, IJsonValue** value) override;
    HRESULT STDMETHODCALLTYPE SetNamedValue(HSTRING name, IJsonValue* value) override;
    HRESULT STDMETHODCALLTYPE GetNamedObject(HSTRING name, IJsonObject** value) override;
    HRESULT STDMETHODCALLTYPE GetNamedArray(HSTRING name, IJsonArray** value) override;
    HRESULT STDMETHODCALLTYPE GetNamedString(HSTRING name, HSTRING* value) override;
    HRESULT STDMETHODCALLTYPE GetNamedNumber(HSTRING name, double* value) override;
    HRESULT STDMETHODCALLTYPE GetNamedBoolean(HSTRING name, boolean* value) override;

    HRESULT STDMETHODCALLTYPE Lookup(HSTRING name, IJsonValue** value) override;
    HRESULT STDMETHODCALLTYPE get_Size(UINT32* size) override;
    HRESULT STDMETHODCALLTYPE HasKey(HSTRING name, boolean* found) override;
    HRESULT STDMETHODCALLTYPE GetView(ValueMapView** view) override;
    HRESULT STDMETHODCALLTYPE Insert(HSTRING, IJsonValue*, boolean*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Remove(HSTRING) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Clear() override { return E_NOTIMPL; }

  protected:
    std::wstring_view runtimeClassName() const override { return L"Windows.Data.Json.JsonObject"; }

  private:
    std::vector<std::pair<std::wstring, Reference<Node>>> members_;
    std::unordered_map<std::wstring, std::size_t> index_;
};

/// What `JsonObject::GetView` gives: a view of the live object.
class JsonObjectView final : public ComObject<ValueMapView, IAgileObject> {
  public:
    explicit JsonObjectView(JsonObject* object) : object_(Reference<JsonObject>::share(object)) {}

    HRESULT STDMETHODCALLTYPE Lookup(HSTRING name, IJsonValue** value) override;
    HRESULT STDMETHODCALLTYPE get_Size(UINT32* size) override;
    HRESULT STDMETHODCALLTYPE HasKey(HSTRING name, boolean* found) override;
    HRESULT STDMETHODCALLTYPE Split(ValueMapView**, ValueMapView**) override { return E_NOTIMPL; }

  protected:
    std::wstring_view runtimeClassName() const override {
        return L"Windows.Foundation.Collections.IMapView`2<String, Windows.Data.Json.IJsonValue>";
    }

  private:
    Reference<JsonObject> object_;
};

/// Windows.Data.Json.JsonArray.
class JsonArray final : public JsonNode<IJsonArray, ValueVector> {
  public:
    JsonValueType type() const override { return JsonValueType::Array; }
    void write(std::wstring& text) const override;
    IJsonArray* asArray() override { return this; }

    void add(Reference<Node> value) { elements_.push_back(std::move(value)); }

    HRESULT STDMETHODCALLTYPE GetObjectAt(UINT32, IJsonObject**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetArrayAt(UINT32, IJsonArray**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetStringAt(UINT32, HSTRING*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetNumberAt(UINT32, double*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetBooleanAt(UINT32, boolean*) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE GetAt(UINT32 index, IJsonValue** value) override;
    HRESULT STDMETHODCALLTYPE get_Size(UINT32* size) override;
    HRESULT STDMETHODCALLTYPE GetView(ValueVectorView**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IndexOf(IJsonValue*, UINT32*, boolean*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetAt(UINT32, IJsonValue*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE InsertAt(UINT32, IJsonValue*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE RemoveAt(UINT32) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Append(IJsonValue* value) override;
    HRESULT STDMETHODCALLTYPE RemoveAtEnd() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Clear() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetMany(UINT32, UINT32, IJsonValue**, UINT32*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE ReplaceAll(UINT32, IJsonValue**) override { return E_NOTIMPL; }

  protected:
    std::wstring_view runtimeClassName() const override { return L"Windows.Data.Json.JsonArray"; }

  private:
    std::vector<Reference<Node>> elements_;
};

inline Reference<JsonObject> makeObject() { return Reference<JsonObject>::adopt(new JsonObject); }
inline Reference<JsonArray> makeArray() { return Reference<JsonArray>::adopt(new JsonArray); }

}  // namespace Orvel::StandIn

#endif
