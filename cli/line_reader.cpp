#include "cli/line_reader.h"

#include <system_error>

namespace Orvel::Tool {

namespace {

constexpr int kEnd = std::char_traits<char>::eof();
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool isBlank(const Line& line) {
    return !line.tooLong && line.text.find_first_not_of(" \t\r") == std::string::npos;
}

}  // namespace

LineReader::LineReader(std::streambuf& in, std::size_t longest) : in_(in), longest_(longest) {}

bool LineReader::next(Line& line) {
    do {
        if (!readLine(line)) {
            return false;
        }
    } while (isBlank(line));
    return true;
}

bool LineReader::readLine(Line& line) {
    line.text.clear();
    line.tooLong = false;
    int byte = readByte();
    if (byte == kEnd) {
        return false;
    }
    line.number = ++number_;
    for (; byte != kEnd && byte != '\n'; byte = readByte()) {
        if (line.text.size() < longest_) {
            line.text.push_back(static_cast<char>(byte));
        } else {
            line.tooLong = true;
        }
    }
    if (!error_.empty()) {
        return false;  // Half a line must not pass for a whole one.
    }
    if (line.tooLong) {
        line.text.clear();
    } else if (!line.text.empty() && line.text.back() == '\r') {
        line.text.pop_back();
    }
    if (line.number == 1 && line.text.starts_with(kByteOrderMark)) {
        line.text.erase(0, kByteOrderMark.size());
    }
    return true;
}

int LineReader::readByte() {
    try {
        const int byte = in_.sbumpc();
        bytes_ += byte == kEnd ? 0 : 1;
        return byte;
    } catch (const std::system_error& failure) {
        error_ = failure.code().message();
        return kEnd;
    }
}

}  // namespace Orvel::Tool
