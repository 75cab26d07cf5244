#include "libraries/ovnx-media/cut/ClipFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

#include "base/ReadWrite.h"
#include "base/SlabMemory.h"
#include "libraries/ovnx-media/cut/MemoryBoxes.h"

namespace ovnxmedia {
namespace {

// The space that is left after the "moov", for what is added to it later.
constexpr size_t kRoomForMore = 8192;
constexpr size_t kPiece = 1u << 20;

constexpr std::string_view kFirstForm = "qt  ";

std::string FileType(std::string_view main, std::string_view others) {
    std::string content(main);
    AppendNumber(content, 4, 0);
    std::string box;
    AppendBox(box, "ftyp", content.append(others));
    return box;
}

// Appends to a file in large pieces, which consist of what is taken from anywhere in another.
class PieceCopier {
  public:
    PieceCopier(SourceFile& source, int output, const Budget& budget)
        : source_(source),
          output_(output),
          budget_(budget),
          buffer_(static_cast<char*>(KXP::AllocateInSlab(kPiece))) {}

    void Append(std::string_view bytes) {
        for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), kPiece))) {
            if (held_ + std::min(bytes.size(), kPiece) > kPiece) Flush();
            held_ += bytes.copy(buffer_.get() + held_, kPiece);
        }
    }

    // Neighbours are read at once.
    void Copy(uint64_t from, uint64_t size) {
        if (from == start_ + size_) {
            size_ += size;
            return;
        }
        ReadNeighbours();
        start_ = from;
        size_ = size;
    }

    void Finish() {
        ReadNeighbours();
        Flush();
    }

  private:
    void ReadNeighbours() {
        while (size_ > 0) {
            const auto part = static_cast<size_t>(std::min<uint64_t>(size_, kPiece - held_));
            if (source_.ReadAt(start_, buffer_.get() + held_, part) < part)
                throw Failure(OVNX_MEDIA_UNREADABLE, "cannot be read");
            held_ += part;
            start_ += part;
            size_ -= part;
            if (held_ == kPiece) Flush();
        }
    }

    void Flush() {
        budget_.Check();
        if (!KXP::WriteFullyAt(output_, buffer_.get(), held_, position_))
            throw Failure(OVNX_MEDIA_UNWRITABLE, std::strerror(errno));
        position_ += held_;
        held_ = 0;
    }

    SourceFile& source_;
    const int output_;
    const Budget& budget_;
    const std::unique_ptr<char[], KXP::SlabDeleter> buffer_;
    size_t held_ = 0;
    uint64_t position_ = 0;  // in the output, of what is held
    uint64_t start_ = 0;     // in the source, of what is to be copied next
    uint64_t size_ = 0;
};

void CheckPlaces(const SourceFile& source, const std::vector<ClipTrack>& tracks) {
    for (const ClipTrack& track : tracks)
        for (const Sample& sample : track.samples)
            if (sample.offset > source.size() || sample.size > source.size() - sample.offset)
                throw Failure(OVNX_MEDIA_DAMAGED, "a part of it is missing");
}

std::string MediaHeader(uint64_t size) {
    std::string header;
    const bool isLarge = size + 8 > UINT32_MAX;
    AppendNumber(header, 4, isLarge ? 1 : size + 8);
    header += "mdat";
    if (isLarge) AppendNumber(header, 8, size + 16);
    return header;
}

}  // namespace

// Files without a type are movies of the first form.
std::string FileTypeOf(const MovieFile& source, bool asMp4) {
    const bool isFirstForm =
        source.fileType.empty() || std::string_view(source.fileType).substr(8, 4) == kFirstForm;
    if (asMp4 && isFirstForm) return FileType("mp42", "mp42isomqt  ");
    return source.fileType.empty() ? FileType(kFirstForm, kFirstForm) : source.fileType;
}

MediaPlace WriteClip(SourceMovie& source, const std::vector<ClipTrack>& tracks, const ChunkPlan& plan,
                     const ShownRange& range, std::string_view fileType, int output, const Budget& budget) {
    CheckPlaces(source.file(), tracks);
    const MovieFile& boxes = source.boxes();
    std::string start = std::string(fileType) + boxes.inFront;
    std::string end;
    AppendBox(end, "free", std::string(kRoomForMore, '\0'));
    end += MediaHeader(plan.size);
    const MediaPlace base = start.size() + WriteMovie(source, tracks, plan, range, 0).size() + end.size();
    PieceCopier copier(source.file(), output, budget);
    copier.Append(start);
    copier.Append(WriteMovie(source, tracks, plan, range, base));
    copier.Append(end);
    for (const Chunk& chunk : plan.chunks)
        for (size_t i = chunk.first; i < chunk.end; ++i) {
            const Sample& sample = tracks[chunk.track].samples[i];
            copier.Copy(sample.offset, sample.size);
        }
    copier.Finish();
    copier.Append(boxes.after);
    copier.Finish();
    return base;
}

}  // namespace ovnxmedia
