#include "json/windows/runtime.h"

#include <limits>
#include <string>

#include "json/raise.h"

namespace Orvel::Analytics::Json {
namespace {

/// The library that holds all of them since Windows 8.
constexpr const wchar_t* kLibrary = L"combase.dll";

void raiseLastError(const std::string& missing) {
    raise(static_cast<std::uint32_t>(HRESULT_FROM_WIN32(::GetLastError())),
          "The system has no " + missing);
}

template <typename Function>
void find(HMODULE library, const char* name, Function& function) {
    const FARPROC found = ::GetProcAddress(library, name);
    if (found == nullptr) {
        raiseLastError(name);
    }
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(found));
}

/// The library is never freed: it belongs to the system, and every process has it.
Runtime findRuntime() {
    const HMODULE library = ::LoadLibraryExW(kLibrary, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (library == nullptr) {
        raiseLastError("combase.dll");
    }
    Runtime found{};
    find(library, "RoGetActivationFactory", found.getActivationFactory);
    find(library, "WindowsCreateStringReference", found.createStringReference);
    find(library, "WindowsGetStringRawBuffer", found.getStringRawBuffer);
    find(library, "WindowsDeleteString", found.deleteString);
    find(library, "CoIncrementMTAUsage", found.incrementMtaUsage);
    find(library, "CoCreateGuid", found.createGuid);
    find(library, "CLSIDFromString", found.clsidFromString);
    return found;
}

}  // namespace

const Runtime& runtime() {
    static const Runtime found = findRuntime();
    return found;
}

void check(HRESULT status, const char* call) {
    if (FAILED(status)) {
        raise(static_cast<std::uint32_t>(status), std::string(call) + " failed");
    }
}

void requireObject(const void* object, const char* call) {
    if (object == nullptr) {
        raise(static_cast<std::uint32_t>(E_POINTER), std::string(call) + " gave no object");
    }
}

StringReference::StringReference(WideStringView text) {
    if (text.size() > std::numeric_limits<UINT32>::max()) {
        raise(Status::kInvalidArgument, "The text is longer than the platform's texts can be");
    }
    // An empty view need not point anywhere.
    const wchar_t* const units = text.empty() ? L"" : text.data();
    check(runtime().createStringReference(units, static_cast<UINT32>(text.size()), &header_,
                                          &string_),
          "WindowsCreateStringReference");
}

ReceivedString::~ReceivedString() {
    if (string_ != nullptr) {
        static_cast<void>(runtime().deleteString(string_));
    }
}

WideString ReceivedString::copy() const {
    UINT32 length = 0;
    const wchar_t* const units = runtime().getStringRawBuffer(string_, &length);
    return {units, length};
}

}  // namespace Orvel::Analytics::Json
