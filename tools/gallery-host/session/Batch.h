// Sends many requests, several at a time, and returns their answers in order.
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "common/json/Json.h"
#include "gallery-host/output/Progress.h"
#include "gallery-host/session/Session.h"

namespace host {

struct BatchRequest {
    const char* method = nullptr;  // null: no request
    KXP::Document payload;
    std::chrono::milliseconds extra{0};  // added to the session's timeout
};

// Enough to keep the plug-in busy; more would only compete for the disk.
constexpr size_t kAtOnce = 4;

// Calls `make` for each request from 0 to count - 1 and hands the answers, whatever their results, to `take`
// in this order; without a request, `take` receives null in its turn. Throws Failure as Session::Ask does;
// requests that were sent may then still be carried out.
void AskInOrder(Session& session, size_t count, const std::function<BatchRequest(size_t index)>& make,
                const std::function<void(size_t index, const KXP::Document* answer)>& take,
                Progress& progress, size_t atOnce = kAtOnce);

}  // namespace host
