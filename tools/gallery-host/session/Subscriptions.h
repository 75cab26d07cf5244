// This program's subscriptions to the notifications of the gallery.
#pragma once

#include <map>
#include <string>

#include "gallery-host/session/Session.h"

namespace host {

// The plug-in keeps subscriptions for ever and sends a copy for each, so it gets one for each notification.
class Subscriptions {
  public:
    // Says what the plug-in refuses. Throws Failure as Session::Send does.
    void Make(Session& session);

    bool Has(const std::string& method) const { return ids_.count(method) != 0; }
    // The message is a notification that comes of one of these.
    bool Match(const KXP::Document& message) const;

  private:
    std::map<std::string, std::string> ids_;  // our identifier by method
};

}  // namespace host
