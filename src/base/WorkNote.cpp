#include "base/WorkNote.h"

#include <cerrno>
#include <ctime>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/FileCalls.h"
#include "base/FolderReader.h"
#include "base/RandomName.h"
#include "base/ReadWrite.h"

namespace KXP {
namespace {

constexpr mode_t kPrivate = 0600;
constexpr int kAttempts = 10;
constexpr size_t kLargestNote = size_t{1} << 20;
constexpr time_t kKept = time_t{90} * 24 * 60 * 60;

enum class Lock { Taken, Busy, Unknown };

Lock TryLock(const FileDescriptor& file) {
    if (flock(file.get(), LOCK_EX | LOCK_NB) == 0) return Lock::Taken;
    return errno == EWOULDBLOCK ? Lock::Busy : Lock::Unknown;
}

bool IsLinked(const FileDescriptor& file) {
    struct stat status {};
    return fstat(file.get(), &status) == 0 && status.st_nlink > 0;
}

std::vector<std::string> NotesIn(const std::string& folder, const std::string& kind) {
    std::vector<std::string> paths;
    const std::string start = folder + "/";
    FolderReader reader(folder);
    while (reader.Next()) {
        const std::string name = reader.Name();
        if (name.compare(0, kind.size(), kind) == 0) paths.push_back(start + name);
    }
    return paths;
}

bool IsTooOld(const FileDescriptor& file) {
    struct stat status {};
    return fstat(file.get(), &status) == 0 && std::time(nullptr) - status.st_mtime > kKept;
}

void SettleNote(const std::string& path, const std::function<bool(const std::string& text)>& settle) {
    // For writing as well, without which some network volumes do not lock.
    const FileDescriptor note = OpenForUpdate(path);
    FileBytes text;
    // Also passes over one whose process has removed it since, and one that nothing is known of.
    if (!note.IsOpen() || TryLock(note) != Lock::Taken || !IsLinked(note) ||
        !ReadWhole(note, kLargestNote, text))
        return;
    if (settle(std::string(text.view())) || IsTooOld(note)) (void)unlink(path.c_str());
}

}  // namespace

WorkNote::WorkNote(const std::string& folder, const std::string& kind) {
    const std::string start = folder + "/" + kind;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        path_ = start + RandomName();
        file_ = FileDescriptor(
            open(path_.c_str(), O_RDWR | O_APPEND | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kPrivate));
        if (!file_.IsOpen()) return;
        // Another process's start may have taken the new file for one whose process has ended. Where the
        // volume cannot lock, no start settles anything.
        const Lock lock = TryLock(file_);
        if (lock == Lock::Unknown || (lock == Lock::Taken && IsLinked(file_))) return;
        file_.Close();
    }
    errno = EAGAIN;
}

WorkNote::~WorkNote() {
    if (file_.IsOpen()) (void)unlink(path_.c_str());
}

bool WorkNote::Add(std::string_view text) {
    return WriteFully(file_, text);
}

bool WorkNote::AddDurably(std::string_view text) {
    return Add(text) && Platform::MakeDurable(file_.get());
}

void SettleWorkNotes(const std::string& folder, const std::string& kind,
                     const std::function<bool(const std::string& text)>& settle) {
    for (const std::string& path : NotesIn(folder, kind))
        SettleNote(path, settle);
}

}  // namespace KXP
