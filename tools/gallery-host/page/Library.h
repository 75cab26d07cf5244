// Requests to the plug-in whose answers come later.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "common/json/Json.h"
#include "gallery-host/session/Session.h"

namespace host::page {

// For the thread of the session.
class Library {
  public:
    // With the answer, or with null and the reason why the plug-in refused the request.
    using Done = std::function<void(KXP::Document* answer, const std::string& refusal)>;

    explicit Library(Session& session) : session_(session) {}

    // `done` may come before the return. Throws Failure as Session::Send does.
    void Ask(const std::string& method, const KXP::Value& payload, Done done);
    // Hands over the plug-in's message if it answers a request.
    void Take(KXP::Document& message);

  private:
    Session& session_;
    std::map<std::string, Done> asked_;  // by identifier
};

}  // namespace host::page
