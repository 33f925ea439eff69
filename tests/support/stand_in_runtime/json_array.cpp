#include "support/stand_in_runtime/json_values.h"

namespace Orvel::StandIn {

void JsonArray::write(std::wstring& text) const {
    text += L'[';
    for (const auto& element : elements_) {
        if (&element != elements_.data()) {
            text += L',';
        }
        element->write(text);
    }
    text += L']';
}

HRESULT JsonArray::GetAt(UINT32 index, IJsonValue** value) {
    return perform("IVector.GetAt", [&]() -> HRESULT {
        if (value == nullptr) {
            return E_POINTER;
        }
        return index < elements_.size() ? share<IJsonValue>(elements_[index].get(), value)
                                        : kOutOfBounds;
    });
}

HRESULT JsonArray::get_Size(UINT32* size) {
    return perform("IVector.get_Size", [&]() -> HRESULT {
        if (size == nullptr) {
            return E_POINTER;
        }
        *size = static_cast<UINT32>(elements_.size());
        return S_OK;
    });
}

HRESULT JsonArray::Append(IJsonValue* value) {
    return perform("IVector.Append", [&]() -> HRESULT {
        if (value == nullptr) {
            return E_INVALIDARG;
        }
        add(Reference<Node>::share(&nodeOf(value)));
        return S_OK;
    });
}

}  // namespace Orvel::StandIn
