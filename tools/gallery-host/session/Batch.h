// Requests about many things: some at once, their answers in order.
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "common/Json.h"
#include "gallery-host/output/Progress.h"
#include "gallery-host/session/Session.h"

namespace host {

struct BatchRequest {
    const char* method = nullptr;  // null: there is nothing to ask
    KXP::Document payload;
    std::chrono::milliseconds extra{0};  // what it may take beyond the session's timeout
};

// Enough to keep the plug-in at work; more would only compete for the disk.
constexpr size_t kAtOnce = 4;

// Asks `make` for each request from 0 to count - 1 and hands the answers, of whatever result, to `take` in
// this order; where there was nothing to ask, `take` gets null in its turn. Throws Failure as Session::Ask
// does, and then some that were sent may still be carried out.
void AskInOrder(Session& session, size_t count, const std::function<BatchRequest(size_t index)>& make,
                const std::function<void(size_t index, const KXP::Document* answer)>& take,
                Progress& progress, size_t atOnce = kAtOnce);

}  // namespace host
