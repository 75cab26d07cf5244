#include "gallery-host/output/Progress.h"

#include <algorithm>
#include <utility>

#include <sys/ioctl.h>
#include <unistd.h>

#include "gallery-host/base/Output.h"

namespace host {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPeriod{100};
constexpr size_t kBarColumns = 24;

}  // namespace

size_t TerminalColumns() {
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

std::string BarLine(const std::string& doing, const std::string& count, double part, size_t columns) {
    // In the last column the cursor would stand on the next line.
    if (doing.size() + count.size() + kBarColumns + 7 > columns) return doing + "  " + count;
    const auto filled = static_cast<size_t>(kBarColumns * std::min(part, 1.0) + 1e-9);
    return doing + "  [" + std::string(filled, '#') + std::string(kBarColumns - filled, '-') + "]  " + count;
}

std::string ProgressLine(const std::string& doing, size_t done, size_t total, size_t columns) {
    const double part = total ? static_cast<double>(done) / static_cast<double>(total) : 0;
    return BarLine(doing, std::to_string(done) + " of " + std::to_string(total), part, columns);
}

std::string PercentLine(const std::string& doing, size_t percent, size_t columns) {
    return BarLine(doing, std::to_string(percent) + " %", static_cast<double>(percent) / 100, columns);
}

Progress::Progress(std::string doing, size_t total)
    : doing_(std::move(doing)),
      total_(total),
      shown_(total != 1 && TakesStatus()),
      stale_(shown_),
      next_(steady_clock::now() + kPeriod) {}

Progress::Progress(std::string doing) : Progress(std::move(doing), 0) {}

Progress::~Progress() {
    ClearStatus();
}

void Progress::Advance() {
    Set(done_ + 1);
}

void Progress::Set(size_t done) {
    done_ = done;
    stale_ = shown_;
}

void Progress::Draw() {
    const Deadline now = steady_clock::now();
    if (!stale_ || now < next_) return;
    const size_t columns = TerminalColumns();
    ShowStatus(total_ ? ProgressLine(doing_, done_, total_, columns) : PercentLine(doing_, done_, columns));
    stale_ = false;
    next_ = now + kPeriod;
}

}  // namespace host
