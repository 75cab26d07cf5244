// The container's callback and its context.
#pragma once

#include "core/container/cef/ZvCefPlugin.h"

class ContainerCallback {
  public:
    ContainerCallback(ZvCefPluginCallback callback, void* context) : callback_(callback), context_(context) {}

    // Does nothing for a null callback. What the callback throws ends here, with one log line. Any thread.
    void Call(int notification, const char* text) const noexcept;

    // Whether the calling thread is inside a callback. Entry calls that end threads must not be made there.
    static bool IsCallingThread();

  private:
    const ZvCefPluginCallback callback_;
    void* const context_;
};
