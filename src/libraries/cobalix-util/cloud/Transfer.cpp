#include "libraries/cobalix-util/cloud/Transfer.h"

#include <exception>
#include <new>
#include <optional>
#include <utility>

#include <dlfcn.h>
#include <sys/stat.h>

namespace KXP::Cloud {
namespace {

using Clock = std::chrono::steady_clock;

// How often a fetch that waits for bytes checks the clock and whether it is to stop.
constexpr int kTickMs = 100;
constexpr long kOk = 200;

// A name that takes long to look up is left to a thread of libcurl's, which may outlive the fetch and even
// this library. So libcurl stays where it is once it has been used, and its global state with it.
bool PrepareLibcurl() {
    Dl_info libcurl{};
    if (dladdr(reinterpret_cast<const void*>(&curl_multi_perform), &libcurl) == 0) return false;
    (void)dlopen(libcurl.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
    return curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
}

// libcurl would wait in vain for the other end of a pipe.
void RequireRegularFile(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) throw Error("no such file");
}

bool IsRedirect(long status) {
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

// One request and its answer.
class Exchange {
  public:
    Exchange(CURLM* multi, const Url& url, const Limits& limits, const StopAsked& stopAsked,
             Clock::time_point deadline, uint64_t limit, const Sink& sink)
        : multi_(multi),
          easy_(curl_easy_init()),
          limits_(limits),
          stopAsked_(stopAsked),
          deadline_(deadline),
          left_(limit),
          sink_(sink) {
        if (!easy_) throw std::bad_alloc();
        SetOptions(url, limit);
    }
    ~Exchange() {
        curl_multi_remove_handle(multi_, easy_);
        curl_easy_cleanup(easy_);
    }
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;

    // No value when the whole body was given to the sink, else where the answer points to.
    std::optional<std::string> Run();

  private:
    template <typename Value>
    void Set(CURLoption option, Value value) {
        if (curl_easy_setopt(easy_, option, value) != CURLE_OK) throw Error("libcurl lacks an option");
    }
    void SetOptions(const Url& url, uint64_t limit);
    void Perform();
    CURLcode Result();
    void ThrowIfOver() const;
    void Take(const char* bytes, size_t size);

    long Status() const {
        long status = 0;
        curl_easy_getinfo(easy_, CURLINFO_RESPONSE_CODE, &status);
        return status;
    }

    static size_t OnBody(char* bytes, size_t, size_t size, void* self);
    static size_t OnHeader(char*, size_t, size_t size, void* self) {
        static_cast<Exchange*>(self)->lastByte_ = Clock::now();
        return size;
    }

    CURLM* multi_;
    CURL* easy_;
    const Limits& limits_;
    const StopAsked& stopAsked_;
    const Clock::time_point deadline_;
    uint64_t left_;
    const Sink& sink_;
    bool isFile_ = false;
    Clock::time_point lastByte_ = Clock::now();
    std::exception_ptr thrown_;  // by the sink, on its way around libcurl
    char text_[CURL_ERROR_SIZE] = "";
};

void Exchange::SetOptions(const Url& url, uint64_t limit) {
    isFile_ = url.IsFile();
    Set(CURLOPT_CURLU, url.get());
    Set(CURLOPT_PROTOCOLS_STR, "https,http,file");
    Set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    Set(CURLOPT_USERAGENT, "CobalixUtil");
    Set(CURLOPT_NOSIGNAL, 1L);
    Set(CURLOPT_QUICK_EXIT, 1L);
    Set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(limits_.connect.count()));
    Set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(limit));
    Set(CURLOPT_ERRORBUFFER, text_);
    Set(CURLOPT_WRITEFUNCTION, &Exchange::OnBody);
    Set(CURLOPT_WRITEDATA, this);
    Set(CURLOPT_HEADERFUNCTION, &Exchange::OnHeader);
    Set(CURLOPT_HEADERDATA, this);
    // What is on this machine is not asked for elsewhere, whatever the environment says of proxies.
    if (url.IsLoopback()) Set(CURLOPT_PROXY, "");
}

std::optional<std::string> Exchange::Run() {
    Perform();
    const CURLcode result = Result();
    if (thrown_) std::rethrow_exception(thrown_);
    // The status comes first: a body that nobody wants has ended the exchange.
    const long status = Status();
    if (!isFile_ && IsRedirect(status)) {
        curl_header* location = nullptr;
        if (curl_easy_header(easy_, "Location", 0, CURLH_HEADER, -1, &location) != CURLHE_OK)
            throw Error("an answer that points nowhere");
        return location->value;
    }
    if (!isFile_ && status != 0 && status != kOk) throw Error("status " + std::to_string(status));
    if (result != CURLE_OK) throw Error(*text_ ? text_ : curl_easy_strerror(result));
    return {};
}

void Exchange::Perform() {
    if (curl_multi_add_handle(multi_, easy_) != CURLM_OK) throw Error("libcurl takes no request");
    for (int running = 1;;) {
        ThrowIfStopped(stopAsked_);
        if (curl_multi_perform(multi_, &running) != CURLM_OK) throw Error("libcurl failed");
        if (running == 0) return;
        ThrowIfOver();
        curl_multi_poll(multi_, nullptr, 0, kTickMs, nullptr);
    }
}

CURLcode Exchange::Result() {
    int waiting = 0;
    while (const CURLMsg* message = curl_multi_info_read(multi_, &waiting))
        if (message->msg == CURLMSG_DONE && message->easy_handle == easy_) return message->data.result;
    return CURLE_GOT_NOTHING;
}

void Exchange::ThrowIfOver() const {
    const Clock::time_point now = Clock::now();
    if (now - lastByte_ > limits_.stall) throw Error("no byte for too long");
    if (now > deadline_) throw Error("too slow");
}

void Exchange::Take(const char* bytes, size_t size) {
    ThrowIfStopped(stopAsked_);
    ThrowIfOver();
    lastByte_ = Clock::now();
    if (size > left_) throw Error("more bytes than announced");
    left_ -= size;
    sink_(bytes, size);
}

size_t Exchange::OnBody(char* bytes, size_t, size_t size, void* self) {
    auto& exchange = *static_cast<Exchange*>(self);
    // Anything else than `size` ends the exchange.
    if (!exchange.isFile_ && exchange.Status() != kOk) return size + 1;
    try {
        exchange.Take(bytes, size);
        return size;
    } catch (...) {
        exchange.thrown_ = std::current_exception();
        return size + 1;
    }
}

}  // namespace

Transfer::Transfer(const Limits& limits, StopAsked stopAsked)
    : limits_(limits), stopAsked_(std::move(stopAsked)) {
    static const bool ready = PrepareLibcurl();
    if (ready) multi_.reset(curl_multi_init());
    if (!multi_) throw Error("libcurl cannot be used");
}

void Transfer::Fetch(const Url& url, uint64_t limit, const Sink& sink) {
    const std::chrono::seconds atLeastPace(limit / limits_.leastBytesPerSecond);
    const Clock::time_point deadline = Clock::now() + limits_.whole + atLeastPace;
    std::optional<Url> target;
    for (int redirects = 0; redirects <= limits_.redirects; ++redirects) {
        const Url& now = target ? *target : url;
        if (now.IsFile()) RequireRegularFile(now.FilePath());
        const auto location = Exchange(multi_.get(), now, limits_, stopAsked_, deadline, limit, sink).Run();
        if (!location) return;
        target = now.RedirectedTo(*location);
    }
    throw Error("an answer that points on too often");
}

}  // namespace KXP::Cloud
