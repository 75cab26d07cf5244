#include "gallery-host/page/Tokens.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include <openssl/crypto.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/FileDescriptor.h"
#include "base/ReadWrite.h"
#include "gallery-host/base/Failure.h"

namespace host::page {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kSuffix = ".html";

// The user's folder for such files; the general one where the session has none.
fs::path LaunchFolder() {
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    struct stat status {};
    if (runtime && runtime[0] == '/' && stat(runtime, &status) == 0 && S_ISDIR(status.st_mode) &&
        status.st_uid == geteuid())
        return runtime;
    std::error_code error;
    const fs::path temporary = fs::temp_directory_path(error);
    return error ? "/tmp" : temporary;
}

std::string LaunchText(const std::string& address) {
    return "<!doctype html><meta charset=\"utf-8\"><title>Gallery</title>"
           "<meta name=\"referrer\" content=\"no-referrer\">"
           "<meta http-equiv=\"refresh\" content=\"0;url=" +
           address + "\"><p><a href=\"" + address + "\">Open the gallery</a></p>\n";
}

}  // namespace

std::string NewSecret() {
    unsigned char bytes[16];
    if (getentropy(bytes, sizeof bytes) != 0)
        throw Failure(kExitFailed, std::string("no random bytes: ") + std::strerror(errno));
    std::string text;
    for (const unsigned char byte : bytes) {
        text += "0123456789abcdef"[byte >> 4];
        text += "0123456789abcdef"[byte & 0x0F];
    }
    return text;
}

bool SameSecret(std::string_view one, std::string_view other) {
    return one.size() == other.size() && CRYPTO_memcmp(one.data(), other.data(), one.size()) == 0;
}

LaunchFile::LaunchFile(const std::string& address) {
    std::string path = (LaunchFolder() / "gallery-page-XXXXXX").string() + std::string(kSuffix);
    // mkstemps creates it for this user alone and follows no link.
    const KXP::FileDescriptor file(mkstemps(path.data(), static_cast<int>(kSuffix.size())));
    if (!file.IsOpen()) throw Failure(kExitFailed, "cannot make " + path + ": " + std::strerror(errno));
    path_ = path;
    if (KXP::WriteFully(file, LaunchText(address))) return;
    const std::string reason = std::strerror(errno);
    unlink(path_.c_str());
    throw Failure(kExitFailed, "cannot write " + path_ + ": " + reason);
}

LaunchFile::~LaunchFile() {
    unlink(path_.c_str());
}

std::string LaunchTokens::Issue(Clock::time_point now) {
    entries_.push_back({NewSecret(), now + kLifetime, nullptr});
    return entries_.back().token;
}

void LaunchTokens::Attach(const std::string& token, std::shared_ptr<LaunchFile> file) {
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [&token](const Entry& entry) { return entry.token == token; });
    if (found != entries_.end()) found->file = std::move(file);
}

bool LaunchTokens::Redeem(std::string_view token, Clock::time_point now) {
    const auto expired = [now](const Entry& entry) { return now >= entry.expires; };
    entries_.erase(std::remove_if(entries_.begin(), entries_.end(), expired), entries_.end());
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [token](const Entry& entry) { return SameSecret(entry.token, token); });
    if (found == entries_.end()) return false;
    entries_.erase(found);
    return true;
}

}  // namespace host::page
