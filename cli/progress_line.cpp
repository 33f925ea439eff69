#include "cli/progress_line.h"

#include <fmt/format.h>

#include <algorithm>
#include <ostream>

namespace Orvel::Tool {

namespace {

constexpr std::uint64_t kBarWidth = 30;
constexpr std::uint64_t kLinesPerStep = 1000;

}  // namespace

ProgressLine::ProgressLine(Console& console, std::uint64_t total)
    : console_(console), total_(total) {}

ProgressLine::~ProgressLine() { clear(); }

void ProgressLine::show(std::uint64_t bytes, std::uint64_t lines) {
    if (!console_.terminal) {
        return;
    }
    const std::uint64_t percent = total_ == 0 ? 0 : std::min(bytes, total_) * 100 / total_;
    const std::uint64_t step = total_ == 0 ? lines / kLinesPerStep : percent;
    if (visible_ && step == drawnStep_) {
        return;
    }
    drawnStep_ = step;
    visible_ = true;
    console_.err << '\r' << picture(percent, lines) << std::flush;
}

std::string ProgressLine::picture(std::uint64_t percent, std::uint64_t lines) const {
    if (total_ == 0) {
        return fmt::format("{} lines", lines);
    }
    const std::string done(percent * kBarWidth / 100, '#');
    const std::string left(kBarWidth - done.size(), '.');
    const std::string bar = console_.colour ? "\x1b[32m" + done + "\x1b[0m" + left : done + left;
    return fmt::format("[{}] {:3}%  {} lines", bar, percent, lines);
}

void ProgressLine::clear() {
    if (visible_) {
        console_.err << "\r\x1b[K" << std::flush;
        visible_ = false;
    }
}

}  // namespace Orvel::Tool
