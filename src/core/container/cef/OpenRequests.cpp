#include "core/container/cef/OpenRequests.h"

#include <list>
#include <utility>

#include "CobalixUtil.h"
#include "base/SlabMemory.h"
#include "common/message/Message.h"
#include "common/threads/Mutex.h"
#include "core/container/cef/PreparedAnswer.h"
#include "core/container/cef/ZvCefPlugin.h"

using KXP::MutexLock;

class OpenRequests::State {
  public:
    struct Entry {
        PreparedAnswer answer;
        ZvCefPluginNotification_t notification;
        OwedAnswer* owner;
    };
    // Of one entry, or empty. Moved from list to list, which takes no memory.
    using Entries = std::list<Entry, KXP::SlabAllocator<Entry>>;

    explicit State(const ContainerCallback& container) : container_(container) {}

    const ContainerCallback& container() const { return container_; }

    Entries::iterator Add(Entries entry) EXCLUDES(mutex_) {
        const MutexLock lock(mutex_);
        open_.splice(open_.begin(), entry);
        return open_.begin();
    }
    // The entry, if nobody has taken it yet.
    Entries Take(OwedAnswer& owner) EXCLUDES(mutex_);
    // The same for a request that was lost, together with its answer.
    void AnswerLost(OwedAnswer& owner) EXCLUDES(mutex_);
    void BeginEnd(bool answer) EXCLUDES(mutex_) {
        const MutexLock lock(mutex_);
        reason_ = LostBy::End;
        silent_ = !answer;
    }
    void End() EXCLUDES(mutex_);

  private:
    Entries TakeLocked(OwedAnswer& owner) REQUIRES(mutex_);
    void Send(Entries entry) EXCLUDES(mutex_);

    const ContainerCallback& container_;
    KXP::Mutex mutex_;
    KXP::CondVar sent_;
    Entries open_ GUARDED_BY(mutex_);
    LostBy reason_ GUARDED_BY(mutex_) = LostBy::Memory;
    bool silent_ GUARDED_BY(mutex_) = false;
    int sending_ GUARDED_BY(mutex_) = 0;
};

class OpenRequests::OwedAnswer : public KXP::IOwedAnswer {
  public:
    OwedAnswer(std::shared_ptr<State> state, const KXP::JSONMessage& request,
               ZvCefPluginNotification_t notification)
        : state_(std::move(state)) {
        State::Entries entry;
        entry.push_back({PreparedAnswer(request), notification, this});
        entry_ = state_->Add(std::move(entry));
    }
    ~OwedAnswer() override { state_->AnswerLost(*this); }
    OwedAnswer(const OwedAnswer&) = delete;
    OwedAnswer& operator=(const OwedAnswer&) = delete;

    bool Settle() override { return !state_->Take(*this).empty(); }

  private:
    friend class State;

    const std::shared_ptr<State> state_;
    // Guarded by the state's mutex.
    State::Entries::iterator entry_;
    bool taken_ = false;
};

OpenRequests::State::Entries OpenRequests::State::Take(OwedAnswer& owner) {
    const MutexLock lock(mutex_);
    return TakeLocked(owner);
}

OpenRequests::State::Entries OpenRequests::State::TakeLocked(OwedAnswer& owner) {
    Entries taken;
    if (!std::exchange(owner.taken_, true)) taken.splice(taken.begin(), open_, owner.entry_);
    return taken;
}

void OpenRequests::State::AnswerLost(OwedAnswer& owner) {
    Entries lost;
    {
        const MutexLock lock(mutex_);
        lost = TakeLocked(owner);
        if (lost.empty() || silent_) return;
        ++sending_;
    }
    Send(std::move(lost));
}

void OpenRequests::State::Send(Entries entry) {
    LostBy reason = LostBy::Memory;
    {
        const MutexLock lock(mutex_);
        reason = reason_;
    }
    KXP_LOG(KXP::LogFailure, "A request was lost because %s, and is answered as failed",
            reason == LostBy::Memory ? "memory is short" : "the plug-in ends");
    container_.Call(entry.front().notification, entry.front().answer.Complete(reason));
    // Notified under the lock: End may return, and this object go, as soon as it is free.
    const MutexLock lock(mutex_);
    --sending_;
    sent_.NotifyAll();
}

// Oldest first. What the container requests while it is called dies, or this might never end.
void OpenRequests::State::End() {
    size_t left = 0;
    {
        const MutexLock lock(mutex_);
        left = silent_ ? 0 : open_.size();
    }
    for (; left > 0; --left) {
        Entries oldest;
        {
            const MutexLock lock(mutex_);
            if (open_.empty()) break;
            oldest = TakeLocked(*open_.back().owner);
            ++sending_;
        }
        Send(std::move(oldest));
    }
    const MutexLock lock(mutex_);
    silent_ = true;
    while (sending_ > 0)
        sent_.Wait(mutex_);
}

OpenRequests::OpenRequests(const ContainerCallback& container) : state_(std::make_shared<State>(container)) {}

void OpenRequests::Add(KXP::JSONMessage& request) {
    if (KXP::Message::IsResponse(request) || KXP::Message::IsPersistent(request) ||
        KXP::Message::IsAnnouncement(request.method()))
        return;
    Attach(request, ZvCefPluginJsonMessage);
}

void OpenRequests::AddCommand(KXP::JSONMessage& command) {
    Attach(command, ZvCefPluginCommandFailed);
}

void OpenRequests::Attach(KXP::JSONMessage& message, ZvCefPluginNotification_t notification) {
    message.set_owed_answer(
        std::allocate_shared<OwedAnswer>(KXP::SlabAllocator<OwedAnswer>(), state_, message, notification));
}

void OpenRequests::AnswerUnread(const char* json) {
    UnreadAnswer answer;
    const char* const text = json ? answer.Make(json) : nullptr;
    KXP_LOG(KXP::LogFailure, "No memory to read a message%s", text ? "; it is answered as failed" : "");
    if (text) state_->container().Call(ZvCefPluginJsonMessage, text);
}

void OpenRequests::BeginEnd(bool answer) {
    state_->BeginEnd(answer);
}

void OpenRequests::End() {
    state_->End();
}
