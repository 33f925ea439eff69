#include "cli/generate.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <ostream>
#include <stdexcept>

#include "cli/cpp_text.h"
#include "cli/data_class_file.h"
#include "cli/generated_code.h"
#include "cli/output_file.h"
#include "cli/platform.h"
#include "orvel/analytics/text.h"

namespace Orvel::Tool {

namespace {

struct GeneratedFile {
    std::string name;
    std::string content;
};

[[noreturn]] void refuse(const std::string& what, const std::string& why) {
    throw Failure(ExitStatus::Usage, fmt::format("{}: {}", what, why));
}

/// Refuses names that a source cannot have in its text.
void requireIncludable(const std::string& file, const std::string& name) {
    const bool canBeIncluded = std::none_of(name.begin(), name.end(), [](char letter) {
        const auto byte = static_cast<unsigned char>(letter);
        return byte < 0x20 || byte == 0x7F || letter == '"' || letter == '\\' || letter == '?';
    });
    if (name.empty() || !canBeIncluded) {
        refuse(file, "no header can be named after this file");
    }
    try {
        static_cast<void>(toWide(name));
    } catch (const std::invalid_argument& error) {
        refuse(file, fmt::format("no header can be named after this file: {}", error.what()));
    }
}

/// Two data classes of one run: what the first has taken the second cannot have.
class Claims {
  public:
    void claim(const std::string& what, const std::string& name, const std::string& file) {
        const auto [earlier, isNew] = owners_.try_emplace(name, file);
        if (!isNew) {
            refuse(file,
                   fmt::format("the {} \"{}\" is that of {} already", what, name, earlier->second));
        }
    }

  private:
    std::map<std::string, std::string> owners_;
};

std::vector<GeneratedFile> filesOf(const GenerateOptions& options) {
    std::vector<GeneratedFile> files;
    Claims headers;
    Claims classes;
    for (const std::string& file : options.dataClassFiles) {
        const std::filesystem::path path = toPath(file);
        const std::string stem = nameOf(path.stem());
        requireIncludable(file, stem);
        const TypedClass typed = typedClassOf(readDataClassText(file), file);
        headers.claim("header", stem + ".h", file);
        classes.claim("class", typed.eventName, file);
        const CodePlace place{nameOf(path.filename()), stem + ".h", options.nameSpace};
        files.push_back({stem + ".h", generatedHeader(typed, place)});
        files.push_back({stem + ".cpp", generatedSource(typed, place)});
    }
    return files;
}

}  // namespace

ExitStatus generate(const GenerateOptions& options, Console& console) {
    if (!options.nameSpace.empty()) {
        if (const std::string fault = faultOfNamespace(options.nameSpace); !fault.empty()) {
            refuse("--namespace", fault);
        }
    }
    const std::vector<GeneratedFile> files = filesOf(options);
    const std::filesystem::path folder = makeFolder(options.folder);
    for (const GeneratedFile& file : files) {
        const std::filesystem::path path = folder / toPath(file.name);
        const bool written = writeFile(path, file.content);
        console.out << (written ? "wrote " : "unchanged ") << printable(nameOf(path)) << '\n';
    }
    flushOutput(console);
    return ExitStatus::Success;
}

}  // namespace Orvel::Tool
