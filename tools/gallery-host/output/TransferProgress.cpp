#include "gallery-host/output/TransferProgress.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "gallery-host/base/Output.h"
#include "gallery-host/output/Progress.h"
#include "gallery-host/output/Words.h"

namespace host {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kPeriod{100};
// What the first moments show is the speed of memory.
constexpr milliseconds kFirstRate{1000};

std::string Size(uint64_t bytes) {
    return HumanSize(static_cast<double>(bytes) / 1000);
}

std::string Duration(uint64_t seconds) {
    char text[40];
    std::snprintf(text, sizeof text, "%llu:%02llu", static_cast<unsigned long long>(seconds / 60),
                  static_cast<unsigned long long>(seconds % 60));
    return text;
}

}  // namespace

std::string TransferLine(const std::string& doing, uint64_t done, uint64_t total, milliseconds elapsed,
                         size_t columns) {
    std::string count = Size(done) + " of " + Size(total);
    const auto took = static_cast<uint64_t>(elapsed.count());
    const uint64_t rate = elapsed < kFirstRate ? 0 : done * 1000 / took;
    if (rate > 0)
        count += "  " + Size(rate) + "/s  " + Duration((total - std::min(done, total)) / rate) + " left";
    return BarLine(doing, count, total > 0 ? static_cast<double>(done) / static_cast<double>(total) : 0,
                   columns);
}

TransferProgress::TransferProgress(std::string doing, uint64_t total)
    : doing_(std::move(doing)),
      shown_(TakesStatus()),
      total_(total),
      start_(steady_clock::now()),
      next_(start_ + kPeriod) {}

TransferProgress::~TransferProgress() {
    ClearStatus();
}

void TransferProgress::Skip(uint64_t bytes) {
    total_ -= std::min(bytes, total_);
}

void TransferProgress::Draw() {
    const Deadline now = steady_clock::now();
    if (!shown_ || now < next_) return;
    const auto elapsed = std::chrono::duration_cast<milliseconds>(now - start_);
    ShowStatus(TransferLine(doing_, done_, total_, elapsed, TerminalColumns()));
    next_ = now + kPeriod;
}

}  // namespace host
