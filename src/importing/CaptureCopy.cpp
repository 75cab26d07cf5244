#include "importing/CaptureCopy.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <thread>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include "base/FileCalls.h"
#include "base/ReadWrite.h"
#include "plugin-modules/Gallery/src/engraving/EngravingFile.h"

namespace importing {
namespace {

// Parts that lie differently against it are not faster within the kernel.
constexpr size_t kPage = 4096;
// Enough at once for any disk.
constexpr uint64_t kWritten = uint64_t{64} << 20;

[[noreturn]] void FailToWrite() {
    throw ImportError(std::string("cannot be written: ") + std::strerror(errno));
}

class Copier {
  public:
    Copier(const ImportSource& source, DigestThread& digests, const KXP::FileDescriptor& out,
           const ReadListener& onRead)
        : source_(source), digests_(digests), digest_(digests), out_(out), onRead_(onRead) {}

    void Copy(const Splice& splice) {
        for (const Piece& piece : splice.pieces()) {
            Write(piece.bytes);
            const std::string_view held = source_.Held(piece.from, piece.size);
            if (piece.isPicture && !held.empty()) digest_.Add(held);
            for (uint64_t done = 0; done < piece.size;) {
                // All but the first begin with a page.
                const uint64_t most = DigestThread::kBlock - (piece.from + done) % kPage;
                const auto size = static_cast<size_t>(std::min(piece.size - done, most));
                CopyBlock(piece.from + done, size, piece.isPicture);
                if (onRead_) onRead_(size);
                done += size;
            }
        }
    }

    // The same of a file that is copied as it is: what comes before a place.
    void CopyUpTo(uint64_t end) {
        while (at_ < end) {
            const auto size = static_cast<size_t>(std::min<uint64_t>(end - at_, DigestThread::kBlock));
            CopyBlock(at_, size, false);
            if (onRead_) onRead_(size);
        }
    }

    std::string Digest() { return digest_.Finish(); }

  private:
    void Write(std::string_view bytes) {
        if (!KXP::WriteFullyAt(out_, bytes.data(), bytes.size(), at_)) FailToWrite();
        at_ += bytes.size();
    }

    void CopyBlock(uint64_t from, size_t size, bool isPicture) {
        const bool isShared = from % kPage == at_ % kPage && Share(from, size);
        const std::string_view held = source_.Held(from, size);
        if (isShared && (!held.empty() || !isPicture)) return;
        if (!held.empty()) return Write(held);
        if (!block_) block_ = digests_.Take();
        if (KXP::ReadAt(source_.file(), from, block_.get(), size) < size)
            throw ImportError(source_.IsUnchanged() ? "cannot be read" : "changes while it is read");
        if (!isShared) Write({block_.get(), size});
        if (isPicture) digest_.Add(std::move(block_), size);
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
    DigestThread& digests_;
    BackgroundDigest digest_;
    DigestThread::Block block_;
    const KXP::FileDescriptor& out_;
    const ReadListener& onRead_;
    uint64_t at_ = 0;  // in the copy
    bool canShare_ = true;
};

// Has the disk write what is new in a file. The call that starts it waits while the disk has enough to do, so
// it is a thread's.
class Writeback {
  public:
    explicit Writeback(const KXP::FileDescriptor& file) : file_(file) {}
    ~Writeback() { Wait(); }
    Writeback(const Writeback&) = delete;
    Writeback& operator=(const Writeback&) = delete;

    void Start() {
        Wait();
        try {
            thread_ = std::thread(KXP::Platform::StartWriteback, file_.get());
        } catch (const std::system_error&) {
            KXP::Platform::StartWriteback(file_.get());
        }
    }

  private:
    void Wait() {
        if (thread_.joinable()) thread_.join();
    }

    const KXP::FileDescriptor& file_;
    std::thread thread_;
};

// The library reads packets as they lie in the file, so that the disk has it read once: each part is copied
// while it is in the system's memory.
std::string CopyVideo(const ImportSource& source, VideoLibrary& videos, Copier& copier) {
    uint64_t read = 0;
    std::string digest = videos.DigestOf(source.file(), [&](uint64_t bytes) {
        read += bytes;
        copier.CopyUpTo(std::min(read, source.size()) / kPage * kPage);
    });
    copier.CopyUpTo(source.size());
    return digest;
}

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
                         DigestThread& digests, const KXP::FileDescriptor& out, const ReadListener& onRead,
                         const std::function<void()>& whileDigesting) {
    // The disk is not to be idle until all is to be durable.
    Writeback writeback(out);
    uint64_t unwritten = 0;
    const ReadListener onPart = [&](uint64_t bytes) {
        unwritten += bytes;
        if (unwritten >= kWritten) writeback.Start();
        unwritten %= kWritten;
        if (onRead) onRead(bytes);
    };
    std::string digest;
    if (source.NeedsConversion()) {
        digest = videos.Convert(source.file(), out, onPart);
    } else {
        Copier copier(source, digests, out, onPart);
        if (source.IsVideo())
            digest = CopyVideo(source, videos, copier);
        else
            copier.Copy(source.Plan(marks));
        // This thread is then not idle until the digest is made.
        writeback.Start();
        if (!source.IsVideo()) {
            whileDigesting();
            digest = copier.Digest();
        }
    }
    if (source.IsVideo()) Engrave(out, marks);
    if (source.IsVideo()) writeback.Start();
    if (!source.IsUnchanged()) throw ImportError("changes while it is read");
    return digest;
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
