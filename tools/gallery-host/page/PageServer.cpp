#include "gallery-host/page/PageServer.h"

#include <array>
#include <cerrno>
#include <exception>
#include <optional>
#include <thread>
#include <utility>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ip/v6_only.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/thread_pool.hpp>

#include "gallery-host/base/Failure.h"
#include "gallery-host/base/Output.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/page/Connections.h"
#include "gallery-host/page/HostMethods.h"
#include "gallery-host/page/HttpConnection.h"
#include "gallery-host/page/PageMethods.h"

namespace host::page {

namespace net = boost::asio;
using net::ip::tcp;
using ErrorCode = boost::system::error_code;

namespace {

constexpr size_t kDiskThreads = 2;
// After the system had no descriptors left for a connection.
constexpr std::chrono::milliseconds kAcceptPause{100};

using Acceptors = std::vector<tcp::acceptor>;

ErrorCode AddAcceptor(Acceptors& acceptors, net::io_context& context, const tcp::endpoint& endpoint) {
    tcp::acceptor acceptor(context);
    ErrorCode error;
    acceptor.open(endpoint.protocol(), error);
    if (!error) acceptor.set_option(tcp::acceptor::reuse_address(true), error);
    if (!error && endpoint.protocol() == tcp::v6()) acceptor.set_option(net::ip::v6_only(true), error);
    if (!error) acceptor.bind(endpoint, error);
    if (!error) acceptor.listen(net::socket_base::max_listen_connections, error);
    if (!error) acceptors.push_back(std::move(acceptor));
    return error;
}

// Both addresses, or a port of which another program has one would be in doubt.
ErrorCode OpenPort(Acceptors& acceptors, net::io_context& context, uint16_t port) {
    acceptors.clear();
    ErrorCode error = AddAcceptor(acceptors, context, {net::ip::address_v4::loopback(), port});
    if (error) return error;
    port = acceptors.front().local_endpoint().port();
    error = AddAcceptor(acceptors, context, {net::ip::address_v6::loopback(), port});
    const bool noVersion6 =
        error == net::error::address_family_not_supported || error.value() == EADDRNOTAVAIL;
    return noVersion6 ? ErrorCode() : error;
}

Acceptors OpenFirst(net::io_context& context, const std::vector<uint16_t>& ports) {
    Acceptors acceptors;
    ErrorCode error;
    for (const uint16_t port : ports) {
        error = OpenPort(acceptors, context, port);
        if (!error) return acceptors;
    }
    const std::string tried =
        ports.size() == 1 ? "port " + std::to_string(ports.front())
                          : "ports " + std::to_string(ports.front()) + " to " + std::to_string(ports.back());
    throw Failure(kExitFailed, "cannot serve at " + tried + ": " + error.message() +
                                   "; choose another with --port, or 0 for any");
}

std::string ReadyText(const std::string& version) {
    KXP::Document frame(rapidjson::kObjectType);
    KXP::Allocator& allocator = frame.GetAllocator();
    const auto list = [&allocator](const std::vector<std::string>& names, KXP::Value& array) {
        for (const std::string& name : names)
            array.PushBack(KXP::Value(name, allocator), allocator);
    };
    KXP::Value methods(rapidjson::kArrayType);
    list(PageMethods(), methods);
    list(NotificationMethods(), methods);
    KXP::Value host(rapidjson::kArrayType);
    list(HostMethodNames(), host);
    frame.AddMember("ready", true, allocator);
    frame.AddMember("methods", methods, allocator);
    frame.AddMember("host", host, allocator);
    AddText(frame, "version", version);
    return ToText(frame);
}

}  // namespace

class PageServer::Impl {
  public:
    Impl(const Site::Parts& parts, const std::vector<uint16_t>& ports, const ServerLimits& limits,
         const std::string& version)
        : limits_(limits), acceptors_(OpenFirst(context_, ports)), pause_(context_) {
        site_.emplace(parts, port(), Elsewhere{RunsIn(disk_), RunsIn(media_)});
        connections_.emplace(
            Connections{*site_, limits_, RunsIn(disk_), ReadyText(version), [this] { AcceptAll(); }});
    }

    // No handler runs once the threads have ended; then the context drops those that wait.
    ~Impl() {
        context_.stop();
        if (thread_.joinable()) thread_.join();
        disk_.join();
        media_.join();
        ending_ = true;
        connections_->sockets.clear();
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    void Start() {
        AcceptAll();
        thread_ = std::thread([this] { Run(); });
    }

    uint16_t port() const { return acceptors_.front().local_endpoint().port(); }
    LaunchTokens& launches() { return site_->launches(); }

  private:
    static RunElsewhere RunsIn(net::thread_pool& pool) {
        return [&pool](std::function<void()> work) { net::post(pool, std::move(work)); };
    }

    void Run() {
        while (!context_.stopped()) {
            try {
                context_.run();
            } catch (const std::exception& error) {
                Say(std::string("a connection to the page failed: ") + error.what());
            }
        }
    }

    void AcceptAll() {
        if (ending_) return;
        for (size_t i = 0; i < acceptors_.size(); ++i)
            Accept(i);
    }

    // While there are too many connections, the next one waits until one ends or gives way.
    void Accept(size_t index) {
        if (accepting_[index]) return;
        if (std::optional<tcp::socket>& next = waiting_[index]) {
            if (connections_->open >= limits_.connections && !CloseOldestIdle(*connections_)) return;
            StartConnection(std::move(*next), *connections_);
            next.reset();
        }
        accepting_[index] = true;
        acceptors_[index].async_accept([this, index](const ErrorCode& error, tcp::socket socket) {
            accepting_[index] = false;
            if (error) {
                PauseAccepting();
                return;
            }
            waiting_[index] = std::move(socket);
            Accept(index);
        });
    }

    void PauseAccepting() {
        pause_.expires_after(kAcceptPause);
        pause_.async_wait([this](const ErrorCode& error) {
            if (!error) AcceptAll();
        });
    }

    const ServerLimits limits_;
    bool ending_ = false;
    net::thread_pool disk_{kDiskThreads};
    net::thread_pool media_{1};
    std::optional<Site> site_;
    std::optional<Connections> connections_;
    net::io_context context_{1};  // after what its handlers use when they are dropped
    Acceptors acceptors_;
    std::array<bool, 2> accepting_{};
    std::array<std::optional<tcp::socket>, 2> waiting_{};
    net::steady_timer pause_;
    std::thread thread_;
};

PageServer::PageServer(const Site::Parts& parts, const std::vector<uint16_t>& ports,
                       const ServerLimits& limits, const std::string& version)
    : impl_(std::make_unique<Impl>(parts, ports, limits, version)) {}

PageServer::~PageServer() = default;

std::string PageServer::NewLaunchAddress() {
    return "http://127.0.0.1:" + std::to_string(port()) +
           "/launch?token=" + impl_->launches().Issue(LaunchTokens::Clock::now());
}

std::string PageServer::NewLaunchFile() {
    const std::string address = NewLaunchAddress();
    auto file = std::make_shared<LaunchFile>(address);
    std::string path = file->path();
    impl_->launches().Attach(address.substr(address.find('=') + 1), std::move(file));
    return path;
}

void PageServer::Start() {
    impl_->Start();
}

uint16_t PageServer::port() const {
    return impl_->port();
}

}  // namespace host::page
