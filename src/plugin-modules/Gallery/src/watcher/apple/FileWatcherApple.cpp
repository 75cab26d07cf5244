#include <cerrno>
#include <deque>
#include <new>
#include <system_error>
#include <thread>
#include <utility>

#include <sys/stat.h>

#include "CobalixUtil.h"
#include "base/Path.h"
#include "base/Text.h"
#include "common/threads/Mutex.h"
#include "plugin-modules/Gallery/src/watcher/FileWatcher.h"
#include "plugin-modules/Gallery/src/watcher/WatchDispatch.h"
#include "plugin-modules/Gallery/src/watcher/apple/FileEventStream.h"
#include "plugin-modules/Gallery/src/watcher/apple/WatchedPaths.h"

namespace watcher {
namespace {

constexpr uint32_t kEventsLost = MustScanSubDirs | UserDropped | KernelDropped;

ItemKind KindAt(const std::string& path, bool followLink) {
    struct stat status {};
    if ((followLink ? stat(path.c_str(), &status) : lstat(path.c_str(), &status)) != 0)
        return errno == ENOENT || errno == ENOTDIR ? ItemKind::None : ItemKind::Unknown;
    if (S_ISDIR(status.st_mode)) return ItemKind::Folder;
    return S_ISREG(status.st_mode) ? ItemKind::File : ItemKind::Other;
}

// The system unites the events of a path, also those of a file and of a folder that took its place.
uint32_t WithKind(uint32_t flags, ItemKind there) {
    if (there != ItemKind::File && there != ItemKind::Folder) return flags;
    return (flags & ~uint32_t{ItemIsFile | ItemIsDir | ItemIsSymlink}) |
           (there == ItemKind::File ? ItemIsFile : ItemIsDir);
}

// The stream's queue hands the events to the watcher's thread, which calls the callback.
class FileWatcher : public IFileWatcher {
  public:
    FileWatcher(const std::string& path, const WatcherOptions& options,
                std::unique_ptr<IFileWatcherCallback>&& callback);
    ~FileWatcher() override;

    std::optional<UnreportedPaths> Unreported(size_t most) override;

  private:
    struct Pending {
        int index = 0;
        uint64_t id = 0;
        WatchEvent event;
    };

    void Receive(int index, uint64_t id, const char* path, uint32_t flags) noexcept EXCLUDES(mutex_);
    void Add(int index, uint64_t id, const std::string& real, uint32_t flags) EXCLUDES(mutex_);
    void NoteLost(const char* where) EXCLUDES(mutex_);
    void NoteIllegible(const std::string& folder);
    void Run();
    const Pending* AwaitEvent() EXCLUDES(mutex_);
    void Report(const Pending& pending) noexcept EXCLUDES(mutex_);

    const std::unique_ptr<IFileWatcherCallback> callback_;
    const WatchedPaths paths_;

    KXP::Mutex mutex_;
    KXP::CondVar changed_;
    bool stop_ GUARDED_BY(mutex_) = false;
    // Whether there were changes without an event, as before the stream has begun.
    bool lost_ GUARDED_BY(mutex_) = true;
    std::deque<Pending> pending_ GUARDED_BY(mutex_);  // the first is being reported

