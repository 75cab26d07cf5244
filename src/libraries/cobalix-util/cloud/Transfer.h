// Fetches over libcurl, one after the other, with time limits, and left within a tenth of a second when asked
// to. A Transfer keeps its connections for the next fetch and belongs to one thread; any number of threads
// may have one each.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include <curl/curl.h>

#include "libraries/cobalix-util/cloud/Error.h"
#include "libraries/cobalix-util/cloud/Url.h"

namespace KXP::Cloud {

struct Limits {
    std::chrono::milliseconds connect{10000};
    std::chrono::milliseconds stall{15000};  // without a byte
    // A whole fetch has this long, and what its size takes at the least pace.
    std::chrono::milliseconds whole{60000};
    uint64_t leastBytesPerSecond = uint64_t{16} << 10;
    int redirects = 5;
};

// Takes the next bytes of a body; may throw, which ends the fetch.
using Sink = std::function<void(const char* bytes, size_t size)>;

class Transfer {
  public:
    Transfer(const Limits& limits, StopAsked stopAsked);  // throws Error when libcurl cannot be used

    // Gives the body of what lies at `url` to `sink`, which has had a part of it when this throws Error: for
    // any answer but a whole one, for one of more than `limit` bytes, in time-outs and when asked to stop.
    void Fetch(const Url& url, uint64_t limit, const Sink& sink);

  private:
    struct Free {
        void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
    };

    Limits limits_;
    StopAsked stopAsked_;
    std::unique_ptr<CURLM, Free> multi_;
};

}  // namespace KXP::Cloud
