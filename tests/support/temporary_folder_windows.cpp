#include <windows.h>

#include <system_error>

#include "support/temporary_folder.h"

namespace Orvel::Support {

// A user's folder of temporary files is the user's only, and what is made in it inherits that.
TemporaryFolder::TemporaryFolder() {
    static int count = 0;
    const std::filesystem::path folder = std::filesystem::temp_directory_path();
    const std::wstring prefix = L"orvel-test-" + std::to_wstring(::GetCurrentProcessId()) + L"-";
    do {
        path_ = folder / (prefix + std::to_wstring(++count));
    } while (!std::filesystem::create_directory(path_));
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace Orvel::Support
