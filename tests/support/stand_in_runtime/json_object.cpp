#include "support/stand_in_runtime/json_text.h"
#include "support/stand_in_runtime/json_values.h"

namespace Orvel::StandIn {
namespace {

/// Reads the member `name`, if there is one.
template <typename Out, typename Read>
HRESULT readMember(const JsonObject& object, HSTRING name, Out* value, Read read) {
    if (value == nullptr) {
        return E_POINTER;
    }
    Node* const node = object.find(name);
    return node == nullptr ? kJsonValueNotFound : read(*node);
}

HRESULT lookup(const JsonObject& object, HSTRING name, IJsonValue** value) {
    if (value == nullptr) {
        return E_POINTER;
    }
    Node* const node = object.find(name);
    if (node == nullptr) {
        return kOutOfBounds;
    }
    if (node->type() == JsonValueType::Null && Runtime::instance().nullLookupYieldsNothing()) {
        *value = nullptr;
        return S_OK;
    }
    return share<IJsonValue>(node, value);
}

template <typename Out, typename Content>
HRESULT store(Out* out, Content content) {
    if (out == nullptr) {
        return E_POINTER;
    }
    *out = content;
    return S_OK;
}

}  // namespace

void JsonObject::write(std::wstring& text) const {
    text += L'{';
    for (const auto& [name, value] : members_) {
        if (text.back() != L'{') {
            text += L',';
        }
        writeString(text, name);
        text += L':';
        value->write(text);
    }
    text += L'}';
}

void JsonObject::set(const std::wstring& name, Reference<Node> value) {
    const auto [place, isNew] = index_.try_emplace(name, members_.size());
    if (isNew) {
        members_.emplace_back(name, std::move(value));
    } else {
        members_[place->second].second = std::move(value);
    }
}

void JsonObject::remove(const std::wstring& name) {
    std::erase_if(members_, [&](const auto& member) { return member.first == name; });
    index_.clear();
    for (std::size_t at = 0; at < members_.size(); ++at) {
        index_.emplace(members_[at].first, at);
    }
}

Node* JsonObject::find(HSTRING name) const {
    const auto place = index_.find(std::wstring(textOf(name)));
    return place == index_.end() ? nullptr : members_[place->second].second.get();
}

HRESULT JsonObject::GetNamedValue(HSTRING name, IJsonValue** value) {
    return perform("IJsonObject.GetNamedValue", [&] {
        return readMember(*this, name, value,
                          [&](Node& node) { return share<IJsonValue>(&node, value); });
    });
}

HRESULT JsonObject::SetNamedValue(HSTRING name, IJsonValue* value) {
    return perform("IJsonObject.SetNamedValue", [&]() -> HRESULT {
        if (value == nullptr) {
            remove(std::wstring(textOf(name)));
        } else {
            set(std::wstring(textOf(name)), Reference<Node>::share(&nodeOf(value)));
        }
        return S_OK;
    });
}

HRESULT JsonObject::GetNamedObject(HSTRING name, IJsonObject** value) {
    return perform("IJsonObject.GetNamedObject", [&] {
        return readMember(*this, name, value,
                          [&](Node& node) { return share(node.asObject(), value); });
    });
}

HRESULT JsonObject::GetNamedArray(HSTRING name, IJsonArray** value) {
    return perform("IJsonObject.GetNamedArray", [&] {
        return readMember(*this, name, value,
                          [&](Node& node) { return share(node.asArray(), value); });
    });
}

HRESULT JsonObject::GetNamedString(HSTRING name, HSTRING* value) {
    return perform("IJsonObject.GetNamedString", [&] {
        return readMember(*this, name, value, [&](Node& node) { return readString(node, value); });
    });
}

HRESULT JsonObject::GetNamedNumber(HSTRING name, double* value) {
    return perform("IJsonObject.GetNamedNumber", [&] {
        return readMember(*this, name, value,
                          [&](Node& node) { return readPlain(node.asNumber(), value); });
    });
}

HRESULT JsonObject::GetNamedBoolean(HSTRING name, boolean* value) {
    return perform("IJsonObject.GetNamedBoolean", [&] {
        return readMember(*this, name, value,
                          [&](Node& node) { return readPlain(node.asBoolean(), value); });
    });
}

HRESULT JsonObject::Lookup(HSTRING name, IJsonValue** value) {
    return perform("IMap.Lookup", [&] { return lookup(*this, name, value); });
}

HRESULT JsonObject::get_Size(UINT32* size) {
    return perform("IMap.get_Size", [&] { return store(size, this->size()); });
}

HRESULT JsonObject::HasKey(HSTRING name, boolean* found) {
    return perform("IMap.HasKey", [&] { return store(found, find(name) != nullptr); });
}

HRESULT JsonObject::GetView(ValueMapView** view) {
    return perform("IMap.GetView", [&] {
        return store<ValueMapView*>(view, view == nullptr ? nullptr : new JsonObjectView(this));
    });
}

HRESULT JsonObjectView::Lookup(HSTRING name, IJsonValue** value) {
    return perform("IMapView.Lookup", [&] { return lookup(*object_.get(), name, value); });
}

HRESULT JsonObjectView::get_Size(UINT32* size) {
    return perform("IMapView.get_Size", [&] { return store(size, object_->size()); });
}

HRESULT JsonObjectView::HasKey(HSTRING name, boolean* found) {
    return perform("IMapView.HasKey", [&] { return store(found, object_->find(name) != nullptr); });
}

}  // namespace Orvel::StandIn
