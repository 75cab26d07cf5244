#include "libraries/ovnx-media/cut/MovieFile.h"

#include "libraries/ovnx-media/MediaInput.h"
#include "libraries/ovnx-media/cut/MemoryBoxes.h"

namespace ovnxmedia {
namespace {

// What describes a whole file may contain pictures, but hardly many.
constexpr uint64_t kMaxDescription = 16u << 20;

// A box that holds for the clip as well. An index of items by their place in the file does not.
bool IsCarried(const std::string& type, const std::string& content) {
    if (type == "uuid" || type == "udta") return true;
    return type == "meta" && content.find("iloc") == std::string::npos;
}

bool MayBeCarried(const std::string& type) {
    return IsCarried(type, {});
}

class MovieReader {
  public:
    MovieReader(SourceFile& file, const Budget& budget) : file_(file), budget_(budget) {}

    MovieFile Read() {
        media::BoxWalk walk(file_, 0, file_.size());
        while (walk.Next()) {
            budget_.Check();
            Take(walk.box());
        }
        if (file_.HasFailed()) throw Failure(OVNX_MEDIA_UNREADABLE, "cannot be read");
        if (walk.end() == media::WalkEnd::TooMany) throw Failure(OVNX_MEDIA_OVER_LIMIT, "too many boxes");
        // A recording that was cut off ends within its last box.
        if (!hasMovie_) ThrowDamaged();
        return std::move(result_);
    }

  private:
    void Take(const media::Box& box) {
        if (box.type == "moov" && !hasMovie_) {
            hasMovie_ = true;
            if (box.size > MediaInput::kMaxHeadBytes)
                throw Failure(OVNX_MEDIA_OVER_LIMIT, "too large a head");
            result_.movie = ReadRange(file_, box.content(), box.end() - box.content());
        } else if (box.type == "ftyp" && result_.fileType.empty() && box.size <= kMaxDescription) {
            AppendBox(result_.fileType, "ftyp", ReadRange(file_, box.content(), box.end() - box.content()));
        } else if (box.type == "moof") {
            result_.fragments.push_back(box);
        } else if (MayBeCarried(box.type)) {
            Carry(box);
        }
    }

    void Carry(const media::Box& box) {
        if (result_.inFront.size() + result_.after.size() + box.size > kMaxDescription)
            throw Failure(OVNX_MEDIA_OVER_LIMIT, "too much describes the file");
        const std::string content = ReadRange(file_, box.content(), box.end() - box.content());
        if (IsCarried(box.type, content))
            AppendBox(hasMovie_ ? result_.after : result_.inFront, box.type, content);
    }

    SourceFile& file_;
    const Budget& budget_;
    bool hasMovie_ = false;
    MovieFile result_;
};

}  // namespace

MovieFile ReadMovieFile(SourceFile& file, const Budget& budget) {
    return MovieReader(file, budget).Read();
}

std::string ReadRange(SourceFile& file, uint64_t from, uint64_t size) {
    if (from > file.size() || size > file.size() - from)
        throw Failure(OVNX_MEDIA_DAMAGED, "a part of it is missing");
    std::string bytes(size, '\0');
    if (file.ReadAt(from, bytes.data(), bytes.size()) < bytes.size())
        throw Failure(OVNX_MEDIA_UNREADABLE, "cannot be read");
    return bytes;
}

}  // namespace ovnxmedia
