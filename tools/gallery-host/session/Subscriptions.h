// This program's subscriptions to the notifications of the gallery.
#pragma once

#include <map>
#include <string>

#include "gallery-host/session/Session.h"

namespace host {

// The plug-in never drops a subscription and sends a copy for each, so there is one for each notification.
class Subscriptions {
  public:
    // Reports what the plug-in refuses. Throws Failure as Session::Send does.
    void Make(Session& session);

    bool Has(const std::string& method) const { return ids_.count(method) != 0; }
    // Whether the message is a notification for one of these.
    bool Match(const KXP::Document& message) const;

  private:
    std::map<std::string, std::string> ids_;  // our identifier by method
};

}  // namespace host
