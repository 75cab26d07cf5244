#include "gallery-host/Progress.h"

#include <algorithm>
#include <utility>

#include <sys/ioctl.h>
#include <unistd.h>

#include "gallery-host/Output.h"

namespace host {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPeriod{100};
constexpr size_t kBarColumns = 24;

size_t TerminalColumns() {
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

}  // namespace

std::string ProgressLine(const std::string& doing, size_t done, size_t total, size_t columns) {
    const std::string count = std::to_string(done) + " of " + std::to_string(total);
    // In the last column the cursor would stand on the next line.
    if (doing.size() + count.size() + kBarColumns + 7 > columns) return doing + "  " + count;
    const size_t filled = total ? kBarColumns * std::min(done, total) / total : 0;
    return doing + "  [" + std::string(filled, '#') + std::string(kBarColumns - filled, '-') + "]  " + count;
}

Progress::Progress(std::string doing, size_t total)
    : doing_(std::move(doing)),
      total_(total),
      shown_(total > 1 && TakesStatus()),
      stale_(shown_),
      next_(steady_clock::now() + kPeriod) {}

Progress::~Progress() {
    ClearStatus();
}

void Progress::Advance() {
    ++done_;
    stale_ = shown_;
}

void Progress::Draw() {
    const Deadline now = steady_clock::now();
    if (!stale_ || now < next_) return;
    ShowStatus(ProgressLine(doing_, done_, total_, TerminalColumns()));
    stale_ = false;
    next_ = now + kPeriod;
}

}  // namespace host
