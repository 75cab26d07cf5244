// The orientation in Exif data, against a plain search of the first directory.
#include <string>

#include "fuzz/Plain.h"
#include "libraries/ovnx-media/ExifOrientation.h"

namespace {

using plain::At;
using plain::Big;

uint64_t Number(std::string_view exif, uint64_t at, uint64_t size) {
    std::string bytes(At(exif, at, size));
    if (bytes.size() < size) return 0;
    return exif[0] == 'I' ? Big(std::string(bytes.rbegin(), bytes.rend())) : Big(bytes);
}

uint64_t Orientation(std::string_view exif) {
    if (At(exif, 0, 4) != std::string_view("II*\0", 4) && At(exif, 0, 4) != std::string_view("MM\0*", 4))
        return 1;
    const uint64_t directory = Number(exif, 4, 4);
    for (uint64_t i = 0; i < Number(exif, directory, 2); ++i) {
        const uint64_t entry = directory + 2 + 12 * i;
        if (entry >= exif.size()) break;
        if (Number(exif, entry, 2) != 0x0112) continue;
        const uint64_t value = Number(exif, entry + 8, 2);
        const bool isRight = Number(exif, entry + 2, 2) == 3 && Number(exif, entry + 4, 4) == 1;
        return isRight && value >= 1 && value <= 8 ? value : 1;
    }
    return 1;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view exif(reinterpret_cast<const char*>(data), size);
    const uint64_t expected = Orientation(exif);
    const ovnxmedia::Orientation found = ovnxmedia::ReadExifOrientation(media::ByteView(exif));
    plain::Demand(found.swapsSides == (expected >= 5));
    plain::Demand(found.reversesRows == (expected == 3 || expected == 4 || expected == 6 || expected == 7));
    plain::Demand(found.reversesColumns ==
                  (expected == 2 || expected == 3 || expected == 7 || expected == 8));
    return 0;
}
