#include <cmath>

#include "fuzz/MemoryFile.h"
#include "fuzz/Plain.h"
#include "fuzz/QuietLog.h"
#include "plugin-modules/Gallery/src/media/Mp4Header.h"

namespace {

using plain::At;
using plain::Big;

constexpr auto kFailure = static_cast<int32_t>(0x80004005);
constexpr auto kInvalidData = static_cast<int32_t>(0x8007000D);

int32_t Read(std::string_view file, bool wantSize, media::Mp4HeaderInfo& info) {
    for (uint64_t at = 0;;) {
        const std::string_view block = At(file, at, 120);
        if (block.size() < 120) return block.empty() ? kFailure : 1;
        const auto number = [block](size_t from, size_t size) { return Big(block.substr(from, size)); };
        uint64_t step = number(0, 4);
        if (step == 0 || (step > 1 && step < 8)) return kInvalidData;
        const std::string_view type = block.substr(4, 4);
        if (type == "moov" || (wantSize && type == "trak")) step = 8;
        if (wantSize && type == "tkhd" && (step == 92 || step == 104)) {
            info.width = static_cast<unsigned>(number(step - 8, 2));
            info.height = static_cast<unsigned>(number(step - 4, 2));
            return 1;
        }
        if (!wantSize && type == "mvhd" && (step == 108 || step == 120)) {
            const bool isLong = step == 120;
            if (block[8] != (isLong ? '\1' : '\0')) return kInvalidData;
            const uint64_t length = isLong ? number(32, 8) : number(24, 4);
            info.duration = static_cast<double>(length) / static_cast<double>(number(isLong ? 28 : 20, 4));
            info.audioType = number(step - 4, 4) < 4 ? "Single" : "Separate";
            return 1;
        }
        if (step == 1 && (step = number(8, 8)) == 0) return kInvalidData;
        if (step > INT64_MAX - at) return kInvalidData;
        at += step;
    }
}

bool IsSame(double a, double b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

// The call for files reads the same, and what cannot be opened leaves everything as it was.
void CheckFile(const std::string& path, bool wantSize, int32_t code, const media::Mp4HeaderInfo& expected) {
    media::Mp4HeaderInfo info;
    plain::Demand(media::FindMP4HeaderInfo("/dev/null/none", info.duration, info.audioType, wantSize,
                                           info.width, info.height) == kFailure);
    plain::Demand(info.duration == 0 && info.audioType.empty() && info.width == 0 && info.height == 0);
    plain::Demand(media::FindMP4HeaderInfo(path, info.duration, info.audioType, wantSize, info.width,
                                           info.height) == code);
    plain::Demand(IsSame(info.duration, expected.duration) && info.audioType == expected.audioType &&
                  info.width == expected.width && info.height == expected.height);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QuietLog();
    const std::string_view file(reinterpret_cast<const char*>(data), size);
    media::MemorySource source(file);
    static MemoryFile inMemory;
    inMemory.Set(data, size);
    for (const bool wantSize : {false, true}) {
        media::Mp4HeaderInfo info;
        media::Mp4HeaderInfo expected;
        const int32_t code = media::ReadMp4Header(source, wantSize, info);
        plain::Demand(code == Read(file, wantSize, expected));
        plain::Demand(info.width == expected.width && info.height == expected.height);
        plain::Demand(info.audioType == expected.audioType);
        // Neither needs to be a number.
        plain::Demand(IsSame(info.duration, expected.duration));
        CheckFile(inMemory.path(), wantSize, code, expected);
    }
    return 0;
}
