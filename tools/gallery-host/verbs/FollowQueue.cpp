#include "gallery-host/verbs/FollowQueue.h"

#include <algorithm>

namespace host {

void FollowQueue::Note(const std::string& path, Deadline now) {
    if (const std::optional<FileState> state = look_(path)) waiting_[path] = {*state, now};
}

std::vector<std::string> FollowQueue::TakeFinished(Deadline now) {
    std::vector<std::string> finished;
    for (auto at = waiting_.begin(); at != waiting_.end();) {
        Waiting& waiting = at->second;
        if (now < waiting.since + quiet_) {
            ++at;
            continue;
        }
        const std::optional<FileState> state = look_(at->first);
        if (state && (state->isOpen || !(*state == waiting.state))) {
            waiting = {*state, now};
            ++at;
            continue;
        }
        if (state) finished.push_back(at->first);
        at = waiting_.erase(at);
    }
    return finished;
}

Deadline FollowQueue::due() const {
    Deadline first = Deadline::max();
    for (const auto& [path, waiting] : waiting_)
        first = std::min(first, waiting.since + quiet_);
    return first;
}

}  // namespace host
