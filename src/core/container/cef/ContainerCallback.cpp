#include "core/container/cef/ContainerCallback.h"

#include <cstdio>

#include "CobalixUtil.h"
#include "common/results/Exception.h"

namespace {

thread_local int callDepth = 0;

class InsideCallback {
  public:
    InsideCallback() { ++callDepth; }
    ~InsideCallback() { --callDepth; }
    InsideCallback(const InsideCallback&) = delete;
    InsideCallback& operator=(const InsideCallback&) = delete;
};

}  // namespace

bool ContainerCallback::IsCallingThread() {
    return callDepth > 0;
}

void ContainerCallback::Call(int notification, const char* text) const {
    if (!callback_) return;
    const InsideCallback inside;
    try {
        callback_(static_cast<ZvCefPluginNotification_t>(notification), text, context_);
    } catch (...) {
        const std::string what = KXP::ToStr(KXP::ExceptionToRetVal());
        if (notification == ZvCefPluginLog) {
            // A log line about it would come back here.
            std::fprintf(stderr, "The container's callback threw at a log line: %s\n", what.c_str());
        } else {
            KXP_LOG(KXP::LogFailure, "The container's callback threw: %s", what.c_str());
        }
    }
}
