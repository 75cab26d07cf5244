#include "tests/support/FakeFileEvents.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <mutex>
#include <set>
#include <thread>
#include <utility>
#include <vector>

#include <CoreServices/CoreServices.h>
#include <sys/stat.h>

#include "plugin-modules/Gallery/src/watcher/WatchDecision.h"

namespace {

using namespace watcher;

std::atomic<fake_events::Refusal> g_refusal{fake_events::Refusal::None};
std::atomic<int> g_live{0};
std::mutex g_streamsMutex;
std::set<FSEventStreamRef> g_streams;  // that were started

void Require(bool held, const char* rule) {
    if (held) return;
    std::fprintf(stderr, "file events: %s\n", rule);
    std::abort();
}

bool Refuses(fake_events::Refusal refusal) {
    return g_refusal == refusal;
}

struct Object {
    Object() { ++g_live; }
    virtual ~Object() { --g_live; }
    int references = 1;
};

using Tree = std::map<std::string, struct stat>;

void LookAt(const std::string& path, Tree& tree) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) return;
    tree[path] = status;
    std::error_code error;
    if (!S_ISDIR(status.st_mode)) return;
    std::filesystem::directory_iterator entry(path, error);
    for (; entry != std::filesystem::directory_iterator(); entry.increment(error))
        LookAt(entry->path(), tree);
}

uint32_t KindOf(const struct stat& status) {
    if (S_ISDIR(status.st_mode)) return ItemIsDir;
    return S_ISLNK(status.st_mode) ? ItemIsSymlink : ItemIsFile;
}

bool SameTime(const timespec& a, const timespec& b) {
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

uint32_t ChangeOf(const struct stat& before, const struct stat& now) {
    if (SameTime(before.st_ctim, now.st_ctim)) return 0;
    if (!SameTime(before.st_mtim, now.st_mtim)) return S_ISDIR(now.st_mode) ? 0 : uint32_t{ItemModified};
    return ItemChangeOwner;
}

// What is in `tree` and not, as the same item, in `other`. Items that are elsewhere in `other` were renamed.
void AddMissing(const Tree& tree, const Tree& other, uint32_t flag, std::vector<WatchEvent>& events) {
    std::set<ino_t> inodes;
    for (const auto& [path, status] : other)
        inodes.insert(status.st_ino);
    for (const auto& [path, status] : tree) {
        const auto found = other.find(path);
        if (found != other.end() && found->second.st_ino == status.st_ino) continue;
        const bool renamed = inodes.count(status.st_ino) > 0;
        events.push_back({path, (renamed ? uint32_t{ItemRenamed} : flag) | KindOf(status)});
    }
}

}  // namespace

struct __CFString : Object {
    std::string text;
};
struct __CFArray : Object {
    ~__CFArray() override {
        for (const void* value : values)
            CFRelease(value);
    }
    std::vector<const void*> values;
};

// Work that is done on the calling thread, one after the other.
struct dispatch_queue_s : Object {
    std::mutex busy;
    std::atomic<std::thread::id> worksOn;
};

struct __FSEventStream : Object {
    void Deliver(const std::vector<WatchEvent>& events);
    void Look();
    void Run();

    FSEventStreamCallback callback = nullptr;
    void* info = nullptr;
    std::vector<std::string> folders;
    std::chrono::duration<double> latency{};
    dispatch_queue_t queue = nullptr;
    Tree tree;  // under the queue's mutex, as is delivering
    uint64_t lastId = 0;
    std::mutex mutex;
    std::condition_variable changed;
    bool stopped = false;
    bool invalidated = false;  // under the queue's mutex
    std::thread thread;
};

void __FSEventStream::Deliver(const std::vector<WatchEvent>& events) {
    std::vector<const char*> paths;
    std::vector<FSEventStreamEventFlags> flags;
    std::vector<FSEventStreamEventId> ids;
    for (const WatchEvent& event : events) {
        paths.push_back(event.path.c_str());
        flags.push_back(event.flags);
        ids.push_back(++lastId);
    }
    if (!events.empty()) callback(this, info, events.size(), paths.data(), flags.data(), ids.data());
}

void __FSEventStream::Look() {
    const std::lock_guard<std::mutex> lock(queue->busy);
    if (invalidated) return;
    Tree now;
    for (const std::string& folder : folders)
        LookAt(folder, now);
    std::vector<WatchEvent> events;
    AddMissing(tree, now, ItemRemoved, events);
    AddMissing(now, tree, ItemCreated, events);
    for (const auto& [path, status] : now) {
        const auto before = tree.find(path);
        if (before == tree.end() || before->second.st_ino != status.st_ino) continue;
        const uint32_t change = ChangeOf(before->second, status);
        if (change != 0) events.push_back({path, change | KindOf(status)});
    }
    tree = std::move(now);
    Deliver(events);
}

