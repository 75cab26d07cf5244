#include "plugin-modules/Gallery/src/tracker/kept/KeptFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "CobalixUtil.h"
#include "base/FileCalls.h"
#include "base/FileLock.h"
#include "base/NewFile.h"
#include "base/ReadWrite.h"
#include "base/SlabMemory.h"
#include "common/json/JsonParse.h"
#include "plugin-modules/Gallery/src/tracker/kept/KeptLine.h"

namespace {

using KXP::FileDescriptor;
using KXP::NewFile;
using KXP::RetVal;

// For a process that holds the lock and does not go on.
constexpr std::chrono::milliseconds kLongestWait{1000};

RetVal Failure(int error) {
    return {KXP::Code::kFailure, std::generic_category().message(error), error};
}

bool Lock(const FileDescriptor& file, int kind) {
    if (KXP::LockWithin(file, kind, kLongestWait)) return true;
    // Not every network volume has locks; there a second process is at its own risk.
    return errno == ENOLCK || errno == ENOSYS || errno == EOPNOTSUPP;
}

FileDescriptor OpenOrMake(const std::string& path) {
    FileDescriptor file = KXP::OpenForUpdate(path);
    if (file.IsOpen() || errno != ENOENT) return file;
    NewFile made(path);
    if (!made.IsOpen() || (!made.PutNew(KXP::Durability::ContentAndName) && errno != EEXIST)) return {};
    return KXP::OpenForUpdate(path);
}

// The file that has the name while it is locked: the one that was opened may have been replaced while this
// process waited. The lock ends when the descriptor is closed. Closed, with errno set, on failure.
FileDescriptor OpenLocked(const std::string& path, bool write) {
    for (;;) {
        FileDescriptor file = write ? OpenOrMake(path) : KXP::OpenForRead(path);
        if (!file.IsOpen() || !Lock(file, write ? LOCK_EX : LOCK_SH)) return {};
        struct stat opened {};
        struct stat named {};
        if (fstat(file.get(), &opened) != 0) return {};
        if (stat(path.c_str(), &named) == 0) {
            if (opened.st_dev == named.st_dev && opened.st_ino == named.st_ino) return file;
        } else if (errno != ENOENT || !write) {
            return {};
        }
    }
}

// Cuts what is read into lines and the lines into entries.
class LineReader {
  public:
    explicit LineReader(KeptFile::Lines& lines) : lines_(lines) {}

    // Where the next bytes are to be put, and how many at most.
    char* room() { return &buffer_[held_]; }
    size_t roomSize() const { return kMaxKeptLine - held_; }

    void Take(size_t size) {
        held_ += size;
        size_t start = 0;
        while (char* end = LineEnd(start)) {
            const auto length = static_cast<size_t>(end - &buffer_[start]);
            TakeLine(start, length);
            start += length + 1;
        }
        if (start == 0 && held_ == kMaxKeptLine) {
            tooLong_ = true;
            start = held_;
        }
        held_ -= start;
        std::memmove(&buffer_[0], &buffer_[start], held_);
    }

    // What is left is a line whose end was not written. Returns the number of damaged lines.
    size_t Finish() {
        TakeLine(0, held_);
        return damaged_;
    }

  private:
    char* LineEnd(size_t start) {
        return static_cast<char*>(std::memchr(&buffer_[start], '\n', held_ - start));
    }

    void TakeLine(size_t start, size_t length) {
        const bool rest = std::exchange(tooLong_, false);
        if (length == 0 && !rest) return;
        buffer_[start + length] = '\0';
        const auto capture = std::make_shared<KeptCapture>();
        if (!rest && ReadKeptLine(&buffer_[start], length, *capture)) {
            lines_.push_back({capture, length + 1});
        } else {
            ++damaged_;
        }
    }

