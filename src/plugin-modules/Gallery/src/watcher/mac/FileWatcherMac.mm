#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/CoreServices.h>

#include <cerrno>
#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include <sys/stat.h>

#include "CobalixUtil.h"
#include "common/threads/Mutex.h"
#include "plugin-modules/Gallery/src/watcher/FileWatcher.h"
#include "plugin-modules/Gallery/src/watcher/WatchDispatch.h"

namespace {

// Null for a path that is not UTF-8; there is then no array and no stream either.
CFStringRef CreatePath(const std::string& path) {
    return CFStringCreateWithCString(kCFAllocatorDefault, path.c_str(), kCFStringEncodingUTF8);
}

CFArrayRef CreatePaths(CFStringRef path) {
    if (!path) return nullptr;
    const void* values[] = {path};
    return CFArrayCreate(kCFAllocatorDefault, values, 1, &kCFTypeArrayCallBacks);
}

watcher::ItemKind KindAt(const char* path) {
    struct stat status {};
    if (stat(path, &status) != 0)
        return errno == ENOENT || errno == ENOTDIR ? watcher::ItemKind::None : watcher::ItemKind::Unknown;
    return S_ISDIR(status.st_mode) ? watcher::ItemKind::Folder : watcher::ItemKind::File;
}

void ReleaseIfAny(CFTypeRef object) {
    if (object) CFRelease(object);
}

class FileWatcher : public IFileWatcher {
  public:
    FileWatcher(const std::string& path, std::chrono::duration<double> latency,
                std::unique_ptr<IFileWatcherCallback>&& callback)
        : callback_(std::move(callback)), path_(CreatePath(path)), paths_(CreatePaths(path_)) {
        CreateStream(latency.count());
        thread_ = std::thread([this] { Run(); });
    }
    ~FileWatcher() override;

    std::optional<UnreportedPaths> Unreported(size_t) override {
        if (stream_) FSEventStreamFlushSync(stream_);
        return UnreportedPaths{};
    }

  private:
    void CreateStream(double latency);
    void Run();
    static void FsEventStreamCallback(ConstFSEventStreamRef stream, void* info, size_t count, void* paths,
                                      const FSEventStreamEventFlags* flags, const FSEventStreamEventId* ids);

    const std::unique_ptr<IFileWatcherCallback> callback_;
    CFStringRef path_ = nullptr;
    CFArrayRef paths_ = nullptr;
    FSEventStreamRef stream_ = nullptr;
    CFRunLoopRef runLoop_ = nullptr;  // the thread's; retained, because the destructor uses it after the thread has ended
    std::thread thread_;
    std::mutex dispatchMutex_;  // not a KXP::Mutex: the callback locks those under it
    KXP::CondVar runningChanged_;
    KXP::Mutex runningMutex_;
    bool running_ GUARDED_BY(runningMutex_) = false;
};

void FileWatcher::CreateStream(double latency) {
    FSEventStreamContext context = {0, this, nullptr, nullptr, nullptr};
    if (paths_)
        stream_ = FSEventStreamCreate(kCFAllocatorDefault, &FileWatcher::FsEventStreamCallback, &context,
                                      paths_, kFSEventStreamEventIdSinceNow, latency,
                                      kFSEventStreamCreateFlagFileEvents);
    if (!stream_) KXP_LOG(KXP::LogFailure, "No file events to be had");
}

void FileWatcher::Run() {
    KXP::LogNameThread("Gallery", "FILE");
    runLoop_ = static_cast<CFRunLoopRef>(const_cast<void*>(CFRetain(CFRunLoopGetCurrent())));
    // A loop without a source would end at once, and the destructor would never see it waiting.
    CFRunLoopSourceContext idle = {};
    const CFRunLoopSourceRef keepAlive = CFRunLoopSourceCreate(kCFAllocatorDefault, 0, &idle);
    CFRunLoopAddSource(runLoop_, keepAlive, kCFRunLoopDefaultMode);
    if (stream_) {
        FSEventStreamScheduleWithRunLoop(stream_, runLoop_, kCFRunLoopDefaultMode);
        FSEventStreamStart(stream_);
    }
    {
        KXP::MutexLock lock(runningMutex_);
        running_ = true;
        runningChanged_.NotifyAll();
    }
    CFRunLoopRun();
    CFRunLoopRemoveSource(runLoop_, keepAlive, kCFRunLoopDefaultMode);
    CFRelease(keepAlive);
}

// Only this thread takes the dispatch mutex, and nothing that a callback may call takes it.
void FileWatcher::FsEventStreamCallback(ConstFSEventStreamRef, void* info, size_t count, void* paths,
                                        const FSEventStreamEventFlags* flags,
                                        const FSEventStreamEventId* ids) {
    auto* self = static_cast<FileWatcher*>(info);
    const auto* names = static_cast<const char* const*>(paths);
    const std::lock_guard<std::mutex> lock(self->dispatchMutex_);
    for (size_t i = 0; i < count; ++i) {
        watcher::DispatchWatchEvent(static_cast<int>(i), ids[i], {names[i], static_cast<uint32_t>(flags[i])},
                                    KindAt(names[i]), *self->callback_);
    }
}

// The order matters: the loop is not stopped while an event is being handled, and the stream outlives the loop.
FileWatcher::~FileWatcher() {
    {
        KXP::MutexLock lock(runningMutex_);
        while (!running_) runningChanged_.Wait(runningMutex_);
    }
    while (!CFRunLoopIsWaiting(runLoop_)) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    CFRunLoopStop(runLoop_);
    thread_.join();
    if (stream_) {
        FSEventStreamStop(stream_);
        FSEventStreamUnscheduleFromRunLoop(stream_, runLoop_, kCFRunLoopDefaultMode);
        FSEventStreamInvalidate(stream_);
        FSEventStreamRelease(stream_);
    }
    CFRelease(runLoop_);
    ReleaseIfAny(paths_);
    ReleaseIfAny(path_);
}

}  // namespace

std::unique_ptr<IFileWatcher> CreateFileWatcher(const std::string& path,
                                                std::unique_ptr<IFileWatcherCallback>&& callback,
                                                const WatcherOptions& options, const GalleryWalk&) {
    try {
        return std::make_unique<FileWatcher>(path, options.window, std::move(callback));
    } catch (const std::system_error& error) {
        KXP_LOG(KXP::LogFailure, "No thread for the file watcher: %s", error.what());
        return nullptr;
    }
}

void StopAndJoinFileWatcher() {}
