#include "gallery-host/page/PageSocket.h"

#include <array>
#include <memory>
#include <string>
#include <utility>

#include <boost/asio/buffer.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/websocket/stream.hpp>

#include "gallery-host/message/Envelope.h"

namespace host::page {

namespace net = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
namespace websocket = beast::websocket;
using ErrorCode = beast::error_code;

namespace {

// The page's token is of another start of the server.
constexpr uint16_t kWrongToken = 4401;

}  // namespace

class PageSocket final : public IPageSocket, public std::enable_shared_from_this<PageSocket> {
  public:
    PageSocket(beast::tcp_stream stream, Connections& connections);

    void Accept(const http::request<http::empty_body>& request);

    void Send(Frame frame) override;
    void EndUnanswered() override;

  private:
    void AwaitToken();
    void OnToken();
    void Read();
    void OnFrame();
    void EndRequest();
    void Push(Frame frame);
    void WriteNext();
    void CloseWith(uint16_t code, const char* reason);
    void End();

    websocket::stream<beast::tcp_stream> stream_;
    net::steady_timer timer_;
    Connections& connections_;
    const SocketId id_;
    beast::flat_buffer in_;
    OutQueue out_;
    size_t unanswered_ = 0;
    bool reading_ = false;
    bool writing_ = false;
    bool trusted_ = false;  // its token was right
    bool closing_ = false;
};

PageSocket::PageSocket(beast::tcp_stream stream, Connections& connections)
    : stream_(std::move(stream)),
      timer_(stream_.get_executor()),
      connections_(connections),
      id_(++connections.lastSocket),
      out_(connections.limits.out) {
    // Before the handshake, which they limit too.
    beast::get_lowest_layer(stream_).expires_never();
    stream_.set_option(websocket::stream_base::timeout::suggested(beast::role_type::server));
    websocket::permessage_deflate uncompressed;
    uncompressed.server_enable = false;
    stream_.set_option(uncompressed);
    stream_.read_message_max(connections.limits.messageBytes);
    // Fragments of a few kilobytes would each be copied.
    stream_.auto_fragment(false);
    stream_.text(true);
}

void PageSocket::Accept(const http::request<http::empty_body>& request) {
    connections_.sockets[id_] = shared_from_this();
    Fields fields;
    AddSecurityFields(fields);
    stream_.set_option(websocket::stream_base::decorator([fields](websocket::response_type& response) {
        for (const auto& [name, value] : fields)
            response.set(name, value);
        response.set(http::field::server, "gallery-host");
    }));
    stream_.async_accept(request, [self = shared_from_this()](const ErrorCode& error) {
        if (error)
            self->End();
        else
            self->AwaitToken();
    });
}

void PageSocket::AwaitToken() {
    timer_.expires_after(connections_.limits.token);
    timer_.async_wait([weak = weak_from_this()](const ErrorCode& error) {
        const auto self = weak.lock();
        if (self && !error && !self->trusted_) self->End();
    });
    Read();
}

void PageSocket::Read() {
    if (reading_ || closing_ || unanswered_ >= connections_.limits.requestsPerSocket) return;
    reading_ = true;
    stream_.async_read(in_, [self = shared_from_this()](const ErrorCode& error, size_t) {
        self->reading_ = false;
        if (error)
            self->End();
        else
            self->OnFrame();
    });
}

void PageSocket::OnFrame() {
    if (!stream_.got_text()) {
        CloseWith(websocket::close_code::unknown_data, "text only");
        return;
    }
    if (!trusted_) {
        OnToken();
        return;
    }
    std::string text = beast::buffers_to_string(in_.data());
    in_ = {};
    ++unanswered_;
    connections_.site.bus().Receive(id_, std::move(text));
    Read();
}

void PageSocket::OnToken() {
    KXP::Document frame;
    std::string error;
    const bool right = ParseObject(beast::buffers_to_string(in_.data()), frame, error) &&
                       SameSecret(Text(frame, "token"), connections_.site.socketToken());
    in_ = {};
    if (!right) {
        CloseWith(kWrongToken, "the token is of another start");
        return;
    }
    trusted_ = true;
    timer_.cancel();
    connections_.site.bus().Open(id_, weak_from_this());
    Push({Frame::Kind::kOther, connections_.ready, nullptr});
    Read();
}

void PageSocket::Send(Frame frame) {
    net::post(stream_.get_executor(), [self = shared_from_this(), frame = std::move(frame)]() mutable {
        const bool answers = frame.kind == Frame::Kind::kAnswer;
        self->Push(std::move(frame));
        if (answers) self->EndRequest();
    });
}

void PageSocket::EndUnanswered() {
    net::post(stream_.get_executor(), [self = shared_from_this()] { self->EndRequest(); });
}

void PageSocket::EndRequest() {
    --unanswered_;
    Read();
}

void PageSocket::Push(Frame frame) {
    if (closing_) return;
    if (out_.Push(std::move(frame)))
        WriteNext();
    else
        End();  // the page does not read, so it could not read a reason either
}

void PageSocket::WriteNext() {
    if (writing_ || closing_ || out_.empty()) return;
    writing_ = true;
    const Frame& frame = out_.BeginWrite();
    const std::array<net::const_buffer, 2> buffers{
        net::buffer(frame.head), frame.rest ? net::buffer(*frame.rest) : net::const_buffer()};
    stream_.async_write(buffers, [self = shared_from_this()](const ErrorCode& error, size_t) {
        self->writing_ = false;
        self->out_.Pop();
        if (error)
            self->End();
        else
            self->WriteNext();
    });
}

void PageSocket::CloseWith(uint16_t code, const char* reason) {
    closing_ = true;
    timer_.cancel();
    stream_.async_close(websocket::close_reason(static_cast<websocket::close_code>(code), reason),
                        [self = shared_from_this()](const ErrorCode&) { self->End(); });
}

void PageSocket::End() {
    const std::shared_ptr<PageSocket> self = shared_from_this();
    if (connections_.sockets.erase(id_) == 0) return;
    closing_ = true;
    timer_.cancel();
    if (trusted_) connections_.site.bus().Close(id_);
    beast::get_lowest_layer(stream_).close();
}

void StartSocket(beast::tcp_stream stream, const http::request<http::empty_body>& request,
                 Connections& connections) {
    const auto shared = std::make_shared<PageSocket>(std::move(stream), connections);
    shared->Accept(request);
}

}  // namespace host::page
