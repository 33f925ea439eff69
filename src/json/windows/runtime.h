#ifndef ORVEL_JSON_WINDOWS_RUNTIME_H
#define ORVEL_JSON_WINDOWS_RUNTIME_H

#include <combaseapi.h>
#include <hstring.h>
#include <inspectable.h>
#include <roapi.h>
#include <windows.h>
#include <winstring.h>

#include <cstdint>

#include "json/windows/com_pointer.h"
#include "orvel/analytics/text.h"

/// The runtime of the platform: its functions, its strings and the statuses of its calls.
namespace Orvel::Analytics::Json {

/// The platform's functions. They are found when they are first needed, so that on a system without
/// the runtime the library still loads, and its operations say what is missing.
struct Runtime {
    decltype(&::RoGetActivationFactory) getActivationFactory;
    decltype(&::WindowsCreateStringReference) createStringReference;
    decltype(&::WindowsGetStringRawBuffer) getStringRawBuffer;
    decltype(&::WindowsDeleteString) deleteString;
    decltype(&::CoIncrementMTAUsage) incrementMtaUsage;
    decltype(&::CoCreateGuid) createGuid;
    decltype(&::CLSIDFromString) clsidFromString;
};

/// The functions, once found, for as long as the process lives.
/// @throws hresult_error when the system lacks one.
const Runtime& runtime();

/// Raises the status of a call that failed.
/// @param call the call's name.
void check(HRESULT status, const char* call);

/// Raises for a call that succeeded and yet gave no object.
void requireObject(const void* object, const char* call);

/// Asks an object for another of its interfaces.
template <typename Interface, typename Object>
ComPointer<Interface> query(Object* object) {
    requireObject(object, "QueryInterface");
    ComPointer<Interface> other;
    check(object->QueryInterface(Interface::kId, reinterpret_cast<void**>(other.receive())),
          "QueryInterface");
    return other;
}

/// A text as the platform takes it, without a copy of it.
class StringReference {
  public:
    /// @param text followed by a null code unit; it outlives the reference.
    explicit StringReference(WideStringView text);
    StringReference(const StringReference&) = delete;
    StringReference& operator=(const StringReference&) = delete;
    ~StringReference() = default;

    HSTRING get() const noexcept { return string_; }

  private:
    HSTRING_HEADER header_;
    HSTRING string_ = nullptr;
};

/// A text that the platform gives.
class ReceivedString {
  public:
    ReceivedString() = default;
    ReceivedString(const ReceivedString&) = delete;
    ReceivedString& operator=(const ReceivedString&) = delete;
    ~ReceivedString();

    /// Where a call puts the text.
    HSTRING* receive() noexcept { return &string_; }

    /// A copy of the text.
    [[nodiscard]] WideString copy() const;

  private:
    HSTRING string_ = nullptr;
};

}  // namespace Orvel::Analytics::Json

#endif
