#include "libraries/share-common/MetadataBlock.h"

namespace {

std::string Quoted(std::string_view text) {
    std::string out = "\"";
    for (const char c : text)
        if (c != '"' && c != '\\' && static_cast<unsigned char>(c) - 0x20u < 0x5Fu) out += c;
    return out + '"';
}

}  // namespace

// Once as the outer text and once as the base64 inside one, which a random text seldom becomes.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    MetadataFields fields;
    MetadataBlock(text).CopyTo(fields);
    MetadataBlock("{\"B64\":" + Quoted(text) + "}").CopyTo(fields);
    return 0;
}
