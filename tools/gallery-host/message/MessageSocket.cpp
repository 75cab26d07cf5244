#include "gallery-host/message/MessageSocket.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "base/DescriptorCalls.h"
#include "gallery-host/base/Output.h"

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kPrefix = "gallery-host-";
constexpr const char* kName = "/messages";

[[noreturn]] void Fail(int error) {
    throw std::system_error(error, std::generic_category());
}

sockaddr_un Address(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) Fail(ENAMETOOLONG);
    std::memcpy(address.sun_path, path.c_str(), path.size());
    return address;
}

KXP::FileDescriptor OpenSocket() {
    KXP::FileDescriptor socket = KXP::Platform::OpenSocket(AF_UNIX, SOCK_DGRAM);
    if (!socket.IsOpen()) Fail(errno);
    return socket;
}

// Whether the folder is ours and nobody listens at its socket.
bool IsLeftOver(const std::string& folder) {
    struct stat status {};
    if (lstat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) || status.st_uid != geteuid())
        return false;
    const sockaddr_un address = Address(folder + kName);
    const KXP::FileDescriptor socket = OpenSocket();
    return connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 &&
           errno == ECONNREFUSED;
}

// Removes the folders of hosts that were killed.
void RemoveLeftOvers(const fs::path& temporary) {
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(temporary, error)) {
        const bool named = entry.path().filename().string().rfind(kPrefix, 0) == 0;
        if (named && IsLeftOver(entry.path().string())) fs::remove_all(entry.path(), error);
    }
}

}  // namespace

MessageSocket::MessageSocket() {
    try {
        Open();
        setenv(kVariable, (folder_ + kName).c_str(), 1);
    } catch (const std::system_error& error) {
        Say(std::string("child processes can send no messages: ") + error.code().message());
        Close();
        unsetenv(kVariable);
    }
}

MessageSocket::~MessageSocket() {
    Close();
}

void MessageSocket::Open() {
    const fs::path temporary = fs::temp_directory_path();
    RemoveLeftOvers(temporary);
    std::string folder = (temporary / (std::string(kPrefix) + "XXXXXX")).string();
    if (!mkdtemp(folder.data())) Fail(errno);
    folder_ = folder;
    const sockaddr_un address = Address(folder_ + kName);
    socket_ = OpenSocket();
    if (bind(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) Fail(errno);
}

void MessageSocket::Close() {
    socket_ = {};
    std::error_code error;
    if (!folder_.empty()) fs::remove_all(folder_, error);
}

bool MessageSocket::HasMore() const {
    pollfd waiting{fd(), POLLIN, 0};
    return socket_.IsOpen() && poll(&waiting, 1, 0) > 0;
}

std::optional<std::string> MessageSocket::Take() {
    // With this flag recv returns the whole length, or at least one that shows that it is too long.
    std::string bytes(kMaxBytes + 1, '\0');
    const ssize_t got = recv(fd(), bytes.data(), bytes.size(), MSG_TRUNC);
    if (got < 0) return std::nullopt;
    const auto length = static_cast<size_t>(got);
    if (length > kMaxBytes) {
        Say("a child process sent a message of " + std::to_string(length) + " bytes, which is too long");
        return std::nullopt;
    }
    bytes.resize(length);
    return bytes;
}

}  // namespace host
