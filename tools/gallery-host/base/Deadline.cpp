#include "gallery-host/base/Deadline.h"

#include <sstream>

namespace host {

std::string Seconds(std::chrono::milliseconds time) {
    std::ostringstream out;
    out << static_cast<double>(time.count()) / 1000 << " s";
    return out.str();
}

}  // namespace host
