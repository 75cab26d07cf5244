#include "plugin-modules/Gallery/src/media/Mp4Header.h"

#include <optional>

#include "CobalixUtil.h"
#include "common/files/DirUtil.h"
#include "common/results/RetVal.h"
#include "plugin-modules/Gallery/src/media/ByteCursor.h"
#include "plugin-modules/Gallery/src/media/FileSource.h"

namespace media {
namespace {

constexpr int32_t kDone = 1;
constexpr size_t kBlockSize = 120;  // holds the largest header there is, of a movie with 64-bit times
constexpr uint64_t kHeaderSize = 8;
// No video needs as many before its first track; a file made of boxes must not flood the log.
constexpr int kMaxTypesLogged = 1000;

using Ending = std::optional<int32_t>;  // the result to leave with, or nothing to go on

// The file's four bytes in a form that fits a log line.
std::string PrintableType(ByteView block) {
    std::string type = block.Sub(4, 4).str();
    for (char& c : type)
        if (c < ' ' || c > '~') c = '?';
    return type;
}

class HeaderWalk {
  public:
    HeaderWalk(bool wantSize, Mp4HeaderInfo& info) : wantSize_(wantSize), info_(info) {}

    // Sets `step` to where the next box begins, from the start of this one.
    Ending TakeBox(ByteView block, uint64_t& step) {
        step = block.U32(0);
        if (step < kHeaderSize && step != 1) return KXP::Code::kInvalidData;
        // Entered whatever its size: an extended one is then read over as if it were a box.
        if (block.HasAt(4, "moov")) step = kHeaderSize;
        if (const Ending ending = wantSize_ ? TakeTrack(block, step) : TakeMovie(block, step)) return ending;
        if (step != 1) return {};
        // A size that lies within the header is followed too; files are known by what such a walk finds.
        step = block.U64(8);
        return step == 0 ? Ending(KXP::Code::kInvalidData) : Ending();
    }

  private:
    Ending TakeTrack(ByteView block, uint64_t& step) {
        if (++typesSeen_ <= kMaxTypesLogged) KXP_LOG(KXP::LogDetail, "Box %s", PrintableType(block).c_str());
        if (block.HasAt(4, "trak")) step = kHeaderSize;
        if (!block.HasAt(4, "tkhd")) return {};
        // The version is known by the size. The first track counts, even one without a picture.
        if (step == 92) return TakeSize(block, 84);
        if (step == 104) return TakeSize(block, 96);
        return {};
    }

    // Width and height in 16.16 fixed point, of which the whole pixels are kept.
    Ending TakeSize(ByteView block, uint64_t at) {
        info_.width = block.U16(at);
        info_.height = block.U16(at + 4);
        return kDone;
    }

    // The version is known by the size here too, and has to agree.
    Ending TakeMovie(ByteView block, uint64_t step) {
        if (!block.HasAt(4, "mvhd")) return {};
        if (step == 108) {
            if (!block.HasAt(8, {"\0", 1})) return Refuse("GetDuration, version must be zero!");
            return TakeTimes(block.U32(24), block.U32(20), block.U32(104));
        }
        if (step == 120) {
            if (!block.HasAt(8, "\1")) return Refuse("GetDuration, version must be one!");
            return TakeTimes(block.U64(32), block.U32(28), block.U32(116));
        }
        return {};
    }

    static Ending Refuse(const char* text) {
        KXP_LOG(KXP::LogMilestone, "%s", text);
        return KXP::Code::kInvalidData;
    }

    Ending TakeTimes(uint64_t duration, uint32_t timeScale, uint32_t nextTrack) {
        info_.duration = static_cast<double>(duration) / timeScale;
        // Counts tracks by the number that the next one would get: a picture and one sound make 3.
        info_.audioType = nextTrack < 4 ? "Single" : "Separate";
        return kDone;
    }

    const bool wantSize_;
    Mp4HeaderInfo& info_;
    int typesSeen_ = 0;
};

}  // namespace

int32_t ReadMp4Header(ByteSource& source, bool wantSize, Mp4HeaderInfo& info) {
    info.duration = 0;
    info.width = 0;
    info.height = 0;
    ByteCursor cursor(source);
    HeaderWalk walk(wantSize, info);
    uint64_t position = 0;
    for (;;) {
        cursor.MoveTo(position);
        const ByteView block = cursor.Take(kBlockSize);
        if (block.size() == 0) return KXP::Code::kFailure;
        if (block.size() < kBlockSize) return kDone;

        uint64_t step = 0;
        if (const Ending ending = walk.TakeBox(block, step)) return *ending;
        // Where no file has a position.
        if (step > INT64_MAX - position) return KXP::Code::kInvalidData;
        position += step;
    }
}

int32_t FindMP4HeaderInfo(const std::string& path, double& duration, std::string& audioType, bool wantSize,
                          unsigned int& width, unsigned int& height) {
    KXP::ifstream file;
    if (!file.open(path)) {
        KXP_LOG(KXP::LogMilestone, "Failed to open %s", KXP::GetFileNameFromPath(path).c_str());
        return KXP::Code::kFailure;
    }
    FileSource source(file);
    Mp4HeaderInfo info{0, audioType, 0, 0};
    const int32_t code = ReadMp4Header(source, wantSize, info);
    duration = info.duration;
    audioType = info.audioType;
    width = info.width;
    height = info.height;
    return code;
}

}  // namespace media
