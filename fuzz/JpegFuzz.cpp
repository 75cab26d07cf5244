#include <optional>

#include "fuzz/MemoryFile.h"
#include "fuzz/Plain.h"
#include "fuzz/QuietLog.h"
#include "plugin-modules/Gallery/src/media/JpegWalk.h"
#include "plugin-modules/Gallery/src/media/OwnershipSniffer.h"

namespace {

using plain::At;
using plain::Big;
using plain::StartsWith;

// Width times height of the first frame that the markers lead to.
std::optional<uint64_t> Pixels(std::string_view file) {
    if (!StartsWith(file, "\xFF\xD8")) return {};
    for (uint64_t at = 2;;) {
        if (At(file, at, 1) != "\xFF") return {};
        while (At(file, at, 1) == "\xFF")
            ++at;
        if (at >= file.size()) return {};
        const auto marker = static_cast<unsigned char>(file[at++]);
        if (marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC) {
            const std::string_view frame = At(file, at, 8);
            if (frame.size() < 8) return {};
            return Big(frame.substr(3, 2)) * Big(frame.substr(5, 2));
        }
        const std::string_view length = At(file, at, 2);
        if (marker == 0xD9 || marker == 0xDA || length.size() < 2 || Big(length) < 2) return {};
        at += Big(length);
    }
}

bool IsValid(std::string_view file) {
    const std::optional<uint64_t> pixels = Pixels(file);
    return pixels && *pixels <= 0x4000000;
}

class Scan {
  public:
    explicit Scan(std::string_view block) : block_(block) {}

    void Run() {
        size_t at = Big(block_.substr(4, 2)) + 4;
        while (at <= 496 && block_.substr(at, 2) != "MM")
            ++at;
        base_ = at;
        for (bool isTag = false; at <= 496; ++at, isTag = true) {
            if (isTag) TakeTag(at);
            if (result.fileSubType.empty()) TakeSubType(block_.substr(at));
            result.isOwn = make_.value_or(false) || model_ || software_.value_or(false);
            if (result.isOwn && software_ && !result.fileSubType.empty()) return;
        }
    }

    media::SniffResult result;

  private:
    bool Is(uint64_t count, std::string_view text, uint64_t extra) const {
        return count == text.size() + extra && At(block_, value_, text.size()) == text;
    }

    void TakeTag(size_t at) {
        const uint64_t tag = Big(block_.substr(at, 2));
        const uint64_t count = Big(block_.substr(at + 4, 4));
        value_ = base_ + Big(block_.substr(at + 8, 4));
        if (tag == 0x010F && !make_) make_ = false;
        if (tag == 0x010F && count == 9) make_ = Is(count, "ZvCamera", 1);
        if (tag == 0x010F && count == 7) make_ = Is(count, "ZORVEX", 1);
        if (tag == 0x0110 && !make_ && count == 6) model_ = Is(count, "Lumis", 1);
        if (tag == 0x0110 && !make_ && count == 9) model_ = Is(count, "ZvCamera", 1);
        if (tag == 0x0131 && !software_) {
            software_ = false;
            for (const auto& [name, source] : {std::pair{"Ovirastream SHARE", "OVS_Share"},
                                               {"Ovirastream SDK", "OVS_SDK"},
                                               {"Ovirastream LUMIS", "OVS_Lumis"}}) {
                if (!Is(count, name, 1)) continue;
                software_ = true;
                result.fileSource = source;
            }
        }
        if (tag == 0x000B) TakeName(count, hasName_, result.drsName);
        if (tag == 0xC6F6) TakeName(count, hasProfile_, result.drsProfileName);
    }

    void TakeName(uint64_t count, bool& seen, std::string& name) {
        if (seen) return;
        seen = true;
        if (count > 512)
            result.findings.push_back("");
        else
            name = At(block_, value_, count);
    }

    void TakeSubType(std::string_view text) {
        for (const char* each : {"SuperResolution", "360Mono", "Stereo", "360Stereo"})
            if (StartsWith(text, each)) result.fileSubType = each;
    }

    const std::string_view block_;
    uint64_t base_ = 0;
    uint64_t value_ = 0;
    std::optional<bool> make_;
    bool model_ = false;
    std::optional<bool> software_;
    bool hasName_ = false;
    bool hasProfile_ = false;
};

media::SniffResult Walk(std::string_view file) {
    const std::string_view block = At(file, 0, 512);
    if (block.size() < 512 || !StartsWith(block, "\xFF\xD8\xFF\xE0")) return {};
    Scan scan(block);
    scan.Run();
    if (scan.result.isOwn && !IsValid(file)) scan.result.fileSubType = "SuperResolution_Oversized";
    return scan.result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QuietLog();
    const std::string_view file(reinterpret_cast<const char*>(data), size);
    media::MemorySource source(file);
    media::ByteCursor cursor(source);
    media::SniffResult result;
    plain::Demand(media::WalkJpeg(cursor, result) == 1);
    const media::SniffResult expected = Walk(file);
    plain::Demand(result.isOwn == expected.isOwn && result.fileSource == expected.fileSource);
    plain::Demand(result.fileSubType == expected.fileSubType);
    plain::Demand(result.drsName == expected.drsName && result.drsProfileName == expected.drsProfileName);
    plain::Demand(result.findings.size() == expected.findings.size());
    // The walk gets here only for a signed file.
    cursor.Rewind();
    plain::Demand(media::JpegSizeIsValid(cursor) == IsValid(file));
    static MemoryFile inMemory;
    inMemory.Set(data, size);
    bool isValid = false;
    plain::Demand(media::CheckIfJPGFileSizeIsValid(inMemory.path(), isValid) == 1 &&
                  isValid == IsValid(file));
    plain::Demand(media::CheckIfJPGFileSizeIsValid("/dev/null/none", isValid) < 0 && !isValid);
    return 0;
}
