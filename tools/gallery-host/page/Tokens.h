// Secrets of one run of the page's server, and how the first one reaches the user's browser.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace host::page {

// 128 random bits of the system's as 32 hexadecimal digits. Throws Failure when it has none.
std::string NewSecret();

// Takes equally long wherever texts of one length differ.
bool SameSecret(std::string_view one, std::string_view other);

// A file that only this user can read and that leads a browser to `address`, so that the token in it is on no
// command line, which all users could read. Removed with this object.
class LaunchFile {
  public:
    explicit LaunchFile(const std::string& address);  // throws Failure
    ~LaunchFile();
    LaunchFile(const LaunchFile&) = delete;
    LaunchFile& operator=(const LaunchFile&) = delete;

    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

// Tokens that open the page once each, within a short time. For one thread at a time.
class LaunchTokens {
  public:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::minutes kLifetime{5};

    std::string Issue(Clock::time_point now);
    // Removes the file once the token is redeemed.
    void Attach(const std::string& token, std::shared_ptr<LaunchFile> file);
    // True the first time, within the lifetime.
    bool Redeem(std::string_view token, Clock::time_point now);

  private:
    struct Entry {
        std::string token;
        Clock::time_point expires;
        std::shared_ptr<LaunchFile> file;  // may be null
    };
    std::vector<Entry> entries_;
};

}  // namespace host::page
