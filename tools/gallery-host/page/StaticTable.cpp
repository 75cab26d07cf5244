#include "gallery-host/page/StaticTable.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "base/ReadWrite.h"
#include "gallery-host/base/Failure.h"

namespace host::page {
namespace {

namespace fs = std::filesystem;

constexpr size_t kMaxBytes = size_t{32} << 20;
// Names below it contain a hash of their content.
constexpr std::string_view kAssets = "/assets/";

struct Type {
    std::string_view extension;
    const char* type;
};

constexpr std::array<Type, 10> kTypes = {{
    {".html", "text/html; charset=utf-8"},
    {".js", "text/javascript; charset=utf-8"},
    {".css", "text/css; charset=utf-8"},
    {".json", "application/json"},
    {".svg", "image/svg+xml"},
    {".png", "image/png"},
    {".ico", "image/x-icon"},
    {".woff2", "font/woff2"},
    {".webmanifest", "application/manifest+json"},
    {".txt", "text/plain; charset=utf-8"},
}};

const char* TypeOf(const fs::path& path) {
    const std::string extension = path.extension().string();
    for (const Type& type : kTypes)
        if (type.extension == extension) return type.type;
    return "application/octet-stream";
}

}  // namespace

StaticTable::StaticTable(const std::string& folder) {
    std::error_code error;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder, error))
        if (entry.is_regular_file(error))
            Read(entry.path().string(), "/" + entry.path().lexically_relative(folder).string());
    const auto index = files_.find("/index.html");
    if (index == files_.end())
        throw Failure(kExitFailed, "the page is not in " + folder +
                                       "; it is built where npm is installed (Debian's packages nodejs and "
                                       "npm): install it and build again");
    files_["/"] = index->second;
}

void StaticTable::Read(const std::string& path, const std::string& name) {
    KXP::FileBytes content;
    const KXP::FileDescriptor file = KXP::OpenForRead(path);
    if (!file.IsOpen() || !KXP::ReadWhole(file, kMaxBytes, content))
        throw Failure(kExitFailed, "cannot read " + path + ": " + std::strerror(errno));
    bytes_ += content.size;
    if (bytes_ > kMaxBytes) throw Failure(kExitFailed, "the page's files are too large: " + path);
    files_[name] = {TypeOf(path), std::string(content.view())};
}

std::optional<HttpReply> StaticTable::Find(const std::string& path) const {
    const auto file = files_.find(path);
    if (file == files_.end()) return std::nullopt;
    HttpReply reply;
    reply.fields.emplace_back("Content-Type", file->second.type);
    if (path.compare(0, kAssets.size(), kAssets) == 0)
        reply.fields.emplace_back("Cache-Control", "private, max-age=31536000, immutable");
    reply.body = file->second.bytes;
    return reply;
}

}  // namespace host::page
