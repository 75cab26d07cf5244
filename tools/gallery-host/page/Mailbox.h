// Brings work to the thread that talks with the plug-in, from any other.
#pragma once

#include <functional>
#include <vector>

#include "common/threads/Mutex.h"
#include "gallery-host/base/WakeUp.h"

namespace host::page {

class Mailbox {
  public:
    using Task = std::function<void()>;

    Mailbox() = default;  // throws Failure when the system has no descriptors left

    // From any thread.
    void Post(Task task) EXCLUDES(mutex_);

    // Readable while there are tasks.
    int fd() const { return wakeUp_.fd(); }
    // Runs, on the calling thread, all that is there.
    void RunAll() EXCLUDES(mutex_);

  private:
    const WakeUp wakeUp_;
    KXP::Mutex mutex_;
    std::vector<Task> tasks_ GUARDED_BY(mutex_);
};

}  // namespace host::page
