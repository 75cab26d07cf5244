// The requests of all pages on their way to the library: some at a time, since each may take a thread there.
#pragma once

#include <deque>
#include <functional>
#include <list>
#include <string>
#include <vector>

#include "gallery-host/page/Library.h"
#include "gallery-host/page/PageBus.h"

namespace host::page {

// For the thread of the session.
class PageRequests {
  public:
    static constexpr size_t kAtOnce = 16;
    static constexpr size_t kAtOncePerSocket = 8;

    struct Asker {
        SocketId socket;
        std::string id;  // the page's
    };
    using Askers = std::vector<Asker>;
    // With the answer, or with null and the reason for the refusal.
    using Done = std::function<void(const Askers& askers, KXP::Document* answer, const std::string& refusal)>;

    PageRequests(Library& library, Done done) : library_(library), done_(std::move(done)) {}

    void Add(Asker asker, const std::string& method, const KXP::Value& payload);
    // Forgets what a closed socket asked for and was not sent yet.
    void Drop(SocketId socket);
    // Sends what may be sent. Throws Failure as Session::Send does.
    void Advance();

  private:
    // Equal requests that only read are one, as long as it was not sent: what a page asks for must be at
    // least as new as its question.
    struct Request {
        std::string method;
        std::string payload;
        Askers askers;

        bool Equals(const Request& other) const { return method == other.method && payload == other.payload; }
    };
    using Running = std::list<Request>;

    bool MayRun(const Request& request) const;
    void Send(Request request);

    Library& library_;
    const Done done_;
    std::deque<Request> waiting_;
    Running running_;
};

}  // namespace host::page
