// Reads what the trash says of a file: a path to somewhere, and a date that sorts as text.
#include <algorithm>
#include <cctype>
#include <string>

#include "fuzz/Plain.h"
#include "gallery-host/trash/linux/TrashInfo.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    host::TrashInfo info;
    if (!host::ReadTrashInfo({reinterpret_cast<const char*>(data), size}, info)) return 0;
    plain::Demand(!info.path.empty() && info.path.find('\0') == std::string::npos);
    plain::Demand(info.deleted.empty() || info.deleted.size() == 19);
    plain::Demand(std::all_of(info.deleted.begin(), info.deleted.end(), [](unsigned char c) {
        return std::isdigit(c) != 0 || c == '-' || c == 'T' || c == ':';
    }));
    return 0;
}
