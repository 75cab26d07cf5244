// The links of the handler chain. Each has a request side and a response side, and a message chooses its side
// by itself. Links are non-owning; whoever builds a chain owns its handlers.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <utility>

#include "CobalixUtil.h"
#include "common/message/Message.h"
#include "common/task/TaskQueue.h"

namespace KXP {

template <typename T>
class IMessageHandler {
  public:
    virtual ~IMessageHandler() = default;
    // Takes ownership of the message. True when it was handled, held or passed on.
    virtual bool SendMsg(std::unique_ptr<T> message) = 0;
    virtual void SetRequestHandler(IMessageHandler* handler) = 0;
    virtual void SetResponseHandler(IMessageHandler* handler) = 0;
};

// Passes every message on to the link of its side. The links are set while the chain is built; a message that
// arrives before that finds none.
template <typename T>
class MessageHandler : public IMessageHandler<T> {
  public:
    bool SendMsg(std::unique_ptr<T> message) override { return ForwardMsg(std::move(message)); }
    void SetRequestHandler(IMessageHandler<T>* handler) override { requestHandler_ = handler; }
    void SetResponseHandler(IMessageHandler<T>* handler) override { responseHandler_ = handler; }

    // False, with a log line, when the side has no link: the message is then lost.
    virtual bool ForwardMsg(std::unique_ptr<T> message) {
        const bool response = Message::IsResponse(*message);
        IMessageHandler<T>* const link = response ? responseHandler_.load() : requestHandler_.load();
        if (link) return link->SendMsg(std::move(message));
        KXP_LOG(LogFailure, "No message %s handler attached", response ? "response" : "request");
        return false;
    }

  protected:
    IMessageHandler<T>* response_handler() const { return responseHandler_; }

  private:
    std::atomic<IMessageHandler<T>*> requestHandler_{nullptr};
    std::atomic<IMessageHandler<T>*> responseHandler_{nullptr};
};

// An end of a chain: what reaches it is handled there.
template <typename T>
class MessageSink : public MessageHandler<T> {
  public:
    bool SendMsg(std::unique_ptr<T> message) override { return HandleMsg(std::move(message)); }
    virtual bool HandleMsg(std::unique_ptr<T> message) = 0;
};

// Signs and sends the answers of a module.
template <typename T>
class MessageResponder : public MessageHandler<T> {
  public:
    MessageResponder(std::string system, std::string module)
        : system_(std::move(system)), module_(std::move(module)) {}

    bool SendResponse(std::unique_ptr<T> response, const RetVal& value) {
        if (!system_.empty()) response->set_source_system(system_.c_str());
        if (!module_.empty()) response->set_source_module(module_.c_str());
        Message::SetReturnValue(*response, value);
        return this->SendMsg(std::move(response));
    }

  private:
    const std::string system_;
    const std::string module_;
};

// Which messages a queueing handler moves onto the worker.
enum QueueMask : unsigned { QueueRequests = 1, QueueResponses = 2 };

// Passes messages on through the task queue, in the order of their arrival.
template <typename T>
class QueueingMessageHandler : public MessageHandler<T> {
  public:
    QueueingMessageHandler(TaskQueue& taskQueue, unsigned queueMask)
        : taskQueue_(taskQueue), queueMask_(queueMask) {}

    bool ForwardMsg(std::unique_ptr<T> message) override {
        if (!Queues(Message::IsResponse(*message) ? QueueResponses : QueueRequests))
            return MessageHandler<T>::ForwardMsg(std::move(message));
        taskQueue_.EnqueueNotification(taskQueue_.Now(), [this, message = std::move(message)]() mutable {
            MessageHandler<T>::ForwardMsg(std::move(message));
        });
        return true;
    }

  protected:
    bool Queues(QueueMask kind) const { return (queueMask_ & kind) != 0; }
    TaskQueue& task_queue() { return taskQueue_; }

  private:
    TaskQueue& taskQueue_;
    const unsigned queueMask_;
};

}  // namespace KXP
