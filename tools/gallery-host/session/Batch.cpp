#include "gallery-host/session/Batch.h"

#include <algorithm>
#include <deque>
#include <optional>
#include <utility>

#include "gallery-host/message/Envelope.h"

namespace host {
namespace {

using std::chrono::steady_clock;

struct Slot {
    std::string id;  // empty when nothing is asked
    const char* method = nullptr;
    Deadline deadline;
    std::chrono::milliseconds patience{0};
    std::optional<KXP::Document> answer;

    bool Waits() const { return !id.empty() && !answer; }
};

class Batch {
  public:
    explicit Batch(Session& session)
        : session_(session), listening_(session.Listen([this](KXP::Document& message, auto) {
              if (!IsPersistent(message)) OnResponse(message);
          })) {}

    void Add(const BatchRequest& request) {
        Slot& slot = slots_.emplace_back();
        if (!request.method) return;
        const KXP::Document envelope = MakeRequest(request.method, request.payload);
        slot.id = Text(envelope, "uniqueid");
        slot.method = request.method;
        slot.patience = session_.options().timeout + request.extra;
        slot.deadline = steady_clock::now() + slot.patience;
        const std::optional<std::string> refusal = session_.Send(envelope);
        if (refusal) throw Failure(kExitFailed, "the plug-in refused the request: " + *refusal);
    }

    size_t size() const { return slots_.size(); }
    const Slot& Front() const { return slots_.front(); }
    void Pop() { slots_.pop_front(); }

    void Wait(Deadline until) {
        for (const Slot& slot : slots_)
            if (slot.Waits()) until = std::min(until, slot.deadline);
        session_.Pump(until);
        for (const Slot& slot : slots_)
            if (slot.Waits() && steady_clock::now() >= slot.deadline)
                throw Failure(kExitNoAnswer, std::string("no answer to ") + slot.method + " within " +
                                                 Seconds(slot.patience));
    }

  private:
    void OnResponse(KXP::Document& message) {
        const std::string id = Text(message, "reference_uniqueid");
        const auto slot = std::find_if(slots_.begin(), slots_.end(),
                                       [&](const Slot& one) { return one.Waits() && one.id == id; });
        if (slot != slots_.end()) slot->answer = std::move(message);
    }

    Session& session_;
    std::deque<Slot> slots_;
    const Session::Listening listening_;  // last: it fills the slots
};

}  // namespace

void AskInOrder(Session& session, size_t count, const std::function<BatchRequest(size_t index)>& make,
                const std::function<void(size_t index, const KXP::Document* answer)>& take,
                Progress& progress, size_t atOnce) {
    Batch batch(session);
    size_t sent = 0;
    for (size_t taken = 0; taken < count;) {
        for (; sent < count && batch.size() < atOnce; ++sent)
            batch.Add(make(sent));
        if (batch.Front().Waits()) {
            progress.Draw();
            batch.Wait(progress.due());
            continue;
        }
        take(taken++, batch.Front().answer ? &*batch.Front().answer : nullptr);
        batch.Pop();
        progress.Advance();
    }
}

}  // namespace host
