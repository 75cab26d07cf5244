#include "plugin-modules/Gallery/src/watcher/apple/FileEventStream.h"

#include <utility>

#include "base/apple/Owned.h"

namespace watcher {
namespace {

// Null without a path that is UTF-8.
FSEventStreamRef CreateStream(const std::vector<std::string>& folders, CFTimeInterval latency,
                              FSEventStreamCallback callback, void* info) {
    std::vector<KXP::Owned<CFStringRef>> texts;
    std::vector<const void*> values;
    for (const std::string& folder : folders) {
        texts.emplace_back(
            CFStringCreateWithCString(kCFAllocatorDefault, folder.c_str(), kCFStringEncodingUTF8));
        if (texts.back()) values.push_back(texts.back().get());
    }
    const KXP::Owned paths(CFArrayCreate(kCFAllocatorDefault, values.data(),
                                         static_cast<CFIndex>(values.size()), &kCFTypeArrayCallBacks));
    if (!paths || values.empty()) return nullptr;
    FSEventStreamContext context = {0, info, nullptr, nullptr, nullptr};
    return FSEventStreamCreate(kCFAllocatorDefault, callback, &context, paths.get(),
                               kFSEventStreamEventIdSinceNow, latency, kFSEventStreamCreateFlagFileEvents);
}

}  // namespace

FileEventStream::FileEventStream(const std::vector<std::string>& folders,
                                 std::chrono::duration<double> latency, Receiver receiver)
    : receiver_(std::move(receiver)),
      queue_(dispatch_queue_create("Gallery file events", DISPATCH_QUEUE_SERIAL)) {
    if (queue_) stream_ = CreateStream(folders, latency.count(), &FileEventStream::Deliver, this);
    if (stream_) FSEventStreamSetDispatchQueue(stream_, queue_);
}

bool FileEventStream::Start() {
    started_ = stream_ && FSEventStreamStart(stream_);
    return started_;
}

// Only a started stream can be flushed.
void FileEventStream::Flush() {
    if (started_) FSEventStreamFlushSync(stream_);
}

// On the queue, so that no delivery is under way.
void FileEventStream::Stop() {
    if (stream_) {
        dispatch_sync_f(queue_, this, [](void* self) { static_cast<FileEventStream*>(self)->EndOnQueue(); });
        FSEventStreamRelease(std::exchange(stream_, nullptr));
    }
    if (queue_) dispatch_release(std::exchange(queue_, nullptr));
}

// A stream with a queue has to be invalidated while it has it, whether or not it was started.
void FileEventStream::EndOnQueue() {
    if (std::exchange(started_, false)) FSEventStreamStop(stream_);
    FSEventStreamInvalidate(stream_);
}

void FileEventStream::Deliver(ConstFSEventStreamRef, void* info, size_t count, void* paths,
                              const FSEventStreamEventFlags* flags, const FSEventStreamEventId* ids) {
    const auto& receive = static_cast<const FileEventStream*>(info)->receiver_;
    const auto* names = static_cast<const char* const*>(paths);
    for (size_t i = 0; i < count; ++i)
        receive(static_cast<int>(i), ids[i], names[i], flags[i]);
}

}  // namespace watcher
