#include "gallery-host/debug/Timers.h"

#include <cstdio>

#include <sys/stat.h>

#include "base/FileCalls.h"
#include "gallery-host/base/Output.h"
#include "gallery-host/message/Envelope.h"

namespace host {

void Timers::OnSent(const KXP::Document& envelope) {
    if (!shown_ || IsPersistent(envelope)) return;
    requests_[Text(envelope, "uniqueid")] = {Text(envelope, "method"), Clock::now()};
}

void Timers::OnReceived(const KXP::Document& message, Clock::time_point when) {
    if (!shown_) return;
    if (IsNotification(message)) {
        PrintDelay(message, when);
        return;
    }
    const auto request = requests_.find(Text(message, "reference_uniqueid"));
    if (request == requests_.end()) return;
    Print(request->second.method, when - request->second.sent);
    requests_.erase(request);
}

void Timers::PrintDelay(const KXP::Document& notification, Clock::time_point when) const {
    const KXP::Value* saved = Find(Payload(notification), "captureSaved");
    const KXP::Value* ugc = saved ? Find(*saved, "ugc") : nullptr;
    const std::string path = ugc ? Text(*ugc, "path") : "";
    struct stat status {};
    if (path.empty() || stat(path.c_str(), &status) != 0) return;
    // A rename into place changes this time and not that of the content.
    const timespec time = KXP::Platform::ChangedTime(status);
    const auto changed = std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    Print("notified of " + path + " after its last change",
          when.time_since_epoch() - std::chrono::duration_cast<Clock::duration>(changed));
}

void Timers::Print(const std::string& what, Clock::duration took) const {
    if (!shown_) return;
    char line[40];
    std::snprintf(line, sizeof line, "timer %9.1f ms  ",
                  std::chrono::duration<double, std::milli>(took).count());
    SayRaw(line + what);
}

}  // namespace host