    bool loggedIllegible_ = false;  // the stream's queue alone
    FileEventStream stream_;        // uses all of the above
    std::thread thread_;            // the same
};

FileWatcher::FileWatcher(const std::string& path, const WatcherOptions& options,
                         std::unique_ptr<IFileWatcherCallback>&& callback)
    : callback_(std::move(callback)),
      paths_(path, options.gallery),
      stream_(
          paths_.RealFolders(), options.window,
          [this](int index, uint64_t id, const char* at, uint32_t flags) { Receive(index, id, at, flags); }),
      thread_([this] { Run(); }) {
    {
        const KXP::MutexLock lock(mutex_);
        lost_ = false;
    }
    if (stream_.Start()) return;
    KXP_LOG(KXP::LogFailure, "No file events to be had");
    const KXP::MutexLock lock(mutex_);
    lost_ = true;
}

FileWatcher::~FileWatcher() {
    stream_.Stop();
    {
        const KXP::MutexLock lock(mutex_);
        stop_ = true;
    }
    changed_.NotifyAll();
    thread_.join();
}

// What happened without an event may be anywhere in the gallery, which then never counts as known.
std::optional<UnreportedPaths> FileWatcher::Unreported(size_t most) {
    stream_.Flush();
    UnreportedPaths paths;
    const KXP::MutexLock lock(mutex_);
    if (pending_.size() > most) return std::nullopt;
    for (const Pending& pending : pending_)
        (MayHaveAction(pending.event.flags) ? paths.changed : paths.disturbed).push_back(pending.event.path);
    if (lost_) paths.incomplete.push_back(paths_.gallery());
    return paths;
}

void FileWatcher::Receive(int index, uint64_t id, const char* path, uint32_t flags) noexcept {
    try {
        Add(index, id, KXP::WithoutSlash(path), flags);
    } catch (const std::bad_alloc&) {
        NoteLost(path);
    }
}

void FileWatcher::Add(int index, uint64_t id, const std::string& real, uint32_t flags) {
    if ((flags & kEventsLost) != 0 && paths_.CoversGallery(real)) NoteLost(real.c_str());
    std::optional<std::string> path = paths_.Spelled(real);
    while (path && !KXP::IsValidUtf8(*path)) {
        path = KXP::ParentOf(*path);
        flags = ItemIsDir | ItemInodeMetaMod;
        NoteIllegible(*path);
    }
    if (!path) return;
    {
        const KXP::MutexLock lock(mutex_);
        pending_.push_back({index, id, {std::move(*path), flags}});
    }
    changed_.NotifyAll();
}

void FileWatcher::NoteLost(const char* where) {
    KXP_LOG(KXP::LogFailure, "File events were lost in %s", where);
    const KXP::MutexLock lock(mutex_);
    lost_ = true;
}

void FileWatcher::NoteIllegible(const std::string& folder) {
    if (std::exchange(loggedIllegible_, true)) return;
    KXP_LOG(KXP::LogFailure, "Passed over names in %s that are not UTF-8", KXP::ToValidUtf8(folder).c_str());
}

void FileWatcher::Run() {
    KXP::LogNameThread("Gallery", "FILE");
    while (const Pending* next = AwaitEvent()) {
        Report(*next);
        const KXP::MutexLock lock(mutex_);
        pending_.pop_front();
    }
}

// Returns the first event, which counts as unreported and stays where it is while it is reported. Null at the
// end.
const FileWatcher::Pending* FileWatcher::AwaitEvent() {
    const KXP::MutexLock lock(mutex_);
    while (!stop_ && pending_.empty())
        changed_.Wait(mutex_);
    return stop_ ? nullptr : &pending_.front();
}

void FileWatcher::Report(const Pending& pending) noexcept {
    const std::string& path = pending.event.path;
    try {
        const ItemKind there = KindAt(path, paths_.IsNamed(path));
        const WatchEvent event{path, WithKind(pending.event.flags, there)};
        DispatchWatchEvent(pending.index, pending.id, event, there, *callback_);
    } catch (const std::bad_alloc&) {
        NoteLost(path.c_str());
    }
}

}  // namespace
}  // namespace watcher

std::unique_ptr<IFileWatcher> CreateFileWatcher(const std::string& path,
                                                std::unique_ptr<IFileWatcherCallback>&& callback,
                                                const WatcherOptions& options, const GalleryWalk&) {
    try {
        return std::make_unique<watcher::FileWatcher>(path, options, std::move(callback));
    } catch (const std::system_error& error) {
        KXP_LOG(KXP::LogFailure, "No thread for the file watcher: %s", error.what());
        return nullptr;
    }
}

void StopAndJoinFileWatcher() {}
