// A status line on the terminal with the progress of a verb.
#pragma once

#include <string>

#include "gallery-host/base/Deadline.h"

namespace host {

// What is done and a bar as long as a part of the whole, 0 to 1, if so many columns have room for it. Pure.
std::string BarLine(const std::string& doing, const std::string& count, double part, size_t columns);
// The width of the terminal.
size_t TerminalColumns();

// For example "copying  [########----------------]  3 of 9", within so many columns. Pure.
std::string ProgressLine(const std::string& doing, size_t done, size_t total, size_t columns);
// "making  [########----------------]  33 %".
std::string PercentLine(const std::string& doing, size_t percent, size_t columns);

// Draws nothing for a single file, nor at the very start, nor if standard error is not a terminal.
class Progress {
  public:
    Progress(std::string doing, size_t total);
    explicit Progress(std::string doing);  // in percent
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Advance();  // by one
    void Set(size_t done);
    // When to call Draw next.
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
