// The names by which a page's addresses know captures: a path never appears in an address, and a capture that
// changes gets a new name, so that browsers may keep its thumbnails.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "common/json/Json.h"
#include "common/threads/Mutex.h"

namespace host::page {

struct Capture {
    std::string path;
    bool isVideo = false;
};

// May be used from any thread.
class Handles {
  public:
    // How many are kept at least; those that no message has named for longest are forgotten.
    static constexpr size_t kKept = size_t{1} << 17;

    explicit Handles(size_t kept = kKept) : kept_(kept) {}

    // Adds the member "handle", 32 hexadecimal digits, to each object in `value` that is a record of a
    // capture, and remembers it.
    void AddTo(KXP::Value& value, KXP::Allocator& allocator) EXCLUDES(mutex_);

    std::optional<Capture> Find(std::string_view handle) const EXCLUDES(mutex_);
    // Whether a record with that path was seen.
    bool Knows(const std::string& path) const EXCLUDES(mutex_);

  private:
    // The first half of a SHA-256 digest.
    using Digest = std::array<uint8_t, 16>;
    struct Hash {
        size_t operator()(const Digest& digest) const;
    };
    using Captures = std::unordered_map<Digest, Capture, Hash>;

    static Digest DigestOf(const KXP::Value& record);
    static std::optional<Digest> Read(std::string_view handle);
    void Remember(const Digest& digest, Capture capture) EXCLUDES(mutex_);

    const size_t kept_;
    mutable KXP::Mutex mutex_;
    Captures recent_ GUARDED_BY(mutex_);
    Captures former_ GUARDED_BY(mutex_);  // until `recent_` is full again
};

}  // namespace host::page
