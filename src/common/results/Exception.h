// The framework's exceptions and their way back into a RetVal. They derive from std::runtime_error so that a
// container on the far side of the library boundary can catch them.
#pragma once

#include <stdexcept>
#include <string>

#include "common/results/RetVal.h"

namespace KXP {

class Exception : public std::runtime_error {
  public:
    Exception(int code, const char* message, int internal);

    int code() const { return value_.code; }
    const std::string& message() const { return value_.text; }  // as given
    int internal() const { return value_.internal; }

    // The formatted text, code and all, not the plain message.
    const char* what() const noexcept override { return formatted_.c_str(); }

  private:
    RetVal value_;
    std::string formatted_;
};

// A message or file whose fields are wrong; always carries Code::kJsonField.
class JSONFieldError : public Exception {
  public:
    explicit JSONFieldError(const std::string& message) : Exception(Code::kJsonField, message.c_str(), 0) {}
};

// Turns the exception in flight into a value. Call it inside a catch block only; it does not throw.
RetVal ExceptionToRetVal();

// The text for a caller's answer: the plain message of a framework exception, what() of any
// other.
std::string ExceptionText(const std::exception& error);

// Runs the whole of a request. What it throws, such as a number beyond its type or a drive that is gone,
// becomes a failure with its text, 0x80070057.
template <typename Body>
RetVal RunRequest(const Body& body) {
    try {
        return body();
    } catch (const std::exception& error) {
        return {Code::kInvalidArgument, ExceptionText(error), 0};
    }
}

}  // namespace KXP
