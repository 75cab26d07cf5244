#include "gallery-host/page/HttpConnection.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include <boost/asio/buffer.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/status.hpp>
#include <boost/beast/websocket/rfc6455.hpp>
#include <sys/socket.h>

#include "base/ReadWrite.h"
#include "gallery-host/page/PageSocket.h"

namespace host::page {

namespace net = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using ErrorCode = beast::error_code;

namespace {

// Of a file, read at once.
constexpr size_t kChunk = size_t{128} << 10;
// Read and thrown away before a connection is closed, so that the answer is not lost with it.
constexpr size_t kMaxDrained = size_t{64} << 10;
constexpr std::chrono::seconds kDrainTime{1};

HttpRequest Copy(const http::request<http::empty_body>& message) {
    HttpRequest request;
    request.method = std::string(message.method_string());
    request.target = std::string(message.target());
    for (const auto& field : message) {
        std::string name(field.name_string());
        std::transform(name.begin(), name.end(), name.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; });
        request.fields.emplace_back(std::move(name), std::string(field.value()));
    }
    return request;
}

bool HasBody(unsigned status) {
    return status != 304;
}

std::string HeadText(const HttpReply& reply, bool keepAlive) {
    std::string head = "HTTP/1.1 " + std::to_string(reply.status) + " " +
                       std::string(http::obsolete_reason(http::int_to_status(reply.status))) + "\r\n";
    for (const auto& [name, value] : reply.fields)
        head.append(name).append(": ").append(value).append("\r\n");
    if (HasBody(reply.status))
        head +=
            "Content-Length: " + std::to_string(reply.file ? reply.file->length : reply.body.size()) + "\r\n";
    return head + (keepAlive ? "Connection: keep-alive\r\n\r\n" : "Connection: close\r\n\r\n");
}

unsigned StatusOf(const ErrorCode& error) {
    if (error == http::error::header_limit) return 431;
    if (error == http::error::unexpected_body || error == http::error::body_limit) return 413;
    return 400;
}

}  // namespace

class HttpConnection : public std::enable_shared_from_this<HttpConnection> {
  public:
    HttpConnection(net::ip::tcp::socket socket, Connections& connections)
        : stream_(std::move(socket)), timer_(stream_.get_executor()), connections_(connections) {
        ++connections_.open;
    }
    ~HttpConnection() {
        --connections_.open;
        connections_.onRoom();
    }
    HttpConnection(const HttpConnection&) = delete;
    HttpConnection& operator=(const HttpConnection&) = delete;

    void ReadRequest();
    void AwaitRequest();
    void Close() { stream_.close(); }

  private:
    using Parser = http::request_parser<http::empty_body>;

    void OnRequest(const ErrorCode& error);
    void OnBrokenRequest(const ErrorCode& error);
    bool TakeUpgrade();
    void Route();
    void WatchForClose();
    void OnReply(uint64_t number, HttpReply reply);
    void Write(HttpReply reply);
    void ReadChunk();
    void OnChunk(size_t wanted, size_t got);
    void Finish();
    void Drain();

    beast::tcp_stream stream_;
    net::steady_timer timer_;
    Connections& connections_;
    beast::flat_buffer buffer_;
    std::optional<Parser> parser_;
    HttpRequest request_;
    bool keepAlive_ = false;
    uint64_t number_ = 0;  // of the request
    Ticket ticket_;
    HttpReply reply_;
    std::string head_;
    std::string chunk_;
    size_t drained_ = 0;
};

// Waits for the first byte for longer than for the rest.
void HttpConnection::AwaitRequest() {
    if (buffer_.size() > 0) {
        ReadRequest();
        return;
    }
    const auto place = connections_.idle.insert(connections_.idle.end(), weak_from_this());
    stream_.expires_after(connections_.limits.idle);
    stream_.async_read_some(buffer_.prepare(4096),
                            [self = shared_from_this(), place](const ErrorCode& error, size_t got) {
                                self->connections_.idle.erase(place);
                                if (error) return;
                                self->buffer_.commit(got);
                                self->ReadRequest();
                            });
    connections_.onRoom();
}

void HttpConnection::ReadRequest() {
    parser_.emplace();
    parser_->header_limit(static_cast<uint32_t>(connections_.limits.headerBytes));
    stream_.expires_after(connections_.limits.header);
    http::async_read(stream_, buffer_, *parser_,
                     [self = shared_from_this()](const ErrorCode& error, size_t) { self->OnRequest(error); });
}

void HttpConnection::OnRequest(const ErrorCode& error) {
    if (error) {
        OnBrokenRequest(error);
        return;
    }
    stream_.expires_never();
    keepAlive_ = parser_->get().keep_alive();
    request_ = Copy(parser_->get());
    if (!TakeUpgrade()) Route();
}

void HttpConnection::OnBrokenRequest(const ErrorCode& error) {
    // Whoever is slow or has gone gets no answer.
    const bool unreadable = error.category() == http::make_error_code(http::error::bad_method).category() &&
                            error != http::error::end_of_stream && error != http::error::partial_message;
    if (!unreadable) return;
    keepAlive_ = false;
    request_ = {};
    Write(TextReply(StatusOf(error), "the request cannot be read"));
}

