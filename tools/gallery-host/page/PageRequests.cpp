#include "gallery-host/page/PageRequests.h"

#include <algorithm>
#include <utility>

#include "gallery-host/message/Envelope.h"
#include "gallery-host/page/PageMethods.h"

namespace host::page {

void PageRequests::Add(Asker asker, const std::string& method, const KXP::Value& payload) {
    Request request{method, ToText(payload), {}};
    if (OnlyReads(method))
        for (Request& one : waiting_)
            if (one.Equals(request)) {
                one.askers.push_back(std::move(asker));
                return;
            }
    request.askers.push_back(std::move(asker));
    waiting_.push_back(std::move(request));
}

void PageRequests::Drop(SocketId socket) {
    for (Request& request : waiting_) {
        Askers& askers = request.askers;
        const auto of = [socket](const Asker& asker) { return asker.socket == socket; };
        askers.erase(std::remove_if(askers.begin(), askers.end(), of), askers.end());
    }
    const auto unasked = [](const Request& request) { return request.askers.empty(); };
    waiting_.erase(std::remove_if(waiting_.begin(), waiting_.end(), unasked), waiting_.end());
}

void PageRequests::Advance() {
    while (running_.size() < kAtOnce) {
        const auto next = std::find_if(waiting_.begin(), waiting_.end(),
                                       [this](const Request& one) { return MayRun(one); });
        if (next == waiting_.end()) return;
        Request request = std::move(*next);
        waiting_.erase(next);
        Send(std::move(request));
    }
}

bool PageRequests::MayRun(const Request& request) const {
    size_t ofSocket = 0;
    for (const Request& one : running_) {
        if (OnlyReads(request.method) && one.Equals(request)) return false;
        if (one.askers.front().socket == request.askers.front().socket) ++ofSocket;
    }
    return ofSocket < kAtOncePerSocket;
}

void PageRequests::Send(Request request) {
    running_.push_front(std::move(request));
    const Running::iterator running = running_.begin();
    KXP::Document payload;
    std::string error;
    if (!ParseObject(running->payload, payload, error)) payload.SetObject();
    const std::string method = running->method;
    library_.Ask(method, payload, [this, running](KXP::Document* answer, const std::string& refusal) {
        const Askers askers = std::move(running->askers);
        running_.erase(running);
        done_(askers, answer, refusal);
    });
}

}  // namespace host::page
