// The container's end of the handler chain.
#pragma once

#include <memory>

#include "common/message/MessageHandler.h"
#include "core/container/cef/ContainerCallback.h"
#include "core/container/cef/OpenRequests.h"

class CefJsonReceiver : public KXP::MessageSink<KXP::JSONMessage> {
  public:
    CefJsonReceiver(ZvCefPluginCallback callback, void* context)
        : callback_(callback, context), open_(callback_) {}

    // The first step of every incoming message. Throws JSONFieldError for a text that is no envelope; what
    // goes wrong after that is logged or answered.
    void Receive(const char* json);

    // The last step of every outgoing message: passes it to the container as JSON, unless it answers a
    // request that is answered already. Any thread.
    bool HandleMsg(std::unique_ptr<KXP::JSONMessage> message) override;

    const ContainerCallback& container() const { return callback_; }
    // Nothing reaches the container afterwards.
    void Close() { callback_.Close(); }
    OpenRequests& open_requests() { return open_; }

  private:
    std::unique_ptr<KXP::JSONMessage> Read(const char* json);

    ContainerCallback callback_;
    OpenRequests open_;
};
