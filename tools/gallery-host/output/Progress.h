// How far a verb is that takes many files, as a line on the terminal.
#pragma once

#include <string>

#include "gallery-host/base/Deadline.h"

namespace host {

// For example "copying  [########----------------]  3 of 9", within so many columns. Pure.
std::string ProgressLine(const std::string& doing, size_t done, size_t total, size_t columns);
// "making  [########----------------]  33 %".
std::string PercentLine(const std::string& doing, size_t percent, size_t columns);

// Nothing is drawn for a single file, where standard error is no terminal, and of what is soon over.
class Progress {
  public:
    Progress(std::string doing, size_t total);
    explicit Progress(std::string doing);  // in percent
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Advance();  // one more is done
    void Set(size_t done);
    // When Draw is to be called next.
    Deadline due() const { return stale_ ? next_ : Deadline::max(); }
    void Draw();

  private:
    const std::string doing_;
    const size_t total_;  // 0: in percent
    const bool shown_;
    size_t done_ = 0;
    bool stale_;
    Deadline next_;
};

}  // namespace host
