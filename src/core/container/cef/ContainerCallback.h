// The container's callback and its context.
#pragma once

#include "common/threads/Mutex.h"
#include "core/container/cef/ZvCefPlugin.h"

class ContainerCallback {
  public:
    ContainerCallback(ZvCefPluginCallback callback, void* context) : callback_(callback), context_(context) {}

    // Does nothing for a null callback and after Close. What the callback throws ends here, with one log
    // line. Any thread.
    void Call(int notification, const char* text) const noexcept EXCLUDES(mutex_);

    // Waits until no other thread is inside the callback. Nobody enters it afterwards.
    void Close() EXCLUDES(mutex_);

    // Whether the calling thread is inside a callback. Entry calls that end threads must not be made there.
    static bool IsCallingThread();

  private:
    class Calling;

    const ZvCefPluginCallback callback_;
    void* const context_;

    mutable KXP::Mutex mutex_;
    mutable KXP::CondVar left_;
    mutable int calls_ GUARDED_BY(mutex_) = 0;
    bool closed_ GUARDED_BY(mutex_) = false;
};
