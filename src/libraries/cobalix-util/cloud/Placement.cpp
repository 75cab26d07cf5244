#include "libraries/cobalix-util/cloud/Placement.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>

#include "base/Path.h"
#include "base/ReadWrite.h"

namespace KXP::Cloud {
namespace {

constexpr mode_t kPrivateFolder = 0700;
constexpr size_t kReadAtOnce = size_t{64} << 10;

[[noreturn]] void ThrowErrno(const char* what, int error) {
    throw Error(std::string(what) + ": " + std::generic_category().message(error));
}

FileDescriptor RequireFolder(FileDescriptor folder) {
    if (!folder.IsOpen()) throw Error("no folder for it");
    return folder;
}

// Calls `visit` with each path from `path`'s first part down to the whole, "a", "a/b".
template <typename Visitor>
void ForEachPrefix(const std::string& path, const Visitor& visit) {
    for (size_t slash = path.find('/', 1); slash != path.npos; slash = path.find('/', slash + 1))
        visit(path.substr(0, slash));
    visit(path);
}

}  // namespace

LocalFolder::LocalFolder(const std::string& path) {
    ForEachPrefix(path, [](const std::string& folder) { mkdir(folder.c_str(), kPrivateFolder); });
    folder_ = OpenFolder(path);
    if (!folder_.IsOpen()) ThrowErrno("no local folder", errno);
}

FileDescriptor LocalFolder::FolderOf(const std::string& path, bool create) const {
    FileDescriptor folder(fcntl(folder_.get(), F_DUPFD_CLOEXEC, 0));
    size_t at = 0;
    for (size_t slash = 0; folder.IsOpen() && (slash = path.find('/', at)) != path.npos; at = slash + 1) {
        const std::string name = path.substr(at, slash - at);
        if (create) mkdirat(folder.get(), name.c_str(), kPrivateFolder);
        folder = OpenFolderAt(folder, name);
    }
    return folder;
}

bool LocalFolder::Holds(const ManifestFile& file, const StopAsked& stopAsked) const {
    const FileDescriptor folder = FolderOf(file.path, false);
    struct stat status {};
    if (!folder.IsOpen()) return false;
    const FileDescriptor in = OpenForReadAt(folder.get(), NameOf(file.path), status, Links::Refuse);
    if (!in.IsOpen() || static_cast<uint64_t>(status.st_size) != file.size) return false;
    Sha256 digest;
    std::array<char, kReadAtOnce> buffer;
    // No further than the stated size, in case somebody appends meanwhile.
    for (uint64_t left = file.size; left > 0;) {
        ThrowIfStopped(stopAsked);
        const long got = ReadSome(in, buffer.data(), std::min<uint64_t>(left, buffer.size()));
        if (got <= 0) return false;
        digest.Add(buffer.data(), static_cast<size_t>(got));
        left -= static_cast<uint64_t>(got);
    }
    return digest.Finish() == file.sha256;
}

IncomingFile::IncomingFile(const LocalFolder& folder, const ManifestFile& file)
    : file_(file), out_(RequireFolder(folder.FolderOf(file.path, true)), NameOf(file.path)) {
    if (!out_.IsOpen()) ThrowErrno("no file to write", errno);
}

void IncomingFile::Add(const char* bytes, size_t size) {
    digest_.Add(bytes, size);
    size_ += size;
    if (!WriteFully(out_.descriptor(), {bytes, size})) ThrowErrno("cannot write", errno);
}

void IncomingFile::Place() {
    if (size_ != file_.size) throw Error("fewer bytes than announced");
    if (digest_.Finish() != file_.sha256) throw Error("another digest than announced");
    if (!out_.PutOver(Durability::Content)) ThrowErrno("cannot take its place", errno);
}

}  // namespace KXP::Cloud
