// A server with the fake plug-in behind it, and clients that need not behave.
#pragma once

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include "gallery-host/message/Envelope.h"
#include "gallery-host/page/LibraryBus.h"
#include "gallery-host/page/PageServer.h"
#include "tests/support/ScopedEnv.h"
#include "tests/support/TemporaryHome.h"

namespace host::page {

class RawClient {
  public:
    // 127.0.0.`last`
    explicit RawClient(uint16_t port, uint32_t last = 1) {
        const sockaddr_in place{AF_INET, htons(port), {htonl(0x7F000000 + last)}, {}};
        fd_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const int on = 1;
        setsockopt(fd_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        const timeval patience{20, 0};
        setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        connected_ = connect(fd_, reinterpret_cast<const sockaddr*>(&place), sizeof place) == 0;
    }
    ~RawClient() { Close(); }
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;

    bool connected() const { return connected_; }
    void Close() {
        if (fd_ >= 0) close(fd_);
        fd_ = -1;
    }
    void Send(const std::string& text) { (void)send(fd_, text.data(), text.size(), MSG_NOSIGNAL); }

    // False at the end. EXPECTs that it comes in time.
    bool ReadSome(std::string& into) {
        char bytes[65536];
        const ssize_t got = recv(fd_, bytes, sizeof bytes, 0);
        EXPECT_FALSE(got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) << "nothing came";
        if (got > 0) into.append(bytes, static_cast<size_t>(got));
        return got > 0;
    }
    // Ends early when there are so many bytes.
    std::string ReadToEnd(size_t enough = SIZE_MAX) {
        std::string all;
        while (all.size() < enough && ReadSome(all)) {
        }
        return all;
    }

  private:
    int fd_ = -1;
    bool connected_ = false;
};

inline bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// What follows `before` up to `end`.
inline std::string Between(const std::string& text, const std::string& before, const std::string& end) {
    const size_t at = std::min(text.find(before), text.size() - before.size()) + before.size();
    return text.substr(at, text.find(end, at) - at);
}

// A client for the WebSocket that knows frames and nothing of their limits.
class WebSocket : public RawClient {
  public:
    // `origin` may hold more lines of header; without one there is no such field.
    WebSocket(uint16_t port, const std::string& origin, const std::string& target = "/socket")
        : RawClient(port) {
        RawClient::Send("GET " + target + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port) +
                        "\r\nUpgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Version: 13\r\n"
                        "Sec-WebSocket-Extensions: permessage-deflate\r\n"
                        "Sec-WebSocket-Key: AAAAAAAAAAAAAAAAAAAAAA==\r\n" +
                        (origin.empty() ? "" : "Origin: " + origin + "\r\n") + "\r\n");
        while (head_.find("\r\n\r\n") == std::string::npos && ReadSome(head_)) {
        }
    }
    explicit WebSocket(uint16_t port) : WebSocket(port, "http://127.0.0.1:" + std::to_string(port)) {}

    const std::string& head() const { return head_; }

    // A whole message, masked with zeros.
    void Send(const std::string& text, char opcode = 1) {
        std::string frame{static_cast<char>(0x80 | opcode)};
        const size_t size = text.size();
        const int width = size < 126 ? 0 : size < 65536 ? 2 : 8;
        frame += static_cast<char>(0x80 | (width == 0 ? size : width == 2 ? 126 : 127));
        for (int i = width - 1; i >= 0; --i)
            frame += static_cast<char>(size >> (8 * i));
        RawClient::Send(frame + std::string(4, '\0') + text);
    }
    // The next message, "closed " with the code for one that closes; empty at the end.
    std::string Read() {
        if (!Fill(2)) return {};
        size_t size = static_cast<uint8_t>(in_[1]);
        size_t header = 2;
        if (size >= 126) {
            const size_t width = size == 126 ? 2 : 8;
            if (!Fill(header + width)) return {};
            size = 0;
            for (; header < 2 + width; ++header)
                size = size << 8 | static_cast<uint8_t>(in_[header]);
        }
        if (!Fill(header + size)) return {};
        const bool closes = (in_[0] & 15) == 8;
        const std::string text = in_.substr(header, size);
        in_.erase(0, header + size);
        if (!closes || size < 2) return text;
        return "closed " + std::to_string(static_cast<uint8_t>(text[0]) << 8 | static_cast<uint8_t>(text[1]));
    }
    // Sends the token and returns the answer.
    std::string Open(const std::string& token) {
        Send(R"({"token":")" + token + "\"}");
        return Read();
    }
    std::string Ask(const std::string& method, const std::string& payload) {
        Send(R"({"uniqueid":"ask","method":")" + method + R"(","payload":)" + payload + "}");
        return Read();
    }

