// The two output streams: data goes to standard output, messages for people to standard error.
#pragma once

#include <string_view>

#include "gallery-host/base/Interrupt.h"

namespace host {

class Output {
  public:
    explicit Output(Interrupt& interrupt) : interrupt_(interrupt) {}

    // Waits until everything is written. False once the reader has closed the stream, which is no error.
    // Throws Failure for errors such as a full disk, and when interrupted.
    bool Write(std::string_view data);

  private:
    Interrupt& interrupt_;
    bool open_ = true;
};

// One line "gallery-host: text" on standard error.
void Say(std::string_view text);
// One line on standard error, with control characters escaped.
void SayRaw(std::string_view line);

// A status line at the end of standard error. Each further one, and all other output, replaces it. Only for a
// terminal.
void ShowStatus(std::string_view line);
void ClearStatus();
// True when standard error is a terminal that can erase a line.
bool TakesStatus();

// True when standard output is a terminal and the user has not asked for plain text: https://no-color.org.
bool WantsColour();

}  // namespace host
