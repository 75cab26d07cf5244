#include <algorithm>
#include <atomic>
#include <chrono>
#include <deque>
#include <exception>
#include <iterator>
#include <set>
#include <system_error>
#include <thread>
#include <utility>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "CobalixUtil.h"
#include "common/FileDescriptor.h"
#include "common/Mutex.h"
#include "plugin-modules/Gallery/src/watcher/EventWindow.h"
#include "plugin-modules/Gallery/src/watcher/FileWatcher.h"
#include "plugin-modules/Gallery/src/watcher/WatchDispatch.h"
#include "plugin-modules/Gallery/src/watcher/linux/TreeFollower.h"

namespace watcher {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// Events reported between two reads of the kernel's queue.
constexpr size_t kEventsPerPass = 256;
constexpr milliseconds kLongestWait{60000};
// The longest wait when there was no descriptor left for waking the thread.
constexpr milliseconds kWithoutWake{20};
// How long Unreported waits when the thread is busy with a slow disk.
constexpr milliseconds kAnswerLimit{100};
// Unreported returns no more paths than this from the window, and from the follower.
constexpr size_t kMostUnreported = 256;

// Reports the events of a closed window in their order, some at a time.
class Dispatcher {
  public:
    Dispatcher(IFileWatcherCallback& callback, TreeFollower& follower)
        : callback_(callback), follower_(follower) {}

    bool IsIdle() const { return events_.empty(); }
    void Begin(std::deque<WatchEvent> events) { events_ = std::move(events); }
    void ReportSome(const std::atomic<bool>& stop);

  private:
    bool WentWithItsFolder(const WatchEvent& event, ItemKind there) const;
    void End();

    IFileWatcherCallback& callback_;
    TreeFollower& follower_;
    std::deque<WatchEvent> events_;
    std::set<std::string> goneFolders_;  // untracked in this window
    int index_ = 0;
    uint64_t id_ = 0;
};

void Dispatcher::ReportSome(const std::atomic<bool>& stop) {
    for (size_t left = kEventsPerPass; left > 0 && !events_.empty() && !stop; --left) {
        const WatchEvent event = std::move(events_.front());
        events_.pop_front();
        const Item item = LookAt(event.path, follower_.IsNamed(event.path));
        if (WentWithItsFolder(event, item.kind)) continue;
        const WatchAction action = DispatchWatchEvent(index_++, ++id_, event, item.kind, callback_);
        follower_.NoteReported(event, action, item);
        if (action == WatchAction::Untrack && (event.flags & ItemIsDir) != 0) goneFolders_.insert(event.path);
    }
    if (events_.empty()) End();
}

void Dispatcher::End() {
    goneFolders_.clear();
    index_ = 0;
}

// Untracking a folder includes its files, so their own events are not reported.
bool Dispatcher::WentWithItsFolder(const WatchEvent& event, ItemKind there) const {
    if (goneFolders_.empty() || WatchedItemExists(event, there)) return false;
    for (size_t slash = event.path.rfind('/'); slash != std::string::npos && slash > 0;
         slash = event.path.rfind('/', slash - 1)) {
        if (goneFolders_.count(event.path.substr(0, slash)) > 0) return true;
    }
    return false;
}

class FileWatcher : public IFileWatcher {
  public:
    FileWatcher(const std::string& path, const WatcherOptions& options,
                std::unique_ptr<IFileWatcherCallback>&& callback);
    ~FileWatcher() override;

    std::optional<std::vector<std::string>> Unreported() override EXCLUDES(mutex_);

  private:
    void Run();
    void RunOnce();
    void Wait(milliseconds time);
    milliseconds TimeToWait() const;
    void ReportReady() EXCLUDES(mutex_);
    void Wake();
    void Answer(uint64_t asked) EXCLUDES(mutex_);

    const std::unique_ptr<IFileWatcherCallback> callback_;
    const milliseconds recoverAfter_;
    const TimePoint startLimit_;
    const KXP::FileDescriptor wake_;
    std::atomic<bool> stop_{false};

