#include "cli/output_file.h"

#include <fmt/format.h>

#include <cerrno>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <system_error>

#include "cli/failure.h"
#include "cli/platform.h"

namespace Orvel::Tool {

namespace {

[[noreturn]] void failToWrite(const std::filesystem::path& path, const std::string& reason) {
    throw Failure(ExitStatus::Failed,
                  fmt::format("{}: cannot be written: {}", nameOf(path), reason));
}

bool hasContent(const std::filesystem::path& path, std::string_view content) {
    std::error_code unknown;
    if (std::filesystem::file_size(path, unknown) != content.size() || unknown) {
        return false;
    }
    std::ifstream in(path, std::ios::binary);
    const std::string found{std::istreambuf_iterator<char>(in), {}};
    return found == content;
}

/// A file that is removed unless it takes another's place.
class Draft {
  public:
    explicit Draft(const std::filesystem::path& target) : target_(target), path_(target) {
        // Nobody else makes a file of this name, not even another run that writes the same files.
        path_ += fmt::format(".{:08x}{:08x}", std::random_device()(), std::random_device()());
    }
    Draft(const Draft&) = delete;
    Draft& operator=(const Draft&) = delete;
    ~Draft() {
        std::error_code gone;
        std::filesystem::remove(path_, gone);
    }

    void write(std::string_view content) const {
        errno = 0;
        std::ofstream out(path_, std::ios::binary);
        out.write(content.data(), static_cast<std::streamsize>(content.size()));
        out.close();
        if (!out) {
            failToWrite(target_, std::generic_category().message(errno == 0 ? EIO : errno));
        }
    }

    void takePlace() const {
        std::error_code failure;
        std::filesystem::rename(path_, target_, failure);
        if (failure) {
            failToWrite(target_, failure.message());
        }
    }

  private:
    const std::filesystem::path& target_;
    std::filesystem::path path_;
};

}  // namespace

std::filesystem::path makeFolder(const std::string& name) {
    std::error_code failure;
    try {
        std::filesystem::path path = toPath(name);
        std::filesystem::create_directories(path, failure);
        if (!failure && std::filesystem::is_directory(path, failure)) {
            return path;
        }
    } catch (const std::invalid_argument& error) {
        throw Failure(ExitStatus::Usage,
                      fmt::format("{}: no folder has such a name: {}", name, error.what()));
    }
    throw Failure(ExitStatus::Usage,
                  fmt::format("{}: is no folder and cannot be made one{}", name,
                              failure ? ": " + failure.message() : std::string()));
}

bool writeFile(const std::filesystem::path& path, std::string_view content) {
    if (hasContent(path, content)) {
        return false;
    }
    const Draft draft(path);
    draft.write(content);
    draft.takePlace();
    return true;
}

std::string nameOf(const std::filesystem::path& path) {
    const auto text = path.u8string();
    return {text.begin(), text.end()};
}

}  // namespace Orvel::Tool
