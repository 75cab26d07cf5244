#include "common/message/InitQueue.h"

#include <exception>
#include <optional>

namespace KXP {

// Counts one forward, also when it throws: a count that is never lowered would let Stop wait for ever.
class InitQueue::InFlight {
  public:
    explicit InFlight(InitQueue& queue) : queue_(queue) { Add(1); }
    ~InFlight() { Add(-1); }
    InFlight(const InFlight&) = delete;
    InFlight& operator=(const InFlight&) = delete;

  private:
    void Add(int change) {
        {
            MutexLock lock(queue_.inFlightMutex_);
            queue_.inFlightCount_ += change;
        }
        queue_.inFlightChanged_.NotifyAll();
    }

    InitQueue& queue_;
};

bool InitQueue::SendMsg(std::unique_ptr<JSONMessage> message) {
    std::optional<InFlight> inFlight;
    {
        MutexLock lock(queueMutex_);
        if (readyToForward_) {
            inFlight.emplace(*this);
        } else {
            held_.push_front(std::move(message));
        }
    }
    if (!inFlight) {
        KXP_LOG(LogDetail, "Plugin is not yet ready to receive messages. Keeping message in queue");
        return true;
    }
    return ForwardMsg(std::move(message));
}

std::unique_ptr<JSONMessage> InitQueue::TakeOldest() {
    if (held_.empty()) return nullptr;
    auto oldest = std::move(held_.back());
    held_.pop_back();
    return oldest;
}

void InitQueue::StartForwardingMessages() {
    KXP_LOG(LogTrace, "Unblocking message queue");
    {
        const InFlight draining(*this);
        for (;;) {
            std::unique_ptr<JSONMessage> message;
            {
                // Messages that arrive meanwhile are kept after the others, so the gate opens only once none
                // is left.
                MutexLock lock(queueMutex_);
                message = TakeOldest();
                readyToForward_ = !message;
                if (readyToForward_) held_.shrink_to_fit();
            }
            if (!message) break;
            ForwardOrLog(std::move(message));
        }
    }
    KXP_LOG(LogTrace, "Plugin is ready to send or receive messages");
}

void InitQueue::ForwardOrLog(std::unique_ptr<JSONMessage> message) {
    KXP_LOG(LogDetail, "Forwarding queued message");
    try {
        ForwardMsg(std::move(message));
    } catch (const std::exception& error) {
        KXP_LOG(LogFailure, "Could not forward queued message: %s", error.what());
    } catch (...) {
        KXP_LOG(LogFailure, "Could not forward queued message");
    }
}

void InitQueue::DeliverAnswers() {
    for (;;) {
        std::unique_ptr<JSONMessage> message;
        {
            MutexLock lock(queueMutex_);
            message = TakeOldest();
        }
        if (!message) return;
        if (message->owed_answer() && Message::IsResponse(*message)) ForwardOrLog(std::move(message));
    }
}

void InitQueue::Close() {
    MutexLock lock(queueMutex_);
    readyToForward_ = false;
}

void InitQueue::StopForwardingMessages() {
    KXP_LOG(LogTrace, "Blocking message queue");
    Close();
    // Waiting without the queue's mutex lets a forward in progress send again: that message is kept.
    KXP_LOG(LogTrace, "Waiting for messages to finish processing");
    {
        MutexLock lock(inFlightMutex_);
        while (inFlightCount_ > 0)
            inFlightChanged_.Wait(inFlightMutex_);
    }
    KXP_LOG(LogTrace, "Plugin is no longer ready to send or receive messages");
}

}  // namespace KXP
