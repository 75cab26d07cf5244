#include "common/results/RetVal.h"

#include <iomanip>
#include <sstream>

namespace KXP {

std::string ToStr(const RetVal& value) {
    std::ostringstream out;
    out.imbue(std::locale::classic());  // the host's own may group digits
    // The stream stays hexadecimal after the code, so the detail number is hexadecimal as well; log readers
    // have come to rely on it.
    out << "0x" << std::hex << std::setw(8) << std::setfill('0') << static_cast<uint32_t>(value.code) << "["
        << value.internal << "]: " << value.text;
    return out.str();
}

const char* CodeText(int32_t code) {
    switch (code) {
        case Code::kOk:
            return "KXP: Ok";
        case Code::kNothingDone:
            return "KXP: NoError";
        case Code::kNotImplemented:
            return "KXP: Functionality is not implemented";
        case Code::kNoInterface:
            return "KXP: No such interface supported or unavailable";
        case Code::kInvalidPointer:
            return "KXP: The pointer is not valid";
        case Code::kAborted:
            return "KXP: Operation was aborted";
        case Code::kFailure:
            return "KXP: Unspecified failure";
        case Code::kUnexpected:
            return "KXP: Unexpected failure or exception";
        // Callers return kNotFound for a missing item, and yet this is its text: clients rely on the pair.
        case Code::kNotFound:
            return "KXP: General access denied error";
        case Code::kFileNotFound:
            return "KXP: The system cannot find the specified file";
        case Code::kInvalidHandle:
            return "KXP: Handle or context is not valid";
        case Code::kInvalidData:
            return "KXP: The data is invalid";
        case Code::kOutOfMemory:
            return "KXP: Failed to allocate the required memory";
        case Code::kInvalidArgument:
            return "KXP: One or more arguments are not valid";
        case Code::kFileLocked:
            return "KXP: File locked";
        case Code::kFileTooLarge:
            return "KXP: File too large";
        case Code::kTimedOut:
            return "KXP: Time out";
        default:
            return "Unknown error";
    }
}

}  // namespace KXP
