// Lets programs talk to the plug-in in lines of JSON.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "gallery-host/base/LineSplitter.h"
#include "gallery-host/base/Output.h"
#include "gallery-host/recording/Recorder.h"
#include "gallery-host/session/Session.h"
#include "gallery-host/session/Subscriptions.h"

namespace host {

// Each line of standard input is an envelope; fields that it lacks are filled in. Each message of the plug-in
// is a line of standard output. A line that is refused is answered with
//   {"error":{"line":3,"text":"..."},"reference_uniqueid":"the line's own, if it had one"}
// and the server goes on. A line {"command":"stop"}, "start" or "restart" is a lifecycle command for the
// plug-in; it is written back when the plug-in has carried it out.
//
// The server subscribes to each notification once. It writes a notification once for each subscription of a
// sender, with its identifier, or once with the method's name if nobody subscribed.
class Server {
  public:
    // Takes a line; false once nobody reads.
    using Sink = std::function<bool(const KXP::Value& line)>;

    // `recorder` may be null.
    Server(Session& session, Sink sink, Recorder* recorder);

    // Runs until standard input ends and all requests are answered, or until the output is closed. Throws
    // Failure, for example when answers do not come in time.
    void Run();

    // The same in steps, for lines from elsewhere: messages come while the result of Begin lives.
    [[nodiscard]] Session::Listening Begin();
    void Take(const KXP::Document& line, size_t lineNumber);
    void AwaitAnswers();

  private:
    struct Subscriber {
        std::string system;
        std::string module;
        std::string id;
    };

    void ReadLines();
    void OnLine(const LineSplitter::Line& line);
    // `ownId` is the sender's identifier, or empty for one that was filled in.
    void Take(const KXP::Document& line, size_t lineNumber, const std::string& ownId);
    void TakeCommand(const KXP::Document& line, size_t lineNumber);
    // The reason if it fails.
    std::optional<std::string> RunCommand(const std::string& command);
    // The plug-in's error text if it refuses the envelope.
    std::optional<std::string> Forward(const KXP::Document& envelope);
    bool TakeSubscription(const KXP::Document& envelope);
    void Refuse(size_t lineNumber, const std::string& text, const std::string& id);
    void OnMessage(KXP::Document& message);
    void FanOut(KXP::Document& notification);
    void Write(const KXP::Value& line);

    Session& session_;
    const Sink sink_;
    Recorder* const recorder_;
    LineSplitter lines_;
    bool open_ = true;  // the output
    std::multiset<std::string> outstanding_;
    Subscriptions subscriptions_;
    std::map<std::string, std::vector<Subscriber>> subscribers_;
};

// With lines of standard output.
void RunServe(Session& session, Output& output, Recorder* recorder);

}  // namespace host
