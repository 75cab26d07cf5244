#include "importing/ImportSource.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include "base/FileCalls.h"
#include "base/ReadWrite.h"
#include "importing/JpegMarks.h"
#include "importing/PngMarks.h"
#include "libraries/digest/Sha256.h"
#include "plugin-modules/Gallery/src/engraving/Mp4Layout.h"

namespace importing {
namespace {

constexpr size_t kBlock = size_t{1} << 20;

class Bytes final : public media::ByteSource {
  public:
    explicit Bytes(const KXP::FileDescriptor& file, std::string_view held = {}) : file_(file), held_(held) {}

    size_t ReadAt(uint64_t position, char* out, size_t count) override {
        if (held_.empty()) return KXP::ReadAt(file_, position, out, count);
        return position < held_.size() ? held_.copy(out, count, static_cast<size_t>(position)) : 0;
    }

  private:
    const KXP::FileDescriptor& file_;
    const std::string_view held_;
};

engraving::Mp4Layout LayoutOf(media::ByteSource& source, uint64_t size) {
    try {
        return engraving::ReadLayout(source, size);
    } catch (const engraving::EngravingError& error) {
        throw ImportError(error.what());
    }
}

}  // namespace

ImportSource::ImportSource(const std::string& path) : path_(path), file_(KXP::OpenForRead(path, status_)) {
    if (!file_.IsOpen()) throw ImportError(errno == EINVAL ? "is not a file" : std::strerror(errno));
    char start[kKindBytes];
    kind_ = KindOf({start, KXP::ReadAt(file_, 0, start, sizeof start)});
}

ImportSource::ImportSource(const std::string& path, PictureMemory& memory) : ImportSource(path) {
    if (!IsVideo()) held_ = memory.Read(file_, size());
}

std::string_view ImportSource::Held(uint64_t from, uint64_t size) const {
    if (from > held_.size() || size > held_.size() - from) return {};
    return held_.substr(static_cast<size_t>(from), static_cast<size_t>(size));
}

int64_t ImportSource::time() const {
    return KXP::Platform::ModifiedNs(status_);
}

bool ImportSource::NeedsConversion() const {
    if (kind_ != SourceKind::kMp4) return kind_ == SourceKind::kOtherVideo;
    Bytes bytes(file_);
    return LayoutOf(bytes, size()).firstFragment.has_value();
}

Splice ImportSource::Plan(const CaptureMarks& marks) const {
    Bytes bytes(file_, held_);
    if (size() == 0) throw ImportError("is empty");
    switch (kind_) {
        case SourceKind::kPng:
            return MarkPng(bytes, size(), marks);
        case SourceKind::kJpeg:
            return MarkJpeg(bytes, size(), marks);
        case SourceKind::kMp4: {
            Splice splice;
            splice.Copy(0, size(), false);
            return splice;
        }
        default:
            throw ImportError("is neither a picture nor a video that can be imported");
    }
}

std::string ImportSource::DigestOfPicture() const {
    KXP::Sha256 digest;
    std::vector<char> block(kBlock);
    const Splice splice = Plan({"Digest", ""});
    for (const Piece& piece : splice.pieces()) {
        for (uint64_t done = 0; piece.isPicture && done < piece.size;) {
            const auto size = static_cast<size_t>(std::min<uint64_t>(piece.size - done, kBlock));
            if (KXP::ReadAt(file_, piece.from + done, block.data(), size) < size)
                throw ImportError("cannot be read");
            digest.Add(block.data(), size);
            done += size;
        }
    }
    return digest.Finish();
}

bool ImportSource::IsUnchanged() const {
    struct stat now {};
    return fstat(file_.get(), &now) == 0 && now.st_size == status_.st_size &&
           KXP::Platform::ModifiedNs(now) == time();
}

}  // namespace importing
