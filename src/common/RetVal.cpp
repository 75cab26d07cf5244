#include "common/RetVal.h"

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

}  // namespace KXP
