// A gate in the chain: holds messages until the plug-in is ready for them, and again when it stops.
#pragma once

#include <deque>
#include <memory>

#include "common/message/MessageHandler.h"

namespace KXP {

class InitQueue : public MessageHandler<JSONMessage> {
  public:
    // Passes the message on, or keeps it. Any thread.
    bool SendMsg(std::unique_ptr<JSONMessage> message) override EXCLUDES(queueMutex_, inFlightMutex_);

    // Passes on what was kept, oldest first, and then opens the gate.
    void StartForwardingMessages() EXCLUDES(queueMutex_, inFlightMutex_);

    // Closes the gate and waits for forwards in progress. Not from inside a forward.
    void StopForwardingMessages() EXCLUDES(queueMutex_, inFlightMutex_);

    // Closes the gate although a forward that is stuck may be in progress.
    void Close() EXCLUDES(queueMutex_, inFlightMutex_);

    // Passes on the answers that are kept, oldest first, and drops everything else that is.
    void DeliverAnswers() EXCLUDES(queueMutex_, inFlightMutex_);

  private:
    class InFlight;

    void ForwardOrLog(std::unique_ptr<JSONMessage> message) EXCLUDES(queueMutex_, inFlightMutex_);

    std::unique_ptr<JSONMessage> TakeOldest() REQUIRES(queueMutex_);

    OuterMutex queueMutex_ ACQUIRED_BEFORE(inFlightMutex_);
    bool readyToForward_ GUARDED_BY(queueMutex_) = false;
    std::deque<std::unique_ptr<JSONMessage>> held_ GUARDED_BY(queueMutex_);  // newest in front

    Mutex inFlightMutex_;
    CondVar inFlightChanged_;
    int inFlightCount_ GUARDED_BY(inFlightMutex_) = 0;
};

}  // namespace KXP
