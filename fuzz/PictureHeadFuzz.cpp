// The headers by which pictures are refused before a library decodes them, without the decoding: an
// OpenEXR's, and a JPEG's markers against a plain walk.
#include <algorithm>
#include <memory>
#include <optional>

#include "fuzz/MemoryFile.h"
#include "fuzz/Plain.h"
#include "libraries/ovnx-media/ExrHeader.h"
#include "libraries/ovnx-media/Failure.h"
#include "libraries/ovnx-media/JpegHeader.h"

namespace {

using plain::At;
using plain::Big;
using plain::Demand;

struct Found {
    std::string_view frame;
    unsigned scans = 0;
};

// Nothing for a file that is refused.
std::optional<Found> Walk(std::string_view file) {
    Found found;
    for (size_t at = 0; at + 1 < file.size();) {
        const auto marker = static_cast<unsigned char>(file[at + 1]);
        const bool isAlone = marker <= 1 || (marker >= 0xD0 && marker <= 0xD8);
        if (file[at] != '\xFF' || marker == 0xFF || isAlone) {
            at += file[at] == '\xFF' && isAlone ? 2 : 1;
            continue;
        }
        const std::string_view length = At(file, at + 2, 2);
        if (marker == 0xD9 || length.size() < 2 || Big(length) < 2 || Big(length) > file.size() - at - 2)
            break;
        const std::string_view content = At(file, at + 4, Big(length) - 2);
        if (marker >= 0xC0 && marker <= 0xCF && (marker == 0xC0 || marker % 4 != 0)) {
            const uint64_t components = Big(At(content, 5, 1));
            if (!found.frame.empty() || components == 0 || content.size() != 6 + 3 * components) return {};
            found.frame = content;
        } else if (marker == 0xDA) {
            if (found.frame.empty() || content.empty()) return {};
            ++found.scans;
        }
        at += 2 + Big(length);
    }
    return found.scans > 0 ? std::optional(found) : std::nullopt;
}

void CheckJpeg(const uint8_t* data, size_t size) {
    const std::optional<Found> expected = Walk({reinterpret_cast<const char*>(data), size});
    ovnxmedia::FileBytes file;
    file.Reserve(size);
    file.size = size;
    std::copy_n(data, size, file.bytes.get());
    try {
        const ovnxmedia::JpegHeader header = ovnxmedia::ReadJpegHeader(file);
        Demand(expected && header.scans == expected->scans);
        Demand(header.size.height == Big(expected->frame.substr(1, 2)));
        Demand(header.size.width == Big(expected->frame.substr(3, 2)));
        Demand(header.components == Big(expected->frame.substr(5, 1)));
    } catch (const ovnxmedia::Failure&) {
        Demand(!expected);
    }
}

void CheckExr(const uint8_t* data, size_t size) {
    static MemoryFile file;
    file.Set(data, size);
    try {
        ovnxmedia::SourceFile source(file.fd());
        ovnxmedia::CheckExrHeaders(source);
    } catch (const ovnxmedia::Failure&) {
        return;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > 0 && data[0] == 0xFF)
        CheckJpeg(data, size);
    else
        CheckExr(data, size);
    return 0;
}
