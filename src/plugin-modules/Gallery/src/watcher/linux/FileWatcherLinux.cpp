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

// Between two looks at the kernel's queue.
constexpr size_t kDispatchStep = 256;
constexpr milliseconds kLongestWait{60000};
// The longest wait where no descriptor was left to wake the thread with.
constexpr milliseconds kWithoutWake{20};
// How long a question may wait while the thread is at a slow disk.
constexpr milliseconds kAnswerLimit{100};
// More than this is not told by name.
constexpr size_t kMostUntold = 256;

// Reports the events of closed windows, in their order, a few at a time.
class Dispatcher {
  public:
    Dispatcher(IFileWatcherCallback& callback, TreeFollower& follower)
        : callback_(callback), follower_(follower) {}

    bool IsIdle() const { return events_.empty(); }
    void Begin(std::deque<WatchEvent> events) { events_ = std::move(events); }
    void Step(const std::atomic<bool>& stop);

  private:
    bool WentWithItsFolder(const WatchEvent& event, ItemKind there) const;
    void End();

    IFileWatcherCallback& callback_;
    TreeFollower& follower_;
    std::deque<WatchEvent> events_;
    std::set<std::string> goneFolders_;  // untracked in this batch
    int index_ = 0;
    uint64_t id_ = 0;
};

void Dispatcher::Step(const std::atomic<bool>& stop) {
    for (size_t left = kDispatchStep; left > 0 && !events_.empty() && !stop; --left) {
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

// A folder is untracked with all that was in it, which need not be reported again for each file.
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

    std::optional<std::vector<std::string>> Untold() override EXCLUDES(mutex_);

  private:
    void Run();
    void Turn();
    void Wait(milliseconds time);
    milliseconds TimeToWait() const;
    void TellReady() EXCLUDES(mutex_);
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
    // Questions what is not told yet, by number, and the last that has an answer.
    KXP::CondVar answered_;
    uint64_t lastAsked_ GUARDED_BY(mutex_) = 0;
    uint64_t lastAnswered_ GUARDED_BY(mutex_) = 0;
    std::optional<std::vector<std::string>> untold_ GUARDED_BY(mutex_);

    // Thread only.
    EventWindow window_;
    TreeFollower follower_;
    Dispatcher dispatcher_;
    bool learning_ = true;

    std::thread thread_;  // last, for it uses all of the above
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

std::optional<std::vector<std::string>> FileWatcher::Untold() {
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
    return untold_;
}

// For questions that were asked before the events of this turn were read.
void FileWatcher::Answer(uint64_t asked) {
    std::optional<std::vector<std::string>> untold;
    if (dispatcher_.IsIdle() && window_.size() <= kMostUntold) untold = follower_.Awaited(kMostUntold);
    if (untold) {
        for (const WatchEvent& event : window_.events())
            untold->push_back(event.path);
    }
    KXP::MutexLock lock(mutex_);
    untold_ = std::move(untold);
    lastAnswered_ = asked;
    answered_.NotifyAll();
}

void FileWatcher::Run() {
    KXP::LogNameThread("Gallery", "FILE");
    bool started = false;
    while (!stop_) {
        try {
            if (!std::exchange(started, true)) follower_.Start();
            Turn();
        } catch (const std::exception& error) {
            KXP_LOG(KXP::LogFailure, "File watcher failed: %s", error.what());
            follower_.DistrustEvents();
            TellReady();
            Wait(recoverAfter_);
        }
    }
    TellReady();
}

// The kernel's queue is read in every turn, also while a window is open or being told: it holds only so much.
void FileWatcher::Turn() {
    uint64_t asked = 0;
    bool isAsked = false;
    {
        KXP::MutexLock lock(mutex_);
        asked = lastAsked_;
        isAsked = asked > lastAnswered_;
    }
    follower_.ReadEvents();
    follower_.Step();
    if (learning_ && (follower_.HasLearntGallery() || steady_clock::now() >= startLimit_)) TellReady();
    if (dispatcher_.IsIdle() && window_.IsDue(steady_clock::now())) dispatcher_.Begin(window_.Take());
    dispatcher_.Step(stop_);
    if (isAsked) Answer(asked);
    Wait(TimeToWait());
}

void FileWatcher::TellReady() {
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

// Ends early for events and for the destructor.
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
