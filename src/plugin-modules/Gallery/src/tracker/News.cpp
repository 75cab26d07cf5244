#include "plugin-modules/Gallery/src/tracker/News.h"

#include <utility>

#include "CobalixUtil.h"
#include "common/results/Exception.h"

void News::Add(Change change, Event notify) {
    const KXP::MutexLock lock(mutex_);
    if (change == Change::None && waiting_.empty()) {
        ready_.push_back(std::move(notify));
        return;
    }
    if (waiting_.empty()) waitsSince_ = clock_.Now();
    waiting_.push_back({change, std::move(notify)});
}

void News::AddAtOnce(Event notify) {
    const KXP::MutexLock lock(mutex_);
    ready_.push_back(std::move(notify));
}

bool News::HasUnwritten() const {
    const KXP::MutexLock lock(mutex_);
    return !waiting_.empty();
}

bool News::MayWait(std::chrono::milliseconds limit) const {
    const KXP::MutexLock lock(mutex_);
    return waiting_.empty() || clock_.Now() - waitsSince_ < limit;
}

void News::CoverAll() {
    const KXP::MutexLock lock(mutex_);
    covered_ = waiting_.size();
}

void News::ReleaseCovered(const KXP::RetVal& written) {
    for (const Change change : TakeCovered(!written.Failed())) {
        if (change == Change::Untracked) {
            KXP_LOG(KXP::LogFailure, "UntrackFileTask: Failed to write to tracker json");
            continue;
        }
        KXP_LOG(KXP::LogFailure, "TrackUGC::Failed to write to tracker");
        KXP_LOG(KXP::LogFailure, "Track File failed %s", KXP::ToStr(written).c_str());
    }
}

// Returns the changes that were not written.
std::vector<News::Change> News::TakeCovered(bool written) {
    std::vector<Change> failed;
    const KXP::MutexLock lock(mutex_);
    // What was added after the cover and needs no write has waited only for the covered ones.
    while (covered_ < waiting_.size() && waiting_[covered_].change == Change::None)
        ++covered_;
    for (; covered_ > 0; --covered_, waiting_.pop_front()) {
        Item& item = waiting_.front();
        if (!written && item.change != Change::None) {
            failed.push_back(item.change);
        } else if (item.notify) {
            ready_.push_back(std::move(item.notify));
        }
    }
    waitsSince_ = clock_.Now();
    return failed;
}

bool News::TakeNext(Event& event) {
    const KXP::MutexLock lock(mutex_);
    draining_ = !ready_.empty();
    if (!draining_) return false;
    event = std::move(ready_.front());
    ready_.pop_front();
    return true;
}

void News::Drain() {
    {
        const KXP::MutexLock lock(mutex_);
        if (draining_) return;
        draining_ = true;
    }
    Event event;
    while (TakeNext(event)) {
        try {
            event();
        } catch (...) {
            KXP_LOG(KXP::LogFailure, "Exception while notifying of the tracker: %s",
                    KXP::ToStr(KXP::ExceptionToRetVal()).c_str());
        }
        event = nullptr;
    }
}