bool HttpConnection::TakeUpgrade() {
    if (!beast::websocket::is_upgrade(parser_->get()) || request_.target != "/socket") return false;
    const Site& site = connections_.site;
    std::optional<HttpReply> refusal = site.rules().Refuse(request_);
    if (!refusal && !site.rules().MayUpgrade(request_))
        refusal = TextReply(403, "the request comes from another site");
    if (!refusal && connections_.sockets.size() >= connections_.limits.sockets)
        refusal = TextReply(503, "there are too many pages");
    // A client that sends frames before the answer is none of ours.
    if (!refusal && buffer_.size() > 0) refusal = TextReply(400, "the request cannot be read");
    if (refusal) {
        keepAlive_ = false;
        Write(std::move(*refusal));
    } else {
        StartSocket(std::move(stream_), parser_->release(), connections_);
    }
    return true;
}

void HttpConnection::Route() {
    const uint64_t number = ++number_;
    ticket_ = std::make_shared<char>();
    timer_.expires_after(connections_.limits.answer);
    // This also keeps the connection while it waits.
    timer_.async_wait([self = shared_from_this(), number](const ErrorCode& error) {
        if (!error) self->OnReply(number, TextReply(504, "the plug-in does not answer"));
    });
    // The answer may come on any thread, and after this connection has ended.
    const auto respond = [weak = weak_from_this(), number,
                          executor = stream_.get_executor()](HttpReply reply) {
        const auto shared = std::make_shared<HttpReply>(std::move(reply));
        net::post(executor, [weak, number, shared] {
            if (const auto self = weak.lock()) self->OnReply(number, std::move(*shared));
        });
    };
    connections_.site.Answer(request_, ticket_, respond);
    WatchForClose();
}

// Nobody needs the answer to a request whose sender has gone.
void HttpConnection::WatchForClose() {
    stream_.socket().async_wait(net::ip::tcp::socket::wait_read, [weak = weak_from_this(),
                                                                  number = number_](const ErrorCode& error) {
        const auto self = weak.lock();
        if (error || !self || number != self->number_ || !self->ticket_) return;
        char byte = 0;
        const ssize_t got = recv(self->stream_.socket().native_handle(), &byte, 1, MSG_PEEK | MSG_DONTWAIT);
        if (got != 0) return;
        self->ticket_.reset();
        self->timer_.cancel();
    });
}

void HttpConnection::OnReply(uint64_t number, HttpReply reply) {
    if (number != number_ || !ticket_) return;
    ticket_.reset();
    timer_.cancel();
    // Ends the wait of WatchForClose.
    ErrorCode ignored;
    stream_.socket().cancel(ignored);
    Write(std::move(reply));
}

void HttpConnection::Write(HttpReply reply) {
    reply_ = std::move(reply);
    AddSecurityFields(reply_.fields);
    head_ = HeadText(reply_, keepAlive_);
    const bool bodiless = request_.method == "HEAD" || !HasBody(reply_.status);
    if (bodiless) {
        reply_.body.clear();
        reply_.file.reset();
    }
    stream_.expires_after(connections_.limits.progress);
    const std::array<net::const_buffer, 2> buffers{net::buffer(head_), net::buffer(reply_.body)};
    net::async_write(stream_, buffers, [self = shared_from_this()](const ErrorCode& error, size_t) {
        if (error) return;
        if (self->reply_.file)
            self->ReadChunk();
        else
            self->Finish();
    });
}

void HttpConnection::ReadChunk() {
    FilePart& part = *reply_.file;
    const size_t wanted = static_cast<size_t>(std::min<uint64_t>(part.length, kChunk));
    if (wanted == 0) {
        Finish();
        return;
    }
    stream_.expires_never();
    chunk_.resize(wanted);
    connections_.runElsewhere([self = shared_from_this(), wanted]() mutable {
        const FilePart& file = *self->reply_.file;
        const size_t got = KXP::ReadAt(file.file, file.offset, self->chunk_.data(), wanted);
        // The connection ends on its own thread.
        const auto executor = self->stream_.get_executor();
        net::post(executor, [self = std::move(self), wanted, got] { self->OnChunk(wanted, got); });
    });
}

void HttpConnection::OnChunk(size_t wanted, size_t got) {
    // The file has shrunk or cannot be read: the length that was promised cannot be kept.
    if (got < wanted) {
        Close();
        return;
    }
    reply_.file->offset += got;
    reply_.file->length -= got;
    stream_.expires_after(connections_.limits.progress);
    net::async_write(stream_, net::buffer(chunk_),
                     [self = shared_from_this()](const ErrorCode& error, size_t) {
                         if (!error) self->ReadChunk();
                     });
}

void HttpConnection::Finish() {
    reply_ = {};
    chunk_ = {};
    if (keepAlive_) {
        AwaitRequest();
        return;
    }
    ErrorCode ignored;
    stream_.socket().shutdown(net::ip::tcp::socket::shutdown_send, ignored);
    stream_.expires_after(kDrainTime);
    Drain();
}

void HttpConnection::Drain() {
    buffer_.clear();
    stream_.async_read_some(buffer_.prepare(4096),
                            [self = shared_from_this()](const ErrorCode& error, size_t got) {
                                self->drained_ += got;
                                if (!error && self->drained_ < kMaxDrained) self->Drain();
                            });
}

void StartConnection(net::ip::tcp::socket socket, Connections& connections) {
    // Answers are written whole, so gathering small packets only delays them.
    ErrorCode ignored;
    socket.set_option(net::ip::tcp::no_delay(true), ignored);
    std::make_shared<HttpConnection>(std::move(socket), connections)->ReadRequest();
}

bool CloseOldestIdle(Connections& connections) {
    for (const std::weak_ptr<HttpConnection>& idle : connections.idle)
        if (const auto connection = idle.lock()) {
            connection->Close();
            return true;
        }
    return false;
}

}  // namespace host::page