  private:
    bool Fill(size_t size) {
        while (in_.size() < size)
            if (!ReadSome(in_)) return false;
        return true;
    }

    std::string head_;
    std::string in_;
};

class RunningPage {
  public:
    explicit RunningPage(const ServerLimits& limits = {}) {
        resources_.Write("index.html", "<title>Gallery</title>");
        resources_.Write("assets/app-1.js", "1");
        home_.folder().MakeFolder(std::string(kGallery) + "Race");
        std::promise<uint16_t> port;
        thread_ = std::thread([this, limits, &port] { Run(limits, port); });
        port_ = port.get_future().get();
        Launch(addresses_[0]);
        control_ = std::make_unique<WebSocket>(port_);
        control_->Open(token_);
    }
    ~RunningPage() {
        bus_->Quit();
        thread_.join();
    }
    RunningPage(const RunningPage&) = delete;
    RunningPage& operator=(const RunningPage&) = delete;

    uint16_t port() const { return port_; }
    std::string host() const { return "127.0.0.1:" + std::to_string(port_); }
    // The target of a launch that was not used yet.
    const std::string& launch() const { return addresses_[1]; }
    const Site::Parts& parts() const { return *parts_; }
    const TemporaryHome& home() const { return home_; }
    std::string InGallery(const std::string& name) const { return home_ / (kGallery + name); }
    // Writes a file of the gallery and returns its path.
    std::string Write(const std::string& name, const std::string& bytes) const {
        return home_.folder().Write(kGallery + name, bytes);
    }
    // The handle that a page would have for a record with that path.
    std::string HandleFor(const std::string& path, const char* type = "image") {
        KXP::Document record(rapidjson::kObjectType);
        AddText(record, "path", path);
        AddText(record, "fileType", type);
        handles_.AddTo(record, record.GetAllocator());
        return Text(record, "handle");
    }

    // The answer to a request on a connection of its own.
    std::string Get(const std::string& target, const std::string& lines = {},
                    const char* method = "GET") const {
        RawClient client(port_);
        client.Send(RequestText(target, "Connection: close\r\n" + lines, method));
        return client.ReadToEnd();
    }
    // With the server's name and more lines of header.
    std::string RequestText(const std::string& target, const std::string& lines = {},
                            const char* method = "GET") const {
        return std::string(method) + " " + target + " HTTP/1.1\r\nHost: " + host() + "\r\n" + lines + "\r\n";
    }
    // Over a socket apart from those under test.
    std::string Ask(const std::string& method, const std::string& payload) {
        return control_->Ask(method, payload);
    }
    // How often the plug-in was sent the method.
    int Seen(const std::string& method) {
        const std::string answer = Ask("CheckDiskSpace", R"({"seen":")" + method + "\"}");
        return std::stoi(Between(answer, "\"seen\":", ","));
    }
    // From the launch: the line of header with the cookie, and the socket's token.
    const std::string& cookie() const { return cookie_; }
    const std::string& token() const { return token_; }

  private:
    static constexpr const char* kGallery = "Videos/ZORVEX/Ovirastream/";

    void Launch(const std::string& target) {
        const std::string answer = Get(target);
        cookie_ = "Cookie: " + Between(answer, "Set-Cookie: ", ";") + "\r\n";
        token_ = Between(answer, "socket-token\" content=\"", "\"");
    }
    void Run(const ServerLimits& limits, std::promise<uint16_t>& port) {
        SessionOptions options;
        options.plugin = FAKE_PLUGIN_PATH;
        Interrupt interrupt;
        Session session(options, interrupt);
        session.Start();
        {
            const StaticTable table(resources_.path());
            GalleryFolder gallery;
            LibraryBus bus(session, handles_, gallery);
            const Site::Parts parts{table, handles_, gallery, bus, MEDIA_FOLDER};
            PageServer server(parts, {0}, limits, "1.2.3");
            bus_ = &bus;
            parts_ = &parts;
            for (std::string& target : addresses_)
                target = "/launch" + Between(server.NewLaunchAddress() + " ", "/launch", " ");
            server.Start();
            port.set_value(server.port());
            bus.Run();
        }
        session.Stop();
    }

    const TemporaryHome home_;
    const ScopedEnv behaviour_{"FAKE_PLUGIN", ""};
    const TempFolder resources_;
    Handles handles_;
    LibraryBus* bus_ = nullptr;
    const Site::Parts* parts_ = nullptr;
    std::string addresses_[2];
    std::string cookie_;
    std::string token_;
    uint16_t port_ = 0;
    std::unique_ptr<WebSocket> control_;
    std::thread thread_;
};

// A page that has sent its token.
struct Tab : WebSocket {
    explicit Tab(const RunningPage& page) : WebSocket(page.port()) { Open(page.token()); }
};

}  // namespace host::page
