#include "libraries/cobalix-util/cloud/Placement.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <random>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace KXP::Cloud {
namespace {

constexpr mode_t kPrivateFolder = 0700;
constexpr mode_t kPrivateFile = 0600;
constexpr size_t kReadAtOnce = size_t{64} << 10;
constexpr int kNameAttempts = 16;

[[noreturn]] void ThrowErrno(const char* what, int error) {
    throw Error(std::string(what) + ": " + std::generic_category().message(error));
}

// Calls `visit` with each path from `path`'s first part down to the whole, "a", "a/b".
template <typename Visitor>
void ForEachPrefix(const std::string& path, const Visitor& visit) {
    for (size_t slash = path.find('/', 1); slash != path.npos; slash = path.find('/', slash + 1))
        visit(path.substr(0, slash));
    visit(path);
}

std::string NameOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

// Hidden and of an ending of its own, so that nobody takes it for what it will be.
std::string RandomName() {
    std::random_device random;
    char name[48];
    std::snprintf(name, sizeof name, ".cloudsync-%08x%08x.part", random(), random());
    return name;
}

}  // namespace

Handle::~Handle() {
    if (fd_ >= 0) close(fd_);
}

LocalFolder::LocalFolder(const std::string& path) {
    ForEachPrefix(path, [](const std::string& folder) { mkdir(folder.c_str(), kPrivateFolder); });
    folder_ = Handle(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder_.IsOpen()) ThrowErrno("no local folder", errno);
}

Handle LocalFolder::ParentOf(const std::string& path, bool create) const {
    Handle parent(fcntl(folder_.get(), F_DUPFD_CLOEXEC, 0));
    size_t at = 0;
    for (size_t slash = 0; parent.IsOpen() && (slash = path.find('/', at)) != path.npos; at = slash + 1) {
        const std::string name = path.substr(at, slash - at);
        if (create) mkdirat(parent.get(), name.c_str(), kPrivateFolder);
        parent = Handle(openat(parent.get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    }
    return parent;
}

bool LocalFolder::Holds(const ManifestFile& file, const StopAsked& stopAsked) const {
    const Handle parent = ParentOf(file.path, false);
    if (!parent.IsOpen()) return false;
    // Without O_NONBLOCK the opening of a pipe waits for its other end.
    const Handle in(openat(parent.get(), NameOf(file.path).c_str(),
                           O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status {};
    if (!in.IsOpen() || fstat(in.get(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
    if (static_cast<uint64_t>(status.st_size) != file.size) return false;
    Sha256 digest;
    std::array<char, kReadAtOnce> buffer;
    // Not further than told, should somebody write on behind it.
    for (uint64_t left = file.size; left > 0;) {
        ThrowIfStopped(stopAsked);
        const ssize_t got = read(in.get(), buffer.data(), std::min<uint64_t>(left, buffer.size()));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return false;
        digest.Add(buffer.data(), static_cast<size_t>(got));
        left -= static_cast<uint64_t>(got);
    }
    return digest.Finish() == file.sha256;
}

IncomingFile::IncomingFile(const LocalFolder& folder, const ManifestFile& file)
    : file_(file), parent_(folder.ParentOf(file.path, true)) {
    if (!parent_.IsOpen()) throw Error("no folder for it");
    for (int attempt = 0; attempt < kNameAttempts && !out_.IsOpen(); ++attempt) {
        const std::string name = RandomName();
        out_ = Handle(openat(parent_.get(), name.c_str(),
                             O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kPrivateFile));
        if (out_.IsOpen()) neighbour_ = name;
        if (!out_.IsOpen() && errno != EEXIST) break;
    }
    if (!out_.IsOpen()) ThrowErrno("no file to write", errno);
}

IncomingFile::~IncomingFile() {
    if (!neighbour_.empty()) unlinkat(parent_.get(), neighbour_.c_str(), 0);
}

void IncomingFile::Add(const char* bytes, size_t size) {
    digest_.Add(bytes, size);
    size_ += size;
    while (size > 0) {
        const ssize_t put = write(out_.get(), bytes, size);
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) ThrowErrno("cannot write", errno);
        bytes += put;
        size -= static_cast<size_t>(put);
    }
}

void IncomingFile::Place() {
    if (size_ != file_.size) throw Error("fewer bytes than announced");
    if (digest_.Finish() != file_.sha256) throw Error("another digest than announced");
    // Bytes before name: after a power cut there is the old file or the new one.
    if (fdatasync(out_.get()) != 0) ThrowErrno("cannot write", errno);
    if (renameat(parent_.get(), neighbour_.c_str(), parent_.get(), NameOf(file_.path).c_str()) != 0)
        ThrowErrno("cannot take its place", errno);
    neighbour_.clear();
}

}  // namespace KXP::Cloud
