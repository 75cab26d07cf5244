// RetVal, the result of a call, and the result codes of the framework.
#pragma once

#include <cstdint>
#include <string>

namespace KXP {

// Codes in the style of HRESULT numbers. Negative means failure; the meanings are the framework's own.
namespace Code {
constexpr int32_t kOk = 0;
constexpr int32_t kNothingDone = 1;  // done already, or nothing to do
constexpr int32_t kPending = 0x103;  // the answer comes later, from elsewhere
constexpr int32_t kNotImplemented = static_cast<int32_t>(0x80004001);
constexpr int32_t kNoInterface = static_cast<int32_t>(0x80004002);
constexpr int32_t kInvalidPointer = static_cast<int32_t>(0x80004003);
constexpr int32_t kAborted = static_cast<int32_t>(0x80004004);
constexpr int32_t kFailure = static_cast<int32_t>(0x80004005);
constexpr int32_t kUnexpected = static_cast<int32_t>(0x8000FFFF);
constexpr int32_t kNotFound = static_cast<int32_t>(0x80070002);
constexpr int32_t kFileNotFound = static_cast<int32_t>(0x80070003);
constexpr int32_t kAccessDenied = static_cast<int32_t>(0x80070005);
constexpr int32_t kInvalidHandle = static_cast<int32_t>(0x80070006);
constexpr int32_t kInvalidData = static_cast<int32_t>(0x8007000D);
constexpr int32_t kOutOfMemory = static_cast<int32_t>(0x8007000E);
constexpr int32_t kInvalidArgument = static_cast<int32_t>(0x80070057);
constexpr int32_t kFileLocked = static_cast<int32_t>(0x800700D4);
constexpr int32_t kFileTooLarge = static_cast<int32_t>(0x800700DF);
constexpr int32_t kTimedOut = static_cast<int32_t>(0x800705B4);
constexpr int32_t kJsonField = static_cast<int32_t>(0x8008F001);
}  // namespace Code

struct [[nodiscard]] RetVal {
    int32_t code = Code::kOk;
    std::string text = "Success";
    int32_t internal = 0;  // a detail number, such as errno; 0 when there is none

    // The only test for failure.
    bool Failed() const { return code < 0; }

    static RetVal Pending() { return {Code::kPending, "Pending", 0}; }
};

// For example "0x80004005[1a]: Some text": eight hexadecimal digits, and the detail number in hexadecimal
// too.
std::string ToStr(const RetVal& value);

// The standard text of a code, used in reports; "Unknown error" for a code without one.
const char* CodeText(int32_t code);

}  // namespace KXP
