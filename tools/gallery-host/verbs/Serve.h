// JSON lines in, JSON lines out: the way for programs to talk to the plug-in.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "gallery-host/base/LineSplitter.h"
#include "gallery-host/base/Output.h"
#include "gallery-host/session/Session.h"
#include "gallery-host/session/Subscriptions.h"

namespace host {

// Every line in is an envelope, or as much of one as the sender cares to give; the rest is filled in. Every
// message of the plug-in is a line out. A line that is refused gives
//   {"error":{"line":3,"text":"..."},"reference_uniqueid":"the line's own, if it had one"}
// and serving goes on.
//
// The plug-in gets one subscription for each notification, made here. A notification goes out once for each
// sender's subscription, under that one's identifier, or once under its method's name when nobody subscribed.
class Server {
  public:
    Server(Session& session, Output& output);

    // Until standard input ends and what was asked is answered, or nobody reads the output any more. Throws
    // Failure, for example when answers do not come in time.
    void Run();

  private:
    struct Subscriber {
        std::string system;
        std::string module;
        std::string id;
    };

    void ReadLines();
    void AwaitAnswers();
    void OnLine(const LineSplitter::Line& line);
    // The plug-in's words when it refuses the envelope.
    std::optional<std::string> Forward(const KXP::Document& envelope);
    bool TakeSubscription(const KXP::Document& envelope);
    void Refuse(size_t lineNumber, const std::string& text, const std::string& id);
    void OnMessage(KXP::Document& message);
    void FanOut(KXP::Document& notification);
    void Write(const KXP::Value& line);

    Session& session_;
    Output& output_;
    LineSplitter lines_;
    bool open_ = true;  // somebody reads the output
    std::multiset<std::string> outstanding_;
    Subscriptions subscriptions_;
    std::map<std::string, std::vector<Subscriber>> subscribers_;
};

}  // namespace host
