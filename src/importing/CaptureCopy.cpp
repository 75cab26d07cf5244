#include "importing/CaptureCopy.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include "base/FileCalls.h"
#include "base/ReadWrite.h"
#include "importing/BackgroundDigest.h"
#include "plugin-modules/Gallery/src/engraving/EngravingFile.h"

namespace importing {
namespace {

constexpr size_t kBlock = size_t{1} << 20;
// Parts that lie differently against it are not faster within the kernel.
constexpr size_t kPage = 4096;

[[noreturn]] void FailToWrite() {
    throw ImportError(std::string("cannot be written: ") + std::strerror(errno));
}

class Copier {
  public:
    Copier(const ImportSource& source, const KXP::FileDescriptor& out, const ReadListener& onRead)
        : source_(source), out_(out), onRead_(onRead), block_(kBlock) {}

    std::string Copy(const Splice& splice) {
        for (const Piece& piece : splice.pieces()) {
            Write(piece.bytes);
            for (uint64_t done = 0; done < piece.size;) {
                // All but the first begin with a page.
                const uint64_t most = kBlock - (piece.from + done) % kPage;
                const auto size = static_cast<size_t>(std::min(piece.size - done, most));
                CopyBlock(piece.from + done, size, piece.isPicture);
                if (onRead_) onRead_(size);
                done += size;
            }
        }
        return digest_.Finish();
    }

  private:
    void Write(std::string_view bytes) {
        if (!KXP::WriteFullyAt(out_, bytes.data(), bytes.size(), at_)) FailToWrite();
        at_ += bytes.size();
    }

    void CopyBlock(uint64_t from, size_t size, bool isPicture) {
        const bool isShared = from % kPage == at_ % kPage && Share(from, size);
        if (isShared && !isPicture) return;
        if (KXP::ReadAt(source_.file(), from, block_.data(), size) < size)
            throw ImportError(source_.IsUnchanged() ? "cannot be read" : "changes while it is read");
        if (isPicture) digest_.Add(block_.data(), size);
        if (!isShared) Write({block_.data(), size});
    }

    // Without the bytes passing through here, and on volumes that can without a second copy on disk.
    bool Share(uint64_t from, size_t size) {
        size_t done = 0;
        while (canShare_ && done < size) {
            const int64_t copied = KXP::Platform::CopyFileRange(source_.file().get(), from + done, out_.get(),
                                                                at_ + done, size - done);
            canShare_ = copied > 0;
            if (canShare_) done += static_cast<size_t>(copied);
        }
        if (done < size) return false;
        at_ += size;
        return true;
    }

    const ImportSource& source_;
    const KXP::FileDescriptor& out_;
    const ReadListener& onRead_;
    std::vector<char> block_;
    BackgroundDigest digest_;
    uint64_t at_ = 0;  // in the copy
    bool canShare_ = true;
};

void Engrave(const KXP::FileDescriptor& file, const CaptureMarks& marks) {
    try {
        engraving::EngravingFile capture{KXP::FileDescriptor(dup(file.get()))};
        const engraving::Mp4Layout layout = engraving::ReadLayout(capture.source(), capture.size());
        capture.CarryOut(engraving::PlanEngraving(capture.source(), layout, BlockOf(marks)),
                         KXP::Durability::None);
    } catch (const engraving::EngravingError& error) {
        throw ImportError(error.what());
    }
}

}  // namespace

std::string WriteCapture(const ImportSource& source, const CaptureMarks& marks, VideoLibrary& videos,
                         const KXP::FileDescriptor& out, const ReadListener& onRead) {
    std::string picture;
    if (source.NeedsConversion()) {
        picture = videos.Convert(source.file(), out, onRead);
    } else {
        picture = Copier(source, out, onRead).Copy(source.Plan(marks));
        if (source.IsVideo()) picture = DigestOf(source, videos);
    }
    if (source.IsVideo()) Engrave(out, marks);
    // So that the disk is not idle until all is to be durable.
    KXP::Platform::StartWriteback(out.get());
    if (!source.IsUnchanged()) throw ImportError("changes while it is read");
    return picture;
}

std::string DigestOf(const ImportSource& source, VideoLibrary& videos) {
    return source.IsVideo() ? videos.DigestOf(source.file(), {}) : source.DigestOfPicture();
}

void SetFileTime(const KXP::FileDescriptor& file, int64_t time) {
    constexpr int64_t kSecond = 1000000000;
    // Before 1970 the rest is negative, which no system takes.
    const int64_t rest = (time % kSecond + kSecond) % kSecond;
    const timespec changed{static_cast<time_t>((time - rest) / kSecond), static_cast<long>(rest)};
    const timespec times[2] = {changed, changed};
    if (futimens(file.get(), times) != 0) FailToWrite();
}

}  // namespace importing
