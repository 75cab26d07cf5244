// Addresses in the cloud, and which of them may be asked at all: https; plain http on this machine alone, for
// developers; files. None with a user or a password in it.
#pragma once

#include <memory>
#include <string>

#include <curl/curl.h>

namespace KXP::Cloud {

class Url {
  public:
    // Throws Error for a text that is no address, and for one that may not be asked.
    explicit Url(const std::string& text);
    static Url OfFolder(const std::string& path);

    // The address of what lies beneath this one at a path for which IsPlainPath holds.
    Url Below(const std::string& path) const;

    // Where an answer of this address points to, in whole or relative to it. Throws Error for a place that an
    // answer may not point to: a file, and plain http except from one place of this machine to another.
    Url RedirectedTo(const std::string& location) const;

    bool IsFile() const;
    bool IsLoopback() const;
    std::string FilePath() const;  // of a file's address
    CURLU* get() const { return parts_.get(); }

  private:
    struct Free {
        void operator()(CURLU* parts) const { curl_url_cleanup(parts); }
    };
    using Parts = std::unique_ptr<CURLU, Free>;

    explicit Url(Parts parts);
    Parts Copy() const;
    std::string Part(CURLUPart part, unsigned flags = 0) const;

    Parts parts_;
};

}  // namespace KXP::Cloud
