#include "gallery-host/MessageSocket.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "gallery-host/Output.h"

namespace host {
namespace {

[[noreturn]] void Fail(int error) {
    throw std::system_error(error, std::generic_category());
}

}  // namespace

MessageSocket::MessageSocket() {
    try {
        Open();
        setenv(kVariable, (folder_ + "/messages").c_str(), 1);
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
    std::string folder = (std::filesystem::temp_directory_path() / "gallery-host-XXXXXX").string();
    if (!mkdtemp(folder.data())) Fail(errno);
    folder_ = folder;
    const std::string path = folder_ + "/messages";
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) Fail(ENAMETOOLONG);
    std::memcpy(address.sun_path, path.c_str(), path.size());
    fd_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd_ < 0 || bind(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) Fail(errno);
}

void MessageSocket::Close() {
    if (fd_ >= 0) close(fd_);
    fd_ = -1;
    std::error_code error;
    if (!folder_.empty()) std::filesystem::remove_all(folder_, error);
}

bool MessageSocket::HasMore() const {
    pollfd waiting{fd_, POLLIN, 0};
    return fd_ >= 0 && poll(&waiting, 1, 0) > 0;
}

std::optional<std::string> MessageSocket::Take() {
    std::string bytes(kMaxBytes, '\0');
    // The flag makes it tell the whole length.
    const ssize_t got = recv(fd_, bytes.data(), bytes.size(), MSG_TRUNC);
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
