#include "gallery-host/page/MediaRoute.h"

#include <cerrno>
#include <cstdio>
#include <string_view>
#include <utility>

#include "base/FileCalls.h"
#include "base/ReadWrite.h"
#include "gallery-host/page/ByteRange.h"

namespace host::page {
namespace {

constexpr std::string_view kPng = "\x89PNG\r\n\x1a\n";
constexpr std::string_view kJpeg = "\xFF\xD8\xFF";

// By the record's kind and the first bytes, never by the name. Null for what browsers must not show.
const char* TypeOf(const Capture& capture, const KXP::FileDescriptor& file) {
    char head[8];
    const std::string_view bytes(head, KXP::ReadAt(file, 0, head, sizeof head));
    if (capture.isVideo) return bytes.size() == 8 && bytes.substr(4) == "ftyp" ? "video/mp4" : nullptr;
    if (bytes == kPng) return "image/png";
    return bytes.substr(0, kJpeg.size()) == kJpeg ? "image/jpeg" : nullptr;
}

// Any write to the file changes it.
std::string TagOf(const struct stat& status) {
    const timespec time = KXP::Platform::ModifiedTime(status);
    char tag[96];
    std::snprintf(
        tag, sizeof tag, "\"%llx-%llx-%llx-%llx.%lx\"", static_cast<unsigned long long>(status.st_dev),
        static_cast<unsigned long long>(status.st_ino), static_cast<unsigned long long>(status.st_size),
        static_cast<unsigned long long>(time.tv_sec), time.tv_nsec);
    return tag;
}

HttpReply OpenFailure() {
    if (errno == ENOENT || errno == ENOTDIR) return TextReply(410, "the file is gone");
    if (errno == EACCES || errno == EPERM) return TextReply(403, "the file cannot be read");
    if (errno == EMFILE || errno == ENFILE) return TextReply(503, "too many files are open");
    return TextReply(404, "no file of the gallery");
}

void AddType(HttpReply& reply, const char* type) {
    reply.fields.emplace_back("Content-Type", type ? type : "application/octet-stream");
    if (!type) reply.fields.emplace_back("Content-Disposition", "attachment");
}

}  // namespace

HttpReply MediaReply(const HttpRequest& request, const Capture& capture, const GalleryFolder& gallery) {
    struct stat status {};
    KXP::FileDescriptor file = gallery.Open(capture.path, status);
    if (!file.IsOpen()) return OpenFailure();
    const auto size = static_cast<uint64_t>(status.st_size);
    const std::string tag = TagOf(status);
    HttpReply reply;
    reply.fields = {{"ETag", tag}, {"Cache-Control", "private, no-cache"}, {"Accept-Ranges", "bytes"}};
    if (MatchesTag(request.Get("if-none-match"), tag)) {
        reply.status = 304;
        return reply;
    }
    // A range is for GET alone, and only of the file that the browser has the rest of.
    const bool ranged = request.method == "GET" && request.Count("range") == 1 &&
                        (request.Count("if-range") == 0 || request.Get("if-range") == tag);
    const ByteRange range = ReadRange(ranged ? request.Get("range") : std::string_view(), size);
    if (range.kind == ByteRange::Kind::kUnsatisfiable) {
        reply.status = 416;
        reply.fields.emplace_back("Content-Range", "bytes */" + std::to_string(size));
        return reply;
    }
    AddType(reply, TypeOf(capture, file));
    if (range.kind == ByteRange::Kind::kPart) {
        reply.status = 206;
        reply.fields.emplace_back("Content-Range", "bytes " + std::to_string(range.first) + "-" +
                                                       std::to_string(range.first + range.length - 1) + "/" +
                                                       std::to_string(size));
    }
    reply.file = FilePart{std::move(file), range.first, range.length};
    return reply;
}

}  // namespace host::page
