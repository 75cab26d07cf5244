#include <cstdint>
#include <cstdlib>

#include "plugin-modules/Gallery/src/media/XMPMeta.h"

namespace {

void Read(media::XMPMeta& xmp, size_t size) {
    std::string value;
    // Decoding only ever shortens.
    if (xmp.GetCurrentString(value) != 0 || value.size() > size) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    media::XMPMeta xmp({reinterpret_cast<const char*>(data), size});
    Read(xmp, size);
    for (const char* tag : {"x:xmpmeta", "rdf:RDF", "rdf:Description", "xmp:CreatorTool"})
        xmp.Descend(tag);
    Read(xmp, size);
    xmp.Rewind();
    for (const char* tag : {"a", "dc:description", "rdf:Alt", "rdf:li"})
        xmp.Descend(tag);
    Read(xmp, size);
    return 0;
}
