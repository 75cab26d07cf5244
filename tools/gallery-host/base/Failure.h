// The exit statuses, and the exception that carries one up to main.
#pragma once

#include <stdexcept>
#include <string>

namespace host {

// Scripts test these, and --help lists them.
enum ExitStatus : int {
    kExitSuccess = 0,
    kExitFailed = 1,  // the request failed
    kExitUsage = 2,
    kExitNoPlugin = 3,  // the plug-in could not be loaded or started
    kExitNoAnswer = 4,
    kExitInterrupted = 130,
};

// The text is for people, without the program's name and without a line end.
class Failure : public std::runtime_error {
  public:
    Failure(ExitStatus status, const std::string& text) : std::runtime_error(text), status_(status) {}
    ExitStatus status() const { return status_; }

  private:
    ExitStatus status_;
};

}  // namespace host
