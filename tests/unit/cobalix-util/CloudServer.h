// An HTTP server on loopback whose answers a test chooses. It serves one connection after the other.
#pragma once

#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>

#include <arpa/inet.h>
#include <sys/socket.h>

#include "base/FileDescriptor.h"
#include "tests/support/Counter.h"

class CloudServer {
  public:
    enum Manner {
        kWell,
        kShort,     // half of the body, then the end
        kStalling,  // half of the body, then nothing
        kEndless    // the body over and over, with no length
    };
    struct Answer {
        std::string body = "";
        Manner manner = kWell;
        unsigned status = 200;
        std::string location = "";
    };

    CloudServer() : listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in ours{};
        ours.sin_family = AF_INET;
        ours.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof ours;
        auto* address = reinterpret_cast<sockaddr*>(&ours);
        if (bind(listener_.get(), address, size) != 0 || listen(listener_.get(), SOMAXCONN) != 0 ||
            getsockname(listener_.get(), address, &size) != 0)
            throw std::runtime_error("no server");
        host_ = "127.0.0.1:" + std::to_string(ntohs(ours.sin_port));
        thread_ = std::thread([this] { Run(); });
    }
    ~CloudServer() {
        shutdown(listener_.get(), SHUT_RDWR);
        thread_.join();
    }

    // With "https", a client waits in vain for its greeting to be returned.
    std::string Url(const std::string& target = "", const char* scheme = "http") const {
        return scheme + ("://" + host_) + target;
    }

    // Sets the answer to a target; others get a 404.
    void Serve(const std::string& target, Answer answer) {
        std::lock_guard<std::mutex> lock(mutex_);
        answers_[target] = std::move(answer);
    }

    Counter connections, requests;

  private:
    void Run() {
        for (;;) {
            const KXP::FileDescriptor client(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
            if (!client.IsOpen()) return;
            connections.Add();
            std::string request;
            while (request.find("\r\n\r\n") == std::string::npos && Receive(client.get(), request)) {
            }
            const size_t target = request.find(' ') + 1;
            if (target > 0) Respond(client.get(), request.substr(target, request.find(' ', target) - target));
        }
    }

    void Respond(int client, const std::string& target) {
        requests.Add();
        Answer answer{"none", kWell, 404};
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (const auto found = answers_.find(target); found != answers_.end()) answer = found->second;
        }
        std::string text = "HTTP/1.1 " + std::to_string(answer.status) + " Answer\r\nConnection: close\r\n";
        if (answer.manner != kEndless)
            text += "Content-Length: " + std::to_string(answer.body.size()) + "\r\n";
        if (!answer.location.empty()) text += "Location: " + answer.location + "\r\n";
        const bool isWhole = answer.manner == kWell || answer.manner == kEndless;
        Send(client, text + "\r\n" + answer.body.substr(0, answer.body.size() / (isWhole ? 1 : 2)));
        while (answer.manner == kEndless && Send(client, answer.body)) {
        }
        while (answer.manner == kStalling && Receive(client, text)) {
        }
    }

    // False once the client is gone.
    static bool Receive(int client, std::string& text) {
        char block[1024];
        const ssize_t got = recv(client, block, sizeof block, 0);
        if (got > 0) text.append(block, static_cast<size_t>(got));
        return got > 0;
    }
    static bool Send(int client, std::string_view bytes) {
        while (!bytes.empty()) {
            const ssize_t sent = send(client, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (sent <= 0) return false;
            bytes.remove_prefix(static_cast<size_t>(sent));
        }
        return true;
    }

    const KXP::FileDescriptor listener_;
    std::string host_;
    std::mutex mutex_;
    std::map<std::string, Answer> answers_;  // guarded by mutex_
    std::thread thread_;
};
