// An HTTP server on loopback whose answers a test chooses.
#pragma once

#include <memory>
#include <string>

struct CloudAnswer {
    enum Manner {
        kWell,
        kShort,     // half of the body, then the end
        kStalling,  // half of the body, then nothing
        kSilent,    // nothing at all
        kEndless,   // the body over and over, with no length
        kTrickling  // a byte of a body without end every few milliseconds
    };
    std::string body = "";
    Manner manner = kWell;
    unsigned status = 200;
    std::string location = "";
};

class CloudServer {
  public:
    CloudServer();
    ~CloudServer();

    // "http://127.0.0.1:<port>" and the target; "https" instead for a client that speaks to the wrong door.
    std::string Url(const std::string& target = "", const char* scheme = "http") const;

    // Sets the answer to a target; others get a 404.
    void Serve(const std::string& target, CloudAnswer answer);

    // Requests so far, and a wait for that many connections, with a bound.
    int Requests() const;
    bool WaitForConnections(int count) const;

  private:
    class State;
    std::unique_ptr<State> state_;
};
