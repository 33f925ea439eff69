#include <fcntl.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <string>

#include "events/device_info.h"
#include "events/os_release.h"
#include "text/unicode.h"

namespace Orvel::Analytics::Events {
namespace {

/// A file to read from.
class OpenFile {
  public:
    // Another thread of the application may start a program just now, which is not to have the file
    // as well: no stream of the standard library can see to that.
    explicit OpenFile(const char* path) : descriptor_(open(path, O_RDONLY | O_CLOEXEC)) {}
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() {
        if (isOpen()) {
            close(descriptor_);
        }
    }

    bool isOpen() const { return descriptor_ >= 0; }

    std::string rest() const {
        std::string text;
        std::array<char, 1024> part;
        for (;;) {
            const ssize_t count = read(descriptor_, part.data(), part.size());
            if (count <= 0) {
                return text;
            }
            text.append(part.data(), static_cast<std::size_t>(count));
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
            return file.rest();
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
