#include "service/data_folder.h"

namespace Orvel::Service {

std::filesystem::path databaseFile(const std::filesystem::path& folder) {
    return folder / "analytics.db";
}

}  // namespace Orvel::Service
