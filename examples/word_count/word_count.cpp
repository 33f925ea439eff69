#include "word_count.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include "usage_report.h"

namespace WordCount {

std::int32_t countWords(std::istream& text) {
    return static_cast<std::int32_t>(std::distance(std::istream_iterator<std::string>(text),
                                                   std::istream_iterator<std::string>()));
}

int run(const std::vector<std::string>& files, std::ostream& out, std::ostream& errors) {
    int status = 0;
    UsageReport report;
    for (const std::string& name : files) {
        std::ifstream file(name);
        if (!file) {
            errors << name << ": cannot be read\n";
            status = 1;
            continue;
        }
        const std::int32_t words = countWords(file);
        out << words << ' ' << name << '\n';
        report.add(std::filesystem::path(name).extension().string(), words);
    }
    if (report.send() == Delivery::Lost) {
        errors << "The usage report was not delivered.\n";
    }
    return status;
}

}  // namespace WordCount