    KeptFile::Lines& lines_;
    const std::unique_ptr<char[], KXP::SlabDeleter> buffer_{
        static_cast<char*>(KXP::AllocateInSlab(kMaxKeptLine + KXP::kJsonTextSlack))};
    size_t held_ = 0;  // of the line that is not complete yet
    bool tooLong_ = false;
    size_t damaged_ = 0;
};

}  // namespace

bool KeptFile::IsFollowed(const struct stat& status) const {
    return followed_.IsOpen() && status.st_dev == device_ && status.st_ino == inode_ &&
           static_cast<uint64_t>(status.st_size) >= read_;
}

void KeptFile::Follow(FileDescriptor file, uint64_t read) {
    struct stat status {};
    if (file.IsOpen() && fstat(file.get(), &status) != 0) file.Close();
    followed_ = std::move(file);
    device_ = status.st_dev;
    inode_ = status.st_ino;
    read_ = read;
    endsInsideLine_ = false;
}

// The caller has locked the file that has the name now. False with errno set.
bool KeptFile::CatchUp(Lines& others) {
    struct stat named {};
    if (stat(path_.c_str(), &named) != 0) return false;
    if (!IsFollowed(named)) {
        // The other process may have appended and then replaced the file.
        if (followed_.IsOpen() && !ReadRest(others)) return false;
        Follow(KXP::OpenForRead(path_), 0);
        if (!followed_.IsOpen()) return false;
    }
    return ReadRest(others);
}

bool KeptFile::ReadRest(Lines& others) {
    LineReader reader(others);
    uint64_t position = read_;
    for (;;) {
        char* const room = reader.room();
        const size_t size = reader.roomSize();
        const size_t got = KXP::ReadAt(followed_, position, room, size);
        if (got < size && errno != 0) return false;
        if (got > 0) endsInsideLine_ = room[got - 1] != '\n';
        position += got;
        reader.Take(got);
        if (got < size) break;
    }
    read_ = position;
    if (const size_t damaged = reader.Finish())
        KXP_LOG(KXP::LogFailure, "%s: passed over %zu damaged lines", path_.c_str(), damaged);
    return true;
}

RetVal KeptFile::ReadNew(Lines& others) {
    struct stat named {};
    if (stat(path_.c_str(), &named) != 0) return errno == ENOENT ? RetVal{} : Failure(errno);
    if (IsFollowed(named) && static_cast<uint64_t>(named.st_size) == read_) return {};
    const FileDescriptor locked = OpenLocked(path_, false);
    if (!locked.IsOpen() || !CatchUp(others)) return errno == ENOENT ? RetVal{} : Failure(errno);
    return {};
}

RetVal KeptFile::Append(std::string_view lines, Lines& others) {
    const FileDescriptor file = OpenLocked(path_, true);
    if (!file.IsOpen() || !CatchUp(others)) return Failure(errno);
    std::string bytes;
    if (endsInsideLine_) bytes = '\n';
    bytes += lines;
    if (!KXP::WriteFullyAt(file, bytes.data(), bytes.size(), read_) ||
        !KXP::Platform::MakeDurable(file.get())) {
        KXP::TakeBack(file, read_);
        return Failure(errno);
    }
    read_ += bytes.size();
    endsInsideLine_ = false;
    return {};
}

RetVal KeptFile::Replace(const std::function<std::optional<std::string>(const Lines&)>& content) {
    const FileDescriptor replaced = OpenLocked(path_, true);
    Lines others;
    if (!replaced.IsOpen() || !CatchUp(others)) return Failure(errno);
    const std::optional<std::string> text = content(others);
    if (!text) return {};
    NewFile made(path_);
    if (!made.IsOpen() || !KXP::WriteFully(made.descriptor(), *text)) return Failure(errno);
    FileDescriptor next(fcntl(made.descriptor().get(), F_DUPFD_CLOEXEC, 0));
    if (!next.IsOpen() || !made.PutOver(KXP::Durability::ContentAndName)) return Failure(errno);
    Follow(std::move(next), text->size());
    return {};
}
