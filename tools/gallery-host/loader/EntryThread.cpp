#include "gallery-host/loader/EntryThread.h"

#include <exception>
#include <utility>

namespace host {

EntryThread::EntryThread(EventQueue& events) : events_(events), thread_([this] { Run(); }) {}

EntryThread::~EntryThread() {
    {
        KXP::MutexLock lock(mutex_);
        ending_ = true;
    }
    changed_.NotifyAll();
    thread_.join();
}

void EntryThread::Post(std::function<int()> call) {
    {
        KXP::MutexLock lock(mutex_);
        next_ = std::move(call);
    }
    changed_.NotifyAll();
}

void EntryThread::Run() {
    for (;;) {
        std::function<int()> call;
        {
            KXP::MutexLock lock(mutex_);
            while (!next_ && !ending_)
                changed_.Wait(mutex_);
            if (!next_) return;
            call = std::exchange(next_, nullptr);
        }
        RunOne(call);
    }
}

void EntryThread::RunOne(const std::function<int()>& call) {
    // A library may throw anything, including types that only it knows.
    try {
        events_.Push(Event::Kind::kReturned, call(), {});
    } catch (const std::exception& error) {
        events_.Push(Event::Kind::kThrew, 0, error.what());
    } catch (...) {
        events_.Push(Event::Kind::kThrew, 0, "an exception of an unknown type");
    }
}

}  // namespace host
