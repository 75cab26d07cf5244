#include "core/container/cef/ContainerCallback.h"

#include <cstdio>
#include <exception>

#include "CobalixUtil.h"

namespace {

thread_local int callDepth = 0;

class InsideCallback {
  public:
    InsideCallback() { ++callDepth; }
    ~InsideCallback() { --callDepth; }
    InsideCallback(const InsideCallback&) = delete;
    InsideCallback& operator=(const InsideCallback&) = delete;
};

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

void ContainerCallback::Call(int notification, const char* text) const noexcept {
    if (!callback_) return;
    const InsideCallback inside;
    try {
        callback_(static_cast<ZvCefPluginNotification_t>(notification), text, context_);
    } catch (const std::exception& error) {
        LogThrown(notification, error.what());
    } catch (...) {
        LogThrown(notification, "no standard exception");
    }
}
