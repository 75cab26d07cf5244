#include "gallery-host/verbs/ImportFollow.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include <sys/stat.h>

#include "base/FileCalls.h"
#include "base/FileDescriptor.h"
#include "base/Path.h"
#include "common/threads/Mutex.h"
#include "gallery-host/base/Failure.h"
#include "gallery-host/base/Printable.h"
#include "gallery-host/base/WakeUp.h"
#include "gallery-host/verbs/FollowQueue.h"
#include "gallery-host/verbs/ImportFiles.h"
#include "importing/CapturePlace.h"
#include "plugin-modules/Gallery/src/watcher/FileWatcher.h"

namespace host {
namespace {

// Recorders write the tables of a file at its end, which takes moments; a renaming comes at once.
constexpr std::chrono::milliseconds kQuiet{3000};

// Paths on their way from the watcher's thread to this one.
class Arrivals {
  public:
    // Readable while there are paths to take.
    int fd() const { return wakeUp_.fd(); }

    void Add(std::string path) EXCLUDES(mutex_) {
        const KXP::MutexLock lock(mutex_);
        paths_.push_back(std::move(path));
        wakeUp_.Signal();
    }

    std::vector<std::string> Take() EXCLUDES(mutex_) {
        const KXP::MutexLock lock(mutex_);
        wakeUp_.Clear();
        return std::exchange(paths_, {});
    }

  private:
    const WakeUp wakeUp_;
    KXP::Mutex mutex_;
    std::vector<std::string> paths_ GUARDED_BY(mutex_);
};

class Callback final : public IFileWatcherCallback {
  public:
    Callback(Arrivals& arrivals, std::string gallery) : arrivals_(arrivals), gallery_(std::move(gallery)) {}

    void Track(std::string path, bool isFolder) override {
        if (!isFolder && importing::HasMediaEnding(path) && KXP::NameOf(path)[0] != '.' &&
            !IsInside(path, gallery_))
            arrivals_.Add(std::move(path));
    }
    void Untrack(std::string) override {}
    void Disturbed(std::string) override {}

  private:
    Arrivals& arrivals_;
    const std::string gallery_;
};

std::optional<FileState> LookAt(const std::string& path) {
    struct stat status {};
    const KXP::FileDescriptor file = KXP::OpenForRead(path, status, KXP::Links::Refuse);
    if (!file.IsOpen()) return {};
    return FileState{static_cast<uint64_t>(status.st_size), KXP::Platform::ModifiedNs(status),
                     KXP::Platform::IsOpenForWriting(file.get())};
}

}  // namespace

void FollowFolder(Session& session, ImportRun& run, const std::string& folder, const std::string& gallery) {
    Arrivals arrivals;
    const auto watcher = CreateFileWatcher(folder, std::make_unique<Callback>(arrivals, gallery));
    if (!watcher) throw Failure(kExitFailed, Printable(folder) + ": cannot be watched");
    FollowQueue queue(kQuiet, LookAt);
    ImportFiles present(gallery);
    present.Add(folder);
    for (const ImportFiles::Found& file : present.files())
        queue.Note(file.path, std::chrono::steady_clock::now());
    Say("following " + Printable(folder) + "; Ctrl-C ends");
    try {
        for (;;) {
            session.Pump(queue.due(), arrivals.fd());
            const Deadline now = std::chrono::steady_clock::now();
            for (const std::string& path : arrivals.Take())
                queue.Note(path, now);
            for (const std::string& path : queue.TakeFinished(now))
                run.Import(path);
            run.Commit();
        }
    } catch (const Failure& failure) {
        run.Commit();
        if (failure.status() != kExitInterrupted) throw;
    }
}

}  // namespace host
