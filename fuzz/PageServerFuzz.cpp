// A client of the page's server over a pair of sockets: first a request up to its empty line, then the rest,
// which may be frames of a WebSocket. Whatever it sends, it gets no secret and no capture without the secrets
// that open them, and the server ends with it.
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include <boost/asio/io_context.hpp>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "fuzz/Plain.h"
#include "gallery-host/page/HttpConnection.h"

namespace {

using namespace host::page;
using plain::Demand;

// The folder of the page and of the gallery, by a path that does not differ from run to run.
constexpr int kFolderFd = 500;
constexpr const char* kFolder = "/proc/self/fd/500";
constexpr std::string_view kPicture = "\x89PNG\r\n\x1a\nthe bytes of a picture";
unsigned char secrets = 0;

struct Folder {
    Folder() {
        std::string name = (std::filesystem::temp_directory_path() / "page-fuzz-XXXXXX").string();
        path = mkdtemp(name.data()) ? name : "";
        std::ofstream(path + "/index.html") << "<!doctype html>";
        std::ofstream(path + "/picture.png", std::ios::binary) << kPicture;
        Demand(dup2(open(path.c_str(), O_PATH | O_DIRECTORY), kFolderFd) == kFolderFd);
        KXP::Document record(rapidjson::kObjectType);
        record.AddMember("path", KXP::Value(std::string(kFolder) + "/picture.png", record.GetAllocator()),
                         record.GetAllocator());
        record.AddMember("fileType", "image", record.GetAllocator());
        handles.AddTo(record, record.GetAllocator());
        gallery.Set(kFolder);
        table.emplace(path);
    }
    ~Folder() { std::filesystem::remove_all(path); }
    std::string path;
    Handles handles;
    GalleryFolder gallery;
    std::optional<StaticTable> table;
};

// Answers every frame at once.
class Bus : public IPageBus {
  public:
    void Open(SocketId, std::weak_ptr<IPageSocket> socket) override { socket_ = std::move(socket); }
    void Receive(SocketId, std::string text) override {
        const auto socket = socket_.lock();
        Demand(socket != nullptr);
        if (text.empty()) return socket->EndUnanswered();
        socket->Send({Frame::Kind::kAnswer, std::move(text), nullptr});
    }
    void Close(SocketId) override { socket_.reset(); }
    void MakeThumbnail(ThumbnailRequest request) override { request.done({std::string(kPicture)}); }

  private:
    std::weak_ptr<IPageSocket> socket_;
};

std::string Take(int client) {
    std::string all;
    char bytes[4096];
    for (ssize_t got = 0; (got = recv(client, bytes, sizeof bytes, MSG_DONTWAIT)) > 0;)
        all.append(bytes, static_cast<size_t>(got));
    return all;
}

void Put(int client, std::string_view bytes) {
    Demand(bytes.empty() || send(client, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT) != 0);
}

// All that the server sends to a client that sends this.
std::string Serve(Site& site, std::string_view sent) {
    static const ServerLimits limits;
    int ends[2];
    Demand(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0);
    const size_t head = std::min(sent.find("\r\n\r\n"), sent.size() - 4) + 4;
    std::string received;
    {
        Connections connections{site, limits, [](const auto& work) { work(); }, "ready", [] {}};
        boost::asio::io_context context;
        boost::asio::ip::tcp::socket socket(context);
        socket.assign(boost::asio::ip::tcp::v4(), ends[1]);
        StartConnection(std::move(socket), connections);
        Put(ends[0], sent.substr(0, head));
        context.poll();
        received = Take(ends[0]);
        Put(ends[0], sent.substr(head));
        context.poll();
        received += Take(ends[0]);
        shutdown(ends[0], SHUT_WR);
        context.restart();
        // Nothing has to be waited for any more.
        for (int waits = 0; !context.stopped() && waits < 100; received += Take(ends[0]))
            waits += context.run_one_for(std::chrono::milliseconds(100)) == 0 ? 1 : 0;
        Demand(context.stopped() && connections.open == 0 && connections.sockets.empty());
    }
    received += Take(ends[0]);
    close(ends[0]);
    return received;
}

bool Has(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

}  // namespace

// In place of the system's: the n-th secret consists of the byte n.
extern "C" int getentropy(void* bytes, size_t size) {
    std::memset(bytes, ++secrets, size);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const Folder folder;
    if (size < 4 || size > 16000) return 0;
    const std::string_view sent(reinterpret_cast<const char*>(data), size);
    secrets = 0;
    Bus bus;
    const auto inPlace = [](const std::function<void()>& work) { work(); };
    Site site({*folder.table, folder.handles, folder.gallery, bus, "/nowhere"}, 7000, {inPlace, inPlace});
    const std::string launch = site.launches().Issue(LaunchTokens::Clock::now());
    const std::string received = Serve(site, sent);
    if (received.empty()) return 0;
    Demand(plain::StartsWith(received, "HTTP/1.1 "));
    Demand(Has(received, "\r\nX-Content-Type-Options: nosniff\r\n"));
    if (Has(received, "HTTP/1.1 101")) Demand(Has(sent, "http://") && Has(sent, ":7000"));
    // In a request each may be written with percent codes, and in a frame be masked.
    const bool isEcho = Has(received, "HTTP/1.1 101") || Has(sent, "%");
    Demand(isEcho || !Has(received, site.socketToken()) || Has(sent, launch));
    Demand(isEcho || !Has(received, kPicture) || Has(sent, "020202020202"));
    return 0;
}
