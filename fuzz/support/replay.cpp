/// Runs a target over the inputs that the command line names, files and folders of files. Takes the
/// fuzzer's place in an ordinary build.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

// The name that libFuzzer calls.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesOf(const fs::path& path) {
    if (!fs::is_directory(path)) {
        return {path};
    }
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(path)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

void replay(const fs::path& file) {
    // Printed beforehand: a broken property ends the process.
    std::printf("%s\n", file.c_str());
    std::fflush(stdout);
    std::ifstream in(file, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), {}};
    const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

}  // namespace

int main(int count, char** arguments) {
    int replayed = 0;
    for (int index = 1; index < count; ++index) {
        for (const fs::path& file : filesOf(arguments[index])) {
            replay(file);
            ++replayed;
        }
    }
    std::printf("%d inputs\n", replayed);
    return replayed > 0 ? 0 : 1;
}
