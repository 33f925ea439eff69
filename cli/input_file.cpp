#include "cli/input_file.h"

#include <fmt/format.h>

#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "cli/failure.h"
#include "cli/platform.h"

namespace Orvel::Tool {

namespace {

constexpr std::size_t kBufferSize = std::size_t{64} << 10;

[[noreturn]] void fail(const std::string& name, const std::string& what) {
    throw Failure(ExitStatus::Usage, fmt::format("{}: {}", name, what));
}

std::filesystem::path pathOf(const std::string& name) {
    try {
        return toPath(name);
    } catch (const std::invalid_argument& error) {
        fail(name, fmt::format("no file has such a name: {}", error.what()));
    }
}

int openFile(const std::string& name, const std::filesystem::path& path) {
    try {
        return openForReading(path);
    } catch (const std::system_error& failure) {
        const bool folder = failure.code() == std::errc::is_a_directory;
        fail(name, folder ? "is a folder" : "cannot be read: " + failure.code().message());
    }
}

}  // namespace

InputFile::InputFile() : descriptor_(standardInput()), mine_(false), buffer_(kBufferSize) {}

InputFile::InputFile(const std::string& name) : descriptor_(-1), mine_(true), buffer_(kBufferSize) {
    const std::filesystem::path path = pathOf(name);
    descriptor_ = openFile(name, path);
    std::error_code unknown;
    const std::uintmax_t size = std::filesystem::file_size(path, unknown);
    size_ = unknown ? 0 : size;
}

InputFile::~InputFile() {
    if (mine_ && descriptor_ >= 0) {
        closeFile(descriptor_);
    }
}

InputFile::int_type InputFile::underflow() {
    const std::size_t count = readSome(descriptor_, buffer_.data(), buffer_.size());
    setg(buffer_.data(), buffer_.data(), buffer_.data() + count);
    return count == 0 ? traits_type::eof() : traits_type::to_int_type(buffer_.front());
}

}  // namespace Orvel::Tool
