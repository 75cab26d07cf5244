// The file events of some folders and of all that is below them, as the system reports them.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <CoreServices/CoreServices.h>

namespace watcher {

class FileEventStream {
  public:
    // Called on a queue of the stream's own, for one event at a time. `path` has no links in it, `flags` are
    // WatchFlag bits, `index` counts the events of one delivery, and `id` is the system's. Throws nothing.
    using Receiver = std::function<void(int index, uint64_t id, const char* path, uint32_t flags)>;

    // For what happens from now on in folders whose paths have no links in them. The system may collect
    // events for as long as `latency`.
    FileEventStream(const std::vector<std::string>& folders, std::chrono::duration<double> latency,
                    Receiver receiver);
    ~FileEventStream() { Stop(); }
    FileEventStream(const FileEventStream&) = delete;
    FileEventStream& operator=(const FileEventStream&) = delete;

    // Begins to deliver. Returns false when there are no events to be had.
    bool Start();
    // Returns when all that happened before the call has been delivered. Not for the stream's queue.
    void Flush();
    // Ends the stream: when this returns, the receiver is called no more.
    void Stop();

  private:
    void EndOnQueue();
    static void Deliver(ConstFSEventStreamRef stream, void* info, size_t count, void* paths,
                        const FSEventStreamEventFlags* flags, const FSEventStreamEventId* ids);

    const Receiver receiver_;
    dispatch_queue_t queue_ = nullptr;
    FSEventStreamRef stream_ = nullptr;  // only with a queue
    bool started_ = false;
};

}  // namespace watcher
