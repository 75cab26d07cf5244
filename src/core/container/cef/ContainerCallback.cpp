#include "core/container/cef/ContainerCallback.h"

#include <cstdio>
#include <exception>

#include "CobalixUtil.h"

namespace {

thread_local int callDepth = 0;

void LogThrown(int notification, const char* what) {
    if (notification == ZvCefPluginLog) {
        // A log line about it would come back here.
        std::fprintf(stderr, "The container's callback threw at a log line: %s\n", what);
    } else {
        KXP_LOG(KXP::LogFailure, "The container's callback threw: %s", what);
    }
}

}  // namespace

bool ContainerCallback::IsCallingThread() {
    return callDepth > 0;
}

// One call, if calls are still allowed.
class ContainerCallback::Calling {
  public:
    explicit Calling(const ContainerCallback& callback) : callback_(callback) {
        const KXP::MutexLock lock(callback_.mutex_);
        allowed_ = !callback_.closed_;
        if (!allowed_) return;
        ++callback_.calls_;
        ++callDepth;
    }
    ~Calling() {
        if (!allowed_) return;
        --callDepth;
        // Notified under the lock: who waits may destroy the callback as soon as it is free.
        const KXP::MutexLock lock(callback_.mutex_);
        --callback_.calls_;
        callback_.left_.NotifyAll();
    }
    Calling(const Calling&) = delete;
    Calling& operator=(const Calling&) = delete;

    bool IsAllowed() const { return allowed_; }

  private:
    const ContainerCallback& callback_;
    bool allowed_ = false;
};

void ContainerCallback::Call(int notification, const char* text) const noexcept {
    if (!callback_) return;
    const Calling call(*this);
    if (!call.IsAllowed()) return;
    try {
        callback_(static_cast<ZvCefPluginNotification_t>(notification), text, context_);
    } catch (const std::exception& error) {
        LogThrown(notification, error.what());
    } catch (...) {
        LogThrown(notification, "no standard exception");
    }
}

void ContainerCallback::Close() {
    const KXP::MutexLock lock(mutex_);
    closed_ = true;
    while (calls_ > 0)
        left_.Wait(mutex_);
}
