#include <stdlib.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "support/temporary_folder.h"

namespace Orvel::Support {

TemporaryFolder::TemporaryFolder() {
    std::string name = std::filesystem::temp_directory_path() / "orvel-test-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), "cannot make " + name);
    }
    path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace Orvel::Support
