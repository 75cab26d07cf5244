// The two output streams: data on standard output, words for people on standard error.
#pragma once

#include <string_view>

#include "gallery-host/base/Interrupt.h"

namespace host {

class Output {
  public:
    explicit Output(Interrupt& interrupt) : interrupt_(interrupt) {}

    // Writes all of it, however slowly it is read. False once nobody reads any more, which is no error.
    // Throws Failure for a full disk and the like, and when interrupted.
    bool Write(std::string_view data);

  private:
    Interrupt& interrupt_;
    bool open_ = true;
};

// One line "gallery-host: text" on standard error.
void Say(std::string_view text);
// One line on standard error as it is, but for what could steer a terminal.
void SayRaw(std::string_view line);

// One line at the end of standard error that the next takes the place of, as does all else that is written:
// for a terminal only.
void ShowStatus(std::string_view line);
void ClearStatus();
// True when standard error is a terminal that can take a line back.
bool TakesStatus();

// True when standard output is a terminal and the user did not ask for plain text: https://no-color.org.
bool WantsColour();

}  // namespace host
