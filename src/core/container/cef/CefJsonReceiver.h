// The container's end of the handler chain.
#pragma once

#include <memory>

#include "common/message/MessageHandler.h"
#include "core/container/cef/ContainerCallback.h"

class CefJsonReceiver : public KXP::MessageSink<KXP::JSONMessage> {
  public:
    CefJsonReceiver(ZvCefPluginCallback callback, void* context) : callback_(callback, context) {}

    // The last step of every outgoing message: passes it to the container as JSON. Any thread.
    bool HandleMsg(std::unique_ptr<KXP::JSONMessage> message) override;

    const ContainerCallback& container() const { return callback_; }

  private:
    const ContainerCallback callback_;
};
