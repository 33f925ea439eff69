#include <errno.h>
#include <fcntl.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <array>
#include <optional>
#include <string>

#include "events/device_info.h"
#include "events/os_release.h"
#include "json/raise.h"
#include "text/unicode.h"

namespace Orvel::Analytics::Events {
namespace {

/// Raises what kept a file that is there from being read: the device would get another identity
/// when the file was taken for missing.
[[noreturn]] void raiseFailedReading(int error) {
    constexpr std::uint32_t kTooManyOpenFiles = 0x80070004;
    constexpr std::uint32_t kReadFault = 0x8007001E;
    Json::raise(error == ENOMEM                      ? Json::Status::kOutOfMemory
                : error == EMFILE || error == ENFILE ? kTooManyOpenFiles
                                                     : kReadFault,
                "The system's name and version cannot be read");
}

/// A file that is open until the end of a block, and in no program that the process executes: no
/// stream of the standard library can see to that while another thread starts one.
class OpenFile {
  public:
    explicit OpenFile(const char* path) : descriptor_(::open(path, O_RDONLY | O_CLOEXEC)) {
        if (descriptor_ < 0 && (errno == ENOMEM || errno == EMFILE || errno == ENFILE)) {
            raiseFailedReading(errno);
        }
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() {
        if (isOpen()) {
            ::close(descriptor_);
        }
    }

    [[nodiscard]] bool isOpen() const { return descriptor_ >= 0; }

    [[nodiscard]] std::string content() const {
        std::string content;
        std::array<char, 1024> block;
        for (;;) {
            const ssize_t count = ::read(descriptor_, block.data(), block.size());
            if (count == 0) {
                return content;
            }
            if (count > 0) {
                content.append(block.data(), static_cast<std::size_t>(count));
            } else if (errno != EINTR) {
                raiseFailedReading(errno);
            }
        }
    }

  private:
    int descriptor_;
};

/// The first of the two places of os-release(5) that exists; empty when neither does.
std::string readOsRelease() {
    for (const char* path : {"/etc/os-release", "/usr/lib/os-release"}) {
        const OpenFile file(path);
        if (file.isOpen()) {
            return file.content();
        }
    }
    return {};
}

std::string kernelRelease() {
    utsname kernel{};
    return uname(&kernel) == 0 ? kernel.release : "";
}

WideString widen(std::string_view text) {
    WideString wide;
    Text::appendUtf8(wide, text);
    return wide;
}

}  // namespace

WideString deviceFamilyVersion() {
    const auto version = osReleaseValue(readOsRelease(), "VERSION_ID");
    return widen(std::to_string(packVersion(version ? *version : kernelRelease())));
}

WideString operatingSystemName() {
    const std::string name = osReleaseValue(readOsRelease(), "NAME").value_or("Linux");
    // A name that is not UTF-8 is nobody's name.
    return Text::findIllFormedUtf8(name) == std::string_view::npos ? widen(name) : widen("Linux");
}

}  // namespace Orvel::Analytics::Events
