/// The tool's data class files. The service reads the same documents with another JSON engine, and
/// is less strict.

#include "cli/data_class_file.h"

#include <algorithm>
#include <optional>
#include <string>

#include "cli/failure.h"
#include "fuzz/support/allocations.h"
#include "fuzz/support/input.h"
#include "fuzz/support/require.h"
#include "service/error_name.h"
#include "service/registration.h"

namespace Orvel::Fuzz {
namespace {

std::optional<Tool::FileDataClass> readByTool(std::string_view text) {
    const AllocationBound bound(40'000, 2'000, text.size());
    try {
        return Tool::parseDataClass(text, "FILE");
    } catch (const Tool::Failure& failure) {
        require(failure.status() == Tool::ExitStatus::Usage, "a bad file is a wrong use");
        require(std::string_view(failure.what()).starts_with("FILE"), "messages name the file");
        return std::nullopt;
    }
}

std::optional<Service::DataClass> readByService(std::string_view text) {
    try {
        return Service::readRegistration(text);
    } catch (const Service::Refusal&) {
        return std::nullopt;
    }
}

bool areSame(const Tool::FileDataClass& file, const Service::DataClass& registered) {
    return toUtf8(file.name) == registered.name && toUtf8(file.id) == registered.id &&
           toUtf8(file.version) == registered.version &&
           std::equal(file.fields.begin(), file.fields.end(), registered.fields.begin(),
                      registered.fields.end(), [](const auto& one, const Service::Field& other) {
                          return toUtf8(one.id) == other.id && toUtf8(one.name) == other.name &&
                                 toUtf8(one.nullable) == other.nullable &&
                                 toUtf8(one.type) == other.type;
                      });
}

}  // namespace
}  // namespace Orvel::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Orvel::Fuzz;
    std::string_view text = Input(data, size).rest();
    const auto file = readByTool(text);
    if (file) {
        constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
        if (text.starts_with(kByteOrderMark)) {
            text.remove_prefix(kByteOrderMark.size());
        }
        const auto registered = readByService(text);
        require(registered && areSame(*file, *registered),
                "the service reads a file as the tool does");
    }
    return 0;
}
