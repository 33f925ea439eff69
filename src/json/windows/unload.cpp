#include <windows.h>

#include "json/windows/factory.h"

/// Called by the system when the library comes and goes.
/// @param reserved null when the library is unloaded from a process that goes on; at the end of the
///     process the system takes everything back, and other libraries may be gone already.
BOOL WINAPI DllMain(HINSTANCE /*library*/, DWORD reason, LPVOID reserved) {
    if (reason == DLL_PROCESS_DETACH && reserved == nullptr) {
        Orvel::Analytics::Json::releaseFactories();
    }
    return TRUE;
}
