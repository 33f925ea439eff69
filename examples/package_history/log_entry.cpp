#include "examples/package_history/log_entry.h"

#include <array>
#include <ctime>
#include <iomanip>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace PackageHistory {

namespace {

constexpr std::size_t kTimeLength = std::string_view("YYYY-MM-DD HH:MM:SS").size();
constexpr const char* kTimeFormat = "%Y-%m-%d %H:%M:%S";

std::int64_t parseLocalTime(const std::string& text) {
    std::tm read{};
    std::istringstream in(text);
    in >> std::get_time(&read, kTimeFormat);
    std::ostringstream out;
    out << std::put_time(&read, kTimeFormat);
    std::tm local = read;
    local.tm_isdst = -1;  // The platform knows whether daylight saving applied on that day.
    const std::int64_t seconds = std::mktime(&local);
    // The reader is lenient, and a day such as February 30 becomes another one: neither may pass.
    if (!in || out.str() != text || local.tm_mday != read.tm_mday || seconds < 1) {
        throw std::invalid_argument("it does not begin with a time YYYY-MM-DD HH:MM:SS");
    }
    return seconds;
}

std::vector<std::string> splitWords(const std::string& text) {
    std::vector<std::string> words;
    std::istringstream in(text);
    for (std::string word; std::getline(in, word, ' ');) {
        if (word.empty()) {
            throw std::invalid_argument("it has an empty word");
        }
        words.push_back(word);
    }
    return words;
}

void requireWords(const std::vector<std::string>& words, std::size_t count) {
    if (words.size() != count) {
        throw std::invalid_argument("\"" + words.front() + "\" is followed by " +
                                    std::to_string(words.size() - 1) + " words instead of " +
                                    std::to_string(count - 1));
    }
}

void setPackage(LogEntry& entry, const std::string& text) {
    const std::size_t colon = text.find(':');
    entry.package = text.substr(0, colon);
    entry.architecture = colon == std::string::npos ? "" : text.substr(colon + 1);
}

bool isPackageAction(const std::string& action) {
    constexpr std::array<std::string_view, 7> kActions{
        "install", "upgrade", "configure", "trigproc", "remove", "purge", "disappear"};
    for (const std::string_view known : kActions) {
        if (action == known) {
            return true;
        }
    }
    return false;
}

void setConffile(LogEntry& entry, const std::string& rest) {
    // The name of a file may have blanks in it; the decision is the last word.
    const std::size_t begin = rest.find(' ');
    const std::size_t end = rest.rfind(' ');
    if (begin == std::string::npos || begin + 1 >= end || end + 1 == rest.size()) {
        throw std::invalid_argument("\"conffile\" is not followed by a file and a decision");
    }
    entry.file = rest.substr(begin + 1, end - begin - 1);
    entry.decision = rest.substr(end + 1);
}

}  // namespace

LogEntry parseLogEntry(const std::string& line) {
    LogEntry entry;
    entry.time = line.substr(0, kTimeLength);
    entry.seconds = parseLocalTime(entry.time);
    if (line.size() < kTimeLength + 2 || line[kTimeLength] != ' ') {
        throw std::invalid_argument("nothing follows the time");
    }
    const std::string rest = line.substr(kTimeLength + 1);
    entry.action = rest.substr(0, rest.find(' '));
    if (entry.action == "conffile") {
        setConffile(entry, rest);
        return entry;
    }
    const std::vector<std::string> words = splitWords(rest);
    if (entry.action == "startup") {
        requireWords(words, 3);
        entry.command = words[1] + " " + words[2];
    } else if (entry.action == "status") {
        requireWords(words, 4);
        entry.state = words[1];
        setPackage(entry, words[2]);
        entry.version = words[3];
    } else if (isPackageAction(entry.action)) {
        requireWords(words, 4);
        setPackage(entry, words[1]);
        entry.oldVersion = words[2];
        entry.newVersion = words[3];
    } else {
        throw std::invalid_argument("\"" + entry.action + "\" is no known action");
    }
    return entry;
}

}  // namespace PackageHistory
