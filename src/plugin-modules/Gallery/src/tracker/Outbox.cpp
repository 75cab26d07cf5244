#include "plugin-modules/Gallery/src/tracker/Outbox.h"

#include <utility>

#include "CobalixUtil.h"
#include "common/Exception.h"

void Outbox::Put(Event event) {
    KXP::MutexLock lock(mutex_);
    events_.push_back(std::move(event));
}

bool Outbox::TakeNext(Event& event) {
    KXP::MutexLock lock(mutex_);
    draining_ = !events_.empty();
    if (!draining_) return false;
    event = std::move(events_.front());
    events_.pop_front();
    return true;
}

void Outbox::Drain() {
    {
        KXP::MutexLock lock(mutex_);
        if (draining_) return;
        draining_ = true;
    }
    Event event;
    while (TakeNext(event)) {
        try {
            event();
        } catch (...) {
            KXP_LOG(KXP::LogFailure, "Exception while telling of the tracker: %s",
                    KXP::ToStr(KXP::ExceptionToRetVal()).c_str());
        }
        event = nullptr;
    }
}
