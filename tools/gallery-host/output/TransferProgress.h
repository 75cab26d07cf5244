// A status line on the terminal with the progress of a verb that takes as long as it moves bytes.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "gallery-host/base/Deadline.h"

namespace host {

// For example "importing  [########----------------]  1.2 GB of 3.6 GB  240 MB/s  0:10 left", within so many
// columns. Without a rate as long as none can be known. Pure.
std::string TransferLine(const std::string& doing, uint64_t done, uint64_t total,
                         std::chrono::milliseconds elapsed, size_t columns);

// Draws nothing if standard error is not a terminal.
class TransferProgress {
  public:
    TransferProgress(std::string doing, uint64_t total);
    ~TransferProgress();
    TransferProgress(const TransferProgress&) = delete;
    TransferProgress& operator=(const TransferProgress&) = delete;

    void Advance(uint64_t bytes) { done_ += bytes; }
    // What need not be moved: it would make the rest look fast.
    void Skip(uint64_t bytes);
    // Now and then, as often as is convenient.
    void Draw();

  private:
    const std::string doing_;
    const bool shown_;
    uint64_t total_;
    uint64_t done_ = 0;
    const Deadline start_;
    Deadline next_;
};

}  // namespace host
