// Brings work to the thread that talks with the plug-in, from any other.
#pragma once

#include <functional>
#include <vector>

#include "base/FileDescriptor.h"
#include "common/threads/Mutex.h"

namespace host::page {

class Mailbox {
  public:
    using Task = std::function<void()>;

    Mailbox();  // throws Failure when the system has no descriptors left

    // From any thread.
    void Post(Task task) EXCLUDES(mutex_);

    // Readable while there are tasks.
    int fd() const { return fd_.get(); }
    // Runs, on the calling thread, all that is there.
    void RunAll() EXCLUDES(mutex_);

  private:
    const KXP::FileDescriptor fd_;
    KXP::Mutex mutex_;
    std::vector<Task> tasks_ GUARDED_BY(mutex_);
};

}  // namespace host::page