    KXP::Mutex mutex_;
    KXP::CondVar readyChanged_;
    bool ready_ GUARDED_BY(mutex_) = false;
    // Calls of Unreported are numbered; the thread answers all up to the last one at once.
    KXP::CondVar answered_;
    uint64_t lastAsked_ GUARDED_BY(mutex_) = 0;
    uint64_t lastAnswered_ GUARDED_BY(mutex_) = 0;
    std::optional<std::vector<std::string>> unreported_ GUARDED_BY(mutex_);

    // Used by the thread alone.
    EventWindow window_;
    TreeFollower follower_;
    Dispatcher dispatcher_;
    bool learning_ = true;

    std::thread thread_;  // last: it uses all of the above
};

FileWatcher::FileWatcher(const std::string& path, const WatcherOptions& options,
                         std::unique_ptr<IFileWatcherCallback>&& callback)
    : callback_(std::move(callback)),
      recoverAfter_(options.pollInterval),
      startLimit_(steady_clock::now() + options.startLimit),
      wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      window_(options.window),
      follower_(path, options, FileClockNs() + std::chrono::nanoseconds(options.startLimit).count(), window_,
                stop_),
      dispatcher_(*callback_, follower_),
      thread_([this] { Run(); }) {
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

std::optional<std::vector<std::string>> FileWatcher::Unreported() {
    const TimePoint limit = steady_clock::now() + kAnswerLimit;
    uint64_t asked = 0;
    {
        KXP::MutexLock lock(mutex_);
        asked = ++lastAsked_;
    }
    Wake();
    KXP::MutexLock lock(mutex_);
    while (lastAnswered_ < asked && steady_clock::now() < limit)
        answered_.WaitUntil(mutex_, limit);
    if (lastAnswered_ < asked) return std::nullopt;
    return unreported_;
}

// Answers the calls that were made before the events of this pass were read.
void FileWatcher::Answer(uint64_t asked) {
    std::optional<std::vector<std::string>> unreported;
    if (dispatcher_.IsIdle() && window_.size() <= kMostUnreported)
        unreported = follower_.IncompleteFiles(kMostUnreported);
    if (unreported) {
        for (const WatchEvent& event : window_.events())
            unreported->push_back(event.path);
    }
    KXP::MutexLock lock(mutex_);
    unreported_ = std::move(unreported);
    lastAnswered_ = asked;
    answered_.NotifyAll();
}

void FileWatcher::Run() {
    KXP::LogNameThread("Gallery", "FILE");
    bool started = false;
    while (!stop_) {
        try {
            if (!std::exchange(started, true)) follower_.Start();
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
    uint64_t asked = 0;
    bool isAsked = false;
    {
        KXP::MutexLock lock(mutex_);
        asked = lastAsked_;
        isAsked = asked > lastAnswered_;
    }
    follower_.ReadEvents();
    follower_.DoDueWork();
    if (learning_ && (follower_.HasLearntGallery() || steady_clock::now() >= startLimit_)) ReportReady();
    if (dispatcher_.IsIdle() && window_.IsDue(steady_clock::now())) dispatcher_.Begin(window_.Take());
    dispatcher_.ReportSome(stop_);
    if (isAsked) Answer(asked);
    Wait(TimeToWait());
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
    pollfd sources[] = {{wake_.get(), POLLIN, 0}, {follower_.Descriptor(), POLLIN, 0}};
    poll(sources, std::size(sources), static_cast<int>(time.count()));
    uint64_t wakes = 0;
    if ((sources[0].revents & POLLIN) != 0 && read(wake_.get(), &wakes, sizeof wakes) < 0)
        KXP_LOG(KXP::LogDetail, "File watcher was woken by nobody");
}

}  // namespace
}  // namespace watcher

std::unique_ptr<IFileWatcher> CreateFileWatcher(const std::string& path,
                                                std::unique_ptr<IFileWatcherCallback>&& callback,
                                                const WatcherOptions& options) {
    try {
        return std::make_unique<watcher::FileWatcher>(path, options, std::move(callback));
    } catch (const std::system_error& error) {
        KXP_LOG(KXP::LogFailure, "No thread for the file watcher: %s", error.what());
        return nullptr;
    }
}

void StopAndJoinFileWatcher() {}
