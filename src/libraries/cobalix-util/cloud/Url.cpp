#include "libraries/cobalix-util/cloud/Url.h"

#include <algorithm>
#include <new>
#include <utility>

#include <arpa/inet.h>

#include "libraries/cobalix-util/cloud/Error.h"

namespace KXP::Cloud {
namespace {

using Text = std::unique_ptr<char, void (*)(void*)>;

CURLU* Checked(CURLU* parts) {
    if (!parts) throw std::bad_alloc();
    return parts;
}

void SetPart(CURLU* parts, CURLUPart part, const std::string& text, unsigned flags = 0) {
    const CURLUcode code = curl_url_set(parts, part, text.c_str(), flags);
    if (code != CURLUE_OK) throw Error(std::string("no usable address: ") + curl_url_strerror(code));
}

// Each part of a path by itself, so that no character of it means anything in an address.
std::string Escaped(const std::string& path) {
    std::string escaped;
    for (size_t at = 0; at <= path.size();) {
        const size_t slash = std::min(path.find('/', at), path.size());
        const Text part(curl_easy_escape(nullptr, path.data() + at, static_cast<int>(slash - at)), curl_free);
        // A length of 0 would make it measure the text itself.
        if (slash > at) escaped += part ? part.get() : throw std::bad_alloc();
        if (slash < path.size()) escaped += '/';
        at = slash + 1;
    }
    return escaped;
}

bool IsLoopbackHost(const std::string& host) {
    in_addr address{};
    if (inet_pton(AF_INET, host.c_str(), &address) == 1) return ntohl(address.s_addr) >> 24 == 127;
    // libcurl takes this name for the machine itself without asking anybody.
    return host == "localhost" || host == "[::1]";
}

}  // namespace

Url::Url(const std::string& text)
    : Url([&] {
          Parts parts(Checked(curl_url()));
          SetPart(parts.get(), CURLUPART_URL, text, CURLU_DISALLOW_USER);
          return parts;
      }()) {}

Url::Url(Parts parts) : parts_(std::move(parts)) {
    const std::string scheme = Part(CURLUPART_SCHEME);
    if (scheme != "https" && scheme != "file" && !(scheme == "http" && IsLoopback()))
        throw Error("an address that is neither https, nor http on this machine, nor a file");
}

Url Url::OfFolder(const std::string& path) {
    return Url("file://" + Escaped(path));
}

Url Url::Below(const std::string& path) const {
    Parts parts = Copy();
    std::string folder = Part(CURLUPART_PATH);
    if (folder.empty() || folder.back() != '/') folder += '/';
    SetPart(parts.get(), CURLUPART_PATH, folder + Escaped(path));
    return Url(std::move(parts));
}

Url Url::RedirectedTo(const std::string& location) const {
    Parts parts = Copy();
    SetPart(parts.get(), CURLUPART_URL, location, CURLU_DISALLOW_USER | CURLU_URLENCODE);
    Url target(std::move(parts));
    const std::string scheme = target.Part(CURLUPART_SCHEME);
    // http is then on this machine; from elsewhere nobody is led there.
    if (scheme == "https" || (scheme == "http" && IsLoopback())) return target;
    throw Error("an answer that points to a place that may not be asked");
}

bool Url::IsFile() const {
    return Part(CURLUPART_SCHEME) == "file";
}

bool Url::IsLoopback() const {
    return !IsFile() && IsLoopbackHost(Part(CURLUPART_HOST));
}

std::string Url::FilePath() const {
    return Part(CURLUPART_PATH, CURLU_URLDECODE);
}

Url::Parts Url::Copy() const {
    return Parts(Checked(curl_url_dup(parts_.get())));
}

std::string Url::Part(CURLUPart part, unsigned flags) const {
    char* text = nullptr;
    if (curl_url_get(parts_.get(), part, &text, flags) != CURLUE_OK) return "";
    return Text(text, curl_free).get();
}

}  // namespace KXP::Cloud
