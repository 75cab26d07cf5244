#include "tests/unit/cobalix-util/CloudServer.h"

#include <chrono>
#include <condition_variable>
#include <list>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string_view>
#include <thread>

#include <arpa/inet.h>
#include <sys/socket.h>

#include "base/FileDescriptor.h"

namespace {

constexpr std::chrono::seconds kPatience(20);
constexpr std::chrono::milliseconds kTrickle(5);

// Waits until the client goes or the server shuts the connection.
void AwaitEnd(int connection) {
    char byte = 0;
    while (recv(connection, &byte, 1, 0) > 0) {
    }
}

bool Send(int connection, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) return false;
        bytes.remove_prefix(static_cast<size_t>(sent));
    }
    return true;
}

// Empty when the client goes before its request is whole.
std::string ReadTarget(int connection) {
    std::string request;
    char block[1024];
    while (request.find("\r\n\r\n") == std::string::npos) {
        const ssize_t got = recv(connection, block, sizeof block, 0);
        if (got <= 0) return "";
        request.append(block, static_cast<size_t>(got));
    }
    const size_t from = request.find(' ') + 1;
    return request.substr(from, request.find(' ', from) - from);
}

void Respond(int connection, const CloudAnswer& answer) {
    if (answer.manner == CloudAnswer::kSilent) return AwaitEnd(connection);
    const bool endless = answer.manner == CloudAnswer::kEndless || answer.manner == CloudAnswer::kTrickling;
    std::string head = "HTTP/1.1 " + std::to_string(answer.status) + " Answer\r\nConnection: close\r\n";
    if (!endless) head += "Content-Length: " + std::to_string(answer.body.size()) + "\r\n";
    if (!answer.location.empty()) head += "Location: " + answer.location + "\r\n";
    const size_t part = answer.manner == CloudAnswer::kWell ? answer.body.size() : answer.body.size() / 2;
    Send(connection, head + "\r\n" + (endless ? "" : answer.body.substr(0, part)));
    if (answer.manner == CloudAnswer::kStalling) AwaitEnd(connection);
    while (answer.manner == CloudAnswer::kEndless && Send(connection, answer.body)) {
    }
    while (answer.manner == CloudAnswer::kTrickling && Send(connection, "x"))
        std::this_thread::sleep_for(kTrickle);
}

}  // namespace

class CloudServer::State {
  public:
    State() : listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        socklen_t size = sizeof address_;
        address_.sin_family = AF_INET;
        address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto* address = reinterpret_cast<sockaddr*>(&address_);
        if (bind(listener_.get(), address, size) != 0 || listen(listener_.get(), SOMAXCONN) != 0 ||
            getsockname(listener_.get(), address, &size) != 0)
            throw std::runtime_error("no server");
        accepting_ = std::thread([this] { Accept(); });
    }
    ~State() {
        shutdown(listener_.get(), SHUT_RDWR);
        accepting_.join();
        for (Connection& each : connections_)
            shutdown(each.socket.get(), SHUT_RDWR);
        for (Connection& each : connections_)
            each.thread.join();
    }

    int port() const { return ntohs(address_.sin_port); }

    void Serve(const std::string& target, CloudAnswer answer) {
        std::lock_guard<std::mutex> lock(mutex_);
        answers_[target] = std::move(answer);
    }
    int Requests() {
        std::lock_guard<std::mutex> lock(mutex_);
        return requests_;
    }
    bool WaitForConnections(int count) {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, kPatience, [&] { return accepted_ >= count; });
    }

  private:
    struct Connection {
        KXP::FileDescriptor socket;
        std::thread thread;
    };

    void Accept() {
        for (;;) {
            KXP::FileDescriptor socket(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
            if (!socket.IsOpen()) return;
            Connection& connection = connections_.emplace_back(Connection{std::move(socket), {}});
            connection.thread = std::thread([this, fd = connection.socket.get()] { Talk(fd); });
            {
                std::lock_guard<std::mutex> lock(mutex_);
                ++accepted_;
            }
            changed_.notify_all();
        }
    }

    void Talk(int connection) {
        const std::string target = ReadTarget(connection);
        if (!target.empty()) Respond(connection, AnswerTo(target));
        shutdown(connection, SHUT_RDWR);
    }

    CloudAnswer AnswerTo(const std::string& target) {
        std::lock_guard<std::mutex> lock(mutex_);
        ++requests_;
        const auto found = answers_.find(target);
        return found == answers_.end() ? CloudAnswer{"none", CloudAnswer::kWell, 404, ""} : found->second;
    }

    const KXP::FileDescriptor listener_;
    sockaddr_in address_{};
    std::list<Connection> connections_;  // the accepting thread's, and after its end the destructor's
    std::mutex mutex_;                   // guards what follows
    std::condition_variable changed_;
    std::map<std::string, CloudAnswer> answers_;
    int requests_ = 0;
    int accepted_ = 0;
    std::thread accepting_;
};

CloudServer::CloudServer() : state_(std::make_unique<State>()) {}
CloudServer::~CloudServer() = default;

std::string CloudServer::Url(const std::string& target, const char* scheme) const {
    return std::string(scheme) + "://127.0.0.1:" + std::to_string(state_->port()) + target;
}

void CloudServer::Serve(const std::string& target, CloudAnswer answer) {
    state_->Serve(target, std::move(answer));
}

int CloudServer::Requests() const {
    return state_->Requests();
}

bool CloudServer::WaitForConnections(int count) const {
    return state_->WaitForConnections(count);
}
