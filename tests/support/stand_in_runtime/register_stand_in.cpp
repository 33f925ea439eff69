/// Registers the stand-in for the runtime classes with an emulated Windows, in front of what that
/// has of its own: `register-stand-in DLL`. A real Windows it leaves alone: others use the classes
/// there.

#include <windows.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "support/stand_in_runtime/class_names.h"

namespace {

bool registerClass(std::wstring_view name, const std::wstring& dll) {
    const std::wstring key = std::wstring(Orvel::StandIn::kClassesKey) + std::wstring(name);
    const auto size = static_cast<DWORD>((dll.size() + 1) * sizeof(wchar_t));
    return RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), Orvel::StandIn::kDllPathValue, REG_SZ,
                           dll.c_str(), size) == ERROR_SUCCESS;
}

/// What tells wine from Windows.
bool isEmulated() {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("register-stand-in DLL\n", stderr);
        return 2;
    }
    if (!isEmulated()) {
        std::fputs("register-stand-in: this is no emulated Windows\n", stderr);
        return 1;
    }
    const std::wstring dll = std::filesystem::absolute(argv[1]).wstring();
    if (!std::filesystem::is_regular_file(dll)) {
        std::fprintf(stderr, "register-stand-in: there is no %s\n", argv[1]);
        return 1;
    }
    for (const std::wstring_view name : Orvel::StandIn::kClassNames) {
        if (!registerClass(name, dll)) {
            std::fprintf(stderr, "register-stand-in: %ls cannot be registered\n", name.data());
            return 1;
        }
    }
    return 0;
}
