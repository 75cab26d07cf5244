#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <iterator>
#include <system_error>
#include <thread>
#include <utility>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "CobalixUtil.h"
#include "base/FileDescriptor.h"
#include "base/ReadWrite.h"
#include "common/threads/Mutex.h"
#include "plugin-modules/Gallery/src/watcher/EventWindow.h"
#include "plugin-modules/Gallery/src/watcher/FileWatcher.h"
#include "plugin-modules/Gallery/src/watcher/linux/Dispatcher.h"
#include "plugin-modules/Gallery/src/watcher/linux/TreeFollower.h"
#include "plugin-modules/Gallery/src/watcher/linux/UnreportedQuery.h"

namespace watcher {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using std::chrono::steady_clock;

constexpr milliseconds kLongestWait{60000};
// The longest wait when there was no descriptor left for waking the thread.
constexpr milliseconds kWithoutWake{20};
// How long Unreported waits when the thread is busy with a slow disk.
constexpr milliseconds kAnswerLimit{200};

// The kernel may end a wait late by a thousandth of it, which a user would notice at the end of a window. So
// the last part of a longer one is waited for by itself.
constexpr milliseconds kOnTime{50};

template <size_t N>
int PollFor(pollfd (&sources)[N], nanoseconds time) {
    time = std::max(time, nanoseconds(0));
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    const timespec limit{seconds.count(), (time - seconds).count()};
    return ppoll(sources, N, &limit, nullptr);
}

class FileWatcher : public IFileWatcher {
  public:
    FileWatcher(const std::string& path, const WatcherOptions& options,
                std::unique_ptr<IFileWatcherCallback>&& callback, const GalleryWalk& walk);
    ~FileWatcher() override;

    std::optional<UnreportedPaths> Unreported(size_t most) override;

  private:
    bool Start();
    void Run();
    void RunOnce();
    void Wait(milliseconds time);
    milliseconds TimeToWait() const;
    void ReportReady() EXCLUDES(mutex_);
    void Wake();
    bool Answer(const UnreportedQuery::Question& asked);

    const std::unique_ptr<IFileWatcherCallback> callback_;
    const milliseconds recoverAfter_;
    const TimePoint startLimit_;
    const KXP::FileDescriptor wake_;
    std::atomic<bool> stop_{false};

    KXP::Mutex mutex_;
    KXP::CondVar readyChanged_;
    bool ready_ GUARDED_BY(mutex_) = false;
    UnreportedQuery query_;

    // Used by the thread alone, once it runs.
    EventWindow window_;
    TreeFollower follower_;
    Dispatcher dispatcher_;
    bool started_ = false;
    bool learning_ = true;
    uint64_t polledFor_ = 0;  // the number of a question

