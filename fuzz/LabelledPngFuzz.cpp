// The label of stored thumbnails: what a file is read to be against a plain walk over its chunks, and what
// was labelled is itself again.
#include <cstring>
#include <string>

#include "fuzz/Plain.h"
#include "plugin-modules/Gallery/src/thumbnails/LabelledPng.h"

namespace {

using plain::At;
using plain::Big;
using plain::Demand;

constexpr size_t kHeader = 33;

uint32_t Sum(std::string_view bytes) {
    uint32_t sum = 0xFFFFFFFF;
    for (const char byte : bytes) {
        sum ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            sum = sum >> 1 ^ ((sum & 1) != 0 ? 0xEDB88320 : 0);
    }
    return ~sum;
}

// The whole chunk at a position with its length, type and sum; empty for one that is cut short or damaged.
std::string_view Chunk(std::string_view file, uint64_t at) {
    const std::string_view length = At(file, at, 4);
    if (length.size() < 4) return {};
    const std::string_view chunk = At(file, at, Big(length) + 12);
    if (chunk.size() < Big(length) + 12) return {};
    return Sum(chunk.substr(4, chunk.size() - 8)) == Big(chunk.substr(chunk.size() - 4)) ? chunk : "";
}

bool IsWhole(std::string_view file) {
    if (!plain::StartsWith(file, "\x89PNG\r\n\x1A\n")) return false;
    for (uint64_t at = 8; at < file.size();) {
        const std::string_view chunk = Chunk(file, at);
        if (chunk.empty()) return false;
        at += chunk.size();
        if (chunk.substr(4, 4) == "IEND") return chunk.size() == 12 && at == file.size();
    }
    return false;
}

std::string_view Path(std::string_view start) {
    const std::string_view chunk = Chunk(start, kHeader);
    const std::string_view head("iTXtPath\0\0\0\0\0", 13);
    return At(chunk, 4, head.size()) == head ? chunk.substr(17, chunk.size() - 21) : std::string_view();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const std::string label = LabelOf({"/g/a.png", 1, 2, 3, 4});
    Demand(LabelledPath(bytes) == Path(bytes));
    KXP::SlabString file(bytes);
    const bool isLabelled =
        size >= kHeader && plain::StartsWith(bytes.substr(kHeader), label) && IsWhole(bytes);
    Demand(TakeLabel(file, label) == isLabelled);
    Demand(isLabelled ? file.size() == size - label.size() : std::string_view(file) == bytes);

    KXP::SlabString labelled = AddLabel(bytes, label);
    Demand(labelled.empty() == (size < kHeader));
    if (labelled.empty()) return 0;
    Demand(LabelledPath(labelled) == "/g/a.png");
    const bool isWhole = IsWhole(labelled);
    Demand(TakeLabel(labelled, label) == isWhole);
    if (isWhole) Demand(std::string_view(labelled) == bytes);
    return 0;
}
