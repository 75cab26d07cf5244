// Addresses of the cloud, in lines: the one that is configured, where an answer points to, and a path.
#include <memory>
#include <string>

#include "fuzz/Plain.h"
#include "libraries/cobalix-util/cloud/Error.h"
#include "libraries/cobalix-util/cloud/Manifest.h"
#include "libraries/cobalix-util/cloud/Url.h"

namespace {

using KXP::Cloud::Url;
using plain::Demand;

std::string Part(const Url& url, CURLUPart part) {
    char* text = nullptr;
    if (curl_url_get(url.get(), part, &text, 0) != CURLUE_OK) return "";
    return std::unique_ptr<char, void (*)(void*)>(text, curl_free).get();
}

std::string Unescaped(const std::string& text) {
    int size = 0;
    const std::unique_ptr<char, void (*)(void*)> bytes(
        curl_easy_unescape(nullptr, text.data(), static_cast<int>(text.size()), &size), curl_free);
    // A length of 0 would make it measure the text itself.
    return text.empty() ? "" : std::string(bytes.get(), static_cast<size_t>(size));
}

bool IsThisMachine(const std::string& host) {
    return host == "localhost" || host == "[::1]" || plain::StartsWith(host, "127.");
}

void CheckAllowed(const Url& url) {
    const std::string scheme = Part(url, CURLUPART_SCHEME);
    const bool isPlain = scheme == "http" && IsThisMachine(Part(url, CURLUPART_HOST));
    Demand(scheme == "https" || scheme == "file" || isPlain);
    Demand(Part(url, CURLUPART_USER).empty() && Part(url, CURLUPART_PASSWORD).empty());
}

void CheckBelow(const Url& url, const std::string& path) {
    const Url below = url.Below(path);
    for (const CURLUPart part : {CURLUPART_SCHEME, CURLUPART_HOST, CURLUPART_PORT})
        Demand(Part(below, part) == Part(url, part));
    const std::string whole = Unescaped(Part(below, CURLUPART_PATH));
    Demand(whole.size() > path.size() && whole.substr(whole.size() - path.size() - 1) == "/" + path);
    Demand(Url::OfFolder("/" + path).FilePath() == "/" + path);
}

void CheckRedirect(const Url& url, const std::string& location) {
    const Url target = url.RedirectedTo(location);
    CheckAllowed(target);
    Demand(!target.IsFile() && (Part(target, CURLUPART_SCHEME) == "https" || url.IsLoopback()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const size_t second = std::min(text.find('\n'), size);
    const size_t third = std::min(text.find('\n', second + 1), size);
    const std::string path = third < size ? text.substr(third + 1) : "";
    try {
        const Url url(text.substr(0, second));
        CheckAllowed(url);
        if (KXP::Cloud::IsPlainPath(path)) CheckBelow(url, path);
        if (second < size) CheckRedirect(url, text.substr(second + 1, third - second - 1));
    } catch (const KXP::Cloud::Error&) {
        return 0;
    }
    return 0;
}
