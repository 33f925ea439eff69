#include <sys/utsname.h>

#include <fstream>
#include <iterator>
#include <string>

#include "events/device_info.h"
#include "events/os_release.h"
#include "text/unicode.h"

namespace Orvel::Analytics::Events {
namespace {

/// The first of the two places of os-release(5) that exists; empty when neither does.
std::string readOsRelease() {
    for (const char* path : {"/etc/os-release", "/usr/lib/os-release"}) {
        std::ifstream file(path, std::ios::binary);
        if (file) {
            return {std::istreambuf_iterator<char>(file), {}};
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