    std::thread thread_;  // last: it uses all of the above
};

FileWatcher::FileWatcher(const std::string& path, const WatcherOptions& options,
                         std::unique_ptr<IFileWatcherCallback>&& callback, const GalleryWalk& walk)
    : callback_(std::move(callback)),
      recoverAfter_(options.pollInterval),
      startLimit_(steady_clock::now() + options.startLimit),
      wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      window_(options.window),
      follower_(path, options, FileClockNs() + std::chrono::nanoseconds(options.startLimit).count(), window_,
                stop_),
      dispatcher_(*callback_, follower_) {
    if (walk && Start()) follower_.Learn(walk);
    // On a busy machine the thread may not run for milliseconds: a start waits only if it has work left.
    if (started_ && follower_.HasCaughtUp()) ReportReady();
    thread_ = std::thread([this] { Run(); });
    KXP::MutexLock lock(mutex_);
    while (!ready_ && steady_clock::now() < startLimit_)
        readyChanged_.WaitUntil(mutex_, startLimit_);
}

FileWatcher::~FileWatcher() {
    stop_ = true;
    Wake();
    thread_.join();
}

void FileWatcher::Wake() {
    const uint64_t one = 1;
    if (wake_.IsOpen() && write(wake_.get(), &one, sizeof one) < 0)
        KXP_LOG(KXP::LogDetail, "File watcher was woken already");
}

std::optional<UnreportedPaths> FileWatcher::Unreported(size_t most) {
    const TimePoint limit = steady_clock::now() + kAnswerLimit;
    const uint64_t asked = query_.Ask(most);
    Wake();
    return query_.Await(asked, limit);
}

// Answers the calls that were made before the events of this pass were read. Returns false when it is too
// early.
bool FileWatcher::Answer(const UnreportedQuery::Question& asked) {
    if (!follower_.HasCaughtUp()) return false;
    UnreportedPaths paths;
    follower_.AddUnreported(paths);
    for (const auto* events : {&dispatcher_.events(), &window_.events()}) {
        for (const WatchEvent& event : *events)
            (MayHaveAction(event.flags) ? paths.changed : paths.disturbed).push_back(event.path);
    }
    const size_t longest = std::max({paths.changed.size(), paths.incomplete.size(), paths.disturbed.size()});
    query_.Answer(asked.number, longest <= asked.most ? std::optional(std::move(paths)) : std::nullopt);
    return true;
}

// Without the thread. Returns false, and the thread tries again, when something fails.
bool FileWatcher::Start() {
    started_ = true;
    try {
        follower_.Start();
        return true;
    } catch (const std::exception& error) {
        KXP_LOG(KXP::LogFailure, "File watcher failed: %s", error.what());
        follower_.DistrustEvents();
        return false;
    }
}

void FileWatcher::Run() {
    KXP::LogNameThread("Gallery", "FILE");
    while (!stop_) {
        try {
            if (!std::exchange(started_, true)) follower_.Start();
            RunOnce();
        } catch (const std::exception& error) {
            KXP_LOG(KXP::LogFailure, "File watcher failed: %s", error.what());
            follower_.DistrustEvents();
            ReportReady();
            Wait(recoverAfter_);
        }
    }
    ReportReady();
}

// Reads the kernel's queue in every pass, also while a window is open or being reported, because the queue is
// bounded.
void FileWatcher::RunOnce() {
    const std::optional<UnreportedQuery::Question> asked = query_.Pending();
    if (asked && std::exchange(polledFor_, asked->number) != asked->number) follower_.PollNow();
    follower_.ReadEvents();
    follower_.DoDueWork();
    if (learning_ && (follower_.HasLearntGallery() || steady_clock::now() >= startLimit_)) ReportReady();
    if (dispatcher_.IsIdle() && window_.IsDue(steady_clock::now())) dispatcher_.Begin(window_.Take());
    dispatcher_.ReportSome(stop_);
    const bool isTooEarly = asked && !Answer(*asked);
    Wait(isTooEarly ? milliseconds(0) : TimeToWait());
}

void FileWatcher::ReportReady() {
    learning_ = false;
    KXP::MutexLock lock(mutex_);
    ready_ = true;
    readyChanged_.NotifyAll();
}

milliseconds FileWatcher::TimeToWait() const {
    if (!dispatcher_.IsIdle()) return milliseconds(0);
    const TimePoint now = steady_clock::now();
    const TimePoint due = std::min(follower_.NextDue(), window_.Closes().value_or(TimePoint::max()));
    if (due <= now || window_.IsDue(now)) return milliseconds(0);
    return std::chrono::ceil<milliseconds>(std::min<steady_clock::duration>(due - now, kLongestWait));
}

// Ends early for events, for Unreported and for the destructor.
void FileWatcher::Wait(milliseconds time) {
    if (!wake_.IsOpen()) time = std::min(time, kWithoutWake);
    const TimePoint end = steady_clock::now() + time;
    pollfd sources[] = {{wake_.get(), POLLIN, 0}, {follower_.Descriptor(), POLLIN, 0}};
    if (time <= kOnTime || PollFor(sources, time - kOnTime) == 0) PollFor(sources, end - steady_clock::now());
    uint64_t wakes = 0;
    if ((sources[0].revents & POLLIN) != 0 && read(wake_.get(), &wakes, sizeof wakes) < 0)
        KXP_LOG(KXP::LogDetail, "File watcher was woken by nobody");
}

}  // namespace
}  // namespace watcher

std::unique_ptr<IFileWatcher> CreateFileWatcher(const std::string& path,
                                                std::unique_ptr<IFileWatcherCallback>&& callback,
                                                const WatcherOptions& options, const GalleryWalk& walk) {
    try {
        return std::make_unique<watcher::FileWatcher>(path, options, std::move(callback), walk);
    } catch (const std::system_error& error) {
        KXP_LOG(KXP::LogFailure, "No thread for the file watcher: %s", error.what());
        return nullptr;
    }
}

void StopAndJoinFileWatcher() {}