void __FSEventStream::Run() {
    for (;;) {
        {
            std::unique_lock<std::mutex> lock(mutex);
            if (changed.wait_for(lock, latency, [this] { return stopped; })) return;
        }
        Look();
    }
}

namespace fake_events {

void Refuse(Refusal refusal) {
    g_refusal = refusal;
}

void Report(const std::string& path, uint32_t flags) {
    const std::lock_guard<std::mutex> lock(g_streamsMutex);
    for (FSEventStreamRef stream : g_streams) {
        const std::lock_guard<std::mutex> busy(stream->queue->busy);
        stream->Deliver({{path, flags}});
    }
}

int LiveObjects() {
    return g_live;
}

}  // namespace fake_events

extern "C" {

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFArrayCallBacks kCFTypeArrayCallBacks{};

void CFRelease(CFTypeRef object) {
    auto* const held = static_cast<Object*>(const_cast<void*>(object));
    if (--held->references == 0) delete held;
}

CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* text, CFStringEncoding) {
    auto* const string = new __CFString;
    string->text = text;
    return string;
}

CFArrayRef CFArrayCreate(CFAllocatorRef, const void** values, CFIndex count, const CFArrayCallBacks*) {
    auto* const array = new __CFArray;
    array->values.assign(values, values + count);
    for (const void* value : array->values)
        ++static_cast<Object*>(const_cast<void*>(value))->references;
    return array;
}

dispatch_queue_t dispatch_queue_create(const char*, dispatch_queue_attr_t) {
    return Refuses(fake_events::Refusal::Queue) ? nullptr : new dispatch_queue_s;
}

void dispatch_sync_f(dispatch_queue_t queue, void* context, dispatch_function_t work) {
    const std::lock_guard<std::mutex> lock(queue->busy);
    queue->worksOn = std::this_thread::get_id();
    work(context);
    queue->worksOn = std::thread::id();
}

void dispatch_release(dispatch_queue_t queue) {
    delete queue;
}

FSEventStreamRef FSEventStreamCreate(CFAllocatorRef, FSEventStreamCallback callback,
                                     FSEventStreamContext* context, CFArrayRef paths, FSEventStreamEventId,
                                     CFTimeInterval latency, FSEventStreamCreateFlags flags) {
    Require(flags == kFSEventStreamCreateFlagFileEvents, "events of files were expected");
    if (Refuses(fake_events::Refusal::Stream)) return nullptr;
    auto* const stream = new __FSEventStream;
    stream->callback = callback;
    stream->info = context->info;
    stream->latency = std::chrono::duration<double>(latency);
    for (const void* path : paths->values) {
        stream->folders.push_back(static_cast<const __CFString*>(path)->text);
        LookAt(stream->folders.back(), stream->tree);
    }
    return stream;
}

void FSEventStreamSetDispatchQueue(FSEventStreamRef stream, dispatch_queue_t queue) {
    Require(queue && !stream->queue, "a queue is set once");
    stream->queue = queue;
}

Boolean FSEventStreamStart(FSEventStreamRef stream) {
    Require(stream->queue && !stream->thread.joinable(), "a stream with a queue is started once");
    if (Refuses(fake_events::Refusal::Start)) return 0;
    stream->thread = std::thread([stream] { stream->Run(); });
    const std::lock_guard<std::mutex> lock(g_streamsMutex);
    g_streams.insert(stream);
    return 1;
}

void FSEventStreamFlushSync(FSEventStreamRef stream) {
    Require(stream->thread.joinable(), "only a started stream is flushed");
    stream->Look();
}

// On the queue, for which the thread may be waiting.
void FSEventStreamStop(FSEventStreamRef stream) {
    Require(stream->thread.joinable(), "only a started stream is stopped");
    const std::lock_guard<std::mutex> lock(stream->mutex);
    stream->stopped = true;
    stream->changed.notify_all();
}

// Elsewhere a delivery might be under way.
void FSEventStreamInvalidate(FSEventStreamRef stream) {
    Require(stream->queue && !std::exchange(stream->invalidated, true),
            "a stream with a queue is invalidated once");
    Require(stream->queue->worksOn == std::this_thread::get_id(), "a stream is invalidated on its queue");
}

void FSEventStreamRelease(FSEventStreamRef stream) {
    Require(stream->invalidated || !stream->queue, "a stream with a queue is invalidated before its release");
    if (stream->thread.joinable()) stream->thread.join();
    {
        const std::lock_guard<std::mutex> lock(g_streamsMutex);
        g_streams.erase(stream);
    }
    delete stream;
}
}
