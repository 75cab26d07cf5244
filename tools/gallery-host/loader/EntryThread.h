// The thread on which the plug-in's entry calls run. The plug-in requires them on one thread, one at a time
// and never inside its callback; on a separate thread, the main thread can give up on one that hangs.
#pragma once

#include <functional>
#include <thread>

#include "common/threads/Mutex.h"
#include "gallery-host/loader/EventQueue.h"

namespace host {

class EntryThread {
  public:
    // `events` receives a kReturned or kThrew for each call and must outlive this object.
    explicit EntryThread(EventQueue& events);
    ~EntryThread();  // waits for the call that runs
    EntryThread(const EntryThread&) = delete;
    EntryThread& operator=(const EntryThread&) = delete;

    // Runs `call` on the thread. The previous call must have returned.
    void Post(std::function<int()> call);

  private:
    void Run();
    void RunOne(const std::function<int()>& call);

    EventQueue& events_;
    KXP::Mutex mutex_;
    KXP::CondVar changed_;
    std::function<int()> next_ GUARDED_BY(mutex_);
    bool ending_ GUARDED_BY(mutex_) = false;
    std::thread thread_;  // last: it uses all of the above
};

}  // namespace host
