#include "events/guid_source.h"
#include "json/windows/runtime.h"

namespace Orvel::Analytics::Events {

Guid newGuid() {
    GUID made{};
    // A GUID is what comes of it, whatever the status says: one that is unique on this machine only
    // is told as an error, too.
    static_cast<void>(Json::runtime().createGuid(&made));
    Guid guid{made.Data1, made.Data2, made.Data3, {}};
    for (std::size_t byte = 0; byte < guid.data4.size(); ++byte) {
        guid.data4[byte] = made.Data4[byte];
    }
    return guid;
}

bool platformReadsGuid(const WideString& text) {
    CLSID read{};
    return SUCCEEDED(Json::runtime().clsidFromString(text.c_str(), &read));
}

}  // namespace Orvel::Analytics::Events
