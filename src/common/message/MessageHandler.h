// The links of the handler chain. Each has a request side and a response side, and a message chooses its side
// by itself. Links are non-owning; whoever builds a chain owns its handlers.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <utility>

#include "CobalixUtil.h"
#include "common/message/Message.h"
#include "common/plugincommon/task/TaskQueue.h"

namespace KXP {

class IMessageHandler {
  public:
    virtual ~IMessageHandler() = default;
    // Takes ownership of the message. True when it was handled, held or passed on.
    virtual bool SendMsg(std::unique_ptr<JSONMessage> message) = 0;
    virtual void SetRequestHandler(IMessageHandler* handler) = 0;
    virtual void SetResponseHandler(IMessageHandler* handler) = 0;
};

// Passes every message on to the link of its side. The links are set while the chain is built; a message that
// arrives before that finds none.
class MessageHandler : public IMessageHandler {
  public:
    bool SendMsg(std::unique_ptr<JSONMessage> message) override { return ForwardMsg(std::move(message)); }
    void SetRequestHandler(IMessageHandler* handler) override { requestHandler_ = handler; }
    void SetResponseHandler(IMessageHandler* handler) override { responseHandler_ = handler; }

    // False, with a log line, when the side has no link: the message is then lost.
    virtual bool ForwardMsg(std::unique_ptr<JSONMessage> message);

  protected:
    IMessageHandler* response_handler() const { return responseHandler_; }

  private:
    std::atomic<IMessageHandler*> requestHandler_{nullptr};
    std::atomic<IMessageHandler*> responseHandler_{nullptr};
};

// An end of a chain: what reaches it is handled there.
class MessageSink : public MessageHandler {
  public:
    bool SendMsg(std::unique_ptr<JSONMessage> message) override { return HandleMsg(std::move(message)); }
    virtual bool HandleMsg(std::unique_ptr<JSONMessage> message) = 0;
};

// Signs and sends the answers of a module.
class MessageResponder : public MessageHandler {
  public:
    MessageResponder(std::string system, std::string module)
        : system_(std::move(system)), module_(std::move(module)) {}

    bool SendResponse(std::unique_ptr<JSONMessage> response, const RetVal& value);

  private:
    const std::string system_;
    const std::string module_;
};

// Which messages a queueing handler moves onto the worker.
enum QueueMask : unsigned { QueueRequests = 1, QueueResponses = 2 };

// Passes messages on through the task queue, in the order of their arrival.
class QueueingMessageHandler : public MessageHandler {
  public:
    QueueingMessageHandler(TaskQueue& taskQueue, unsigned queueMask)
        : taskQueue_(taskQueue), queueMask_(queueMask) {}

    bool ForwardMsg(std::unique_ptr<JSONMessage> message) override;

  protected:
    bool Queues(QueueMask kind) const { return (queueMask_ & kind) != 0; }
    TaskQueue& task_queue() { return taskQueue_; }

  private:
    TaskQueue& taskQueue_;
    const unsigned queueMask_;
};

}  // namespace KXP
