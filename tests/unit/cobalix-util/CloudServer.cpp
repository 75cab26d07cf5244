#include "tests/unit/cobalix-util/CloudServer.h"

#include <chrono>
#include <condition_variable>
#include <list>
#include <map>
#include <mutex>
#include <thread>

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>

namespace asio = boost::asio;
namespace http = boost::beast::http;
using asio::ip::tcp;

namespace {

constexpr std::chrono::seconds kPatience(20);
constexpr std::chrono::milliseconds kTrickle(5);

// Waits for the other end to go, or for the server to shut the connection.
void AwaitEnd(tcp::socket& socket) {
    boost::system::error_code error;
    char byte = 0;
    while (!error)
        socket.read_some(asio::buffer(&byte, 1), error);
}

bool Write(tcp::socket& socket, const std::string& bytes) {
    boost::system::error_code error;
    asio::write(socket, asio::buffer(bytes), error);
    return !error;
}

void AnswerBadly(tcp::socket& socket, const CloudAnswer& answer) {
    const bool part = answer.manner == CloudAnswer::kShort || answer.manner == CloudAnswer::kStalling;
    if (answer.manner != CloudAnswer::kSilent)
        Write(socket, "HTTP/1.1 200 OK\r\nConnection: close\r\n" +
                          (part ? "Content-Length: " + std::to_string(answer.body.size()) + "\r\n" : "") +
                          "\r\n");
    if (part) Write(socket, answer.body.substr(0, answer.body.size() / 2));
    if (answer.manner == CloudAnswer::kStalling || answer.manner == CloudAnswer::kSilent) AwaitEnd(socket);
    while (answer.manner == CloudAnswer::kEndless && Write(socket, answer.body)) {
    }
    while (answer.manner == CloudAnswer::kTrickling && Write(socket, "x"))
        std::this_thread::sleep_for(kTrickle);
    boost::system::error_code error;
    socket.shutdown(tcp::socket::shutdown_both, error);
}

bool AnswerWell(tcp::socket& socket, const http::request<http::empty_body>& request,
                const CloudAnswer& answer) {
    http::response<http::string_body> response(static_cast<http::status>(answer.status), request.version());
    if (!answer.location.empty()) response.set(http::field::location, answer.location);
    response.body() = answer.body;
    response.keep_alive(true);
    response.prepare_payload();
    boost::system::error_code error;
    http::write(socket, response, error);
    return !error;
}

}  // namespace

class CloudServer::State {
  public:
    State() : acceptor_(context_, tcp::endpoint(asio::ip::address_v4::loopback(), 0)) {
        port_ = acceptor_.local_endpoint().port();
        accepting_ = std::thread([this] { Accept(); });
    }
    ~State() {
        ::shutdown(acceptor_.native_handle(), SHUT_RDWR);
        accepting_.join();
        for (Connection& each : connections_)
            ::shutdown(each.socket.native_handle(), SHUT_RDWR);
        for (Connection& each : connections_)
            each.thread.join();
    }

    unsigned short port() const { return port_; }

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
        tcp::socket socket;
        std::thread thread;
    };

    void Accept() {
        for (;;) {
            boost::system::error_code error;
            tcp::socket socket = acceptor_.accept(error);
            if (error) return;
            Connection& connection = connections_.emplace_back(Connection{std::move(socket), {}});
            connection.thread = std::thread([this, &connection] { Talk(connection.socket); });
            {
                std::lock_guard<std::mutex> lock(mutex_);
                ++accepted_;
            }
            changed_.notify_all();
        }
    }

    void Talk(tcp::socket& socket) {
        boost::beast::flat_buffer buffer;
        for (bool open = true; open;) {
            http::request<http::empty_body> request;
            boost::system::error_code error;
            http::read(socket, buffer, request, error);
            if (error) return AwaitEnd(socket);
            const CloudAnswer answer = AnswerTo(std::string(request.target()));
            open = answer.manner == CloudAnswer::kWell && AnswerWell(socket, request, answer);
            if (answer.manner != CloudAnswer::kWell) AnswerBadly(socket, answer);
        }
    }

    CloudAnswer AnswerTo(const std::string& target) {
        std::lock_guard<std::mutex> lock(mutex_);
        ++requests_;
        const auto found = answers_.find(target);
        return found == answers_.end() ? CloudAnswer{"none", CloudAnswer::kWell, 404, ""} : found->second;
    }

    asio::io_context context_;
    tcp::acceptor acceptor_;
    unsigned short port_ = 0;
    std::list<Connection> connections_;  // the accepting thread's, and the destructor's behind its end
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
