// The requests and commands of the container that are not answered yet. Each gets exactly one answer: that of
// the plug-in or, if it is lost for want of memory or is still open when the instance ends, one of its own.
#pragma once

#include <memory>

#include "common/message/JSONMessage.h"
#include "core/container/cef/ContainerCallback.h"

// Any thread. Answers are sent with no lock held, on the thread that lost the request or calls End.
class OpenRequests {
  public:
    // `container` lives until End has returned.
    explicit OpenRequests(const ContainerCallback& container);

    // Attaches to a message the answer that it is owed, if any. Throws std::bad_alloc.
    void Add(KXP::JSONMessage& request);
    // The same for a command of the life cycle, whose failure is notified.
    void AddCommand(KXP::JSONMessage& command);
    // Answers a request that came when there was no memory to read or to add it.
    void AnswerUnread(const char* json);

    // From now on a request that is lost was aborted by the end; without `answer` it dies without one.
    void BeginEnd(bool answer);
    // Answers those that are open. Afterwards the container is not called, and further requests die.
    void End();

  private:
    class State;
    class OwedAnswer;

    void Attach(KXP::JSONMessage& message, ZvCefPluginNotification_t notification);

    // Shared with the requests, which abandoned tasks may keep.
    const std::shared_ptr<State> state_;
};
