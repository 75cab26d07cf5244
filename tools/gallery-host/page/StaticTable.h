// The page's own files, read once at the start: no path of a request ever reaches the file system.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "gallery-host/page/HttpMessage.h"

namespace host::page {

class StaticTable {
  public:
    // Reads all files below the folder. Throws Failure when there is no index.html, one cannot be read, or
    // there are too many bytes.
    explicit StaticTable(const std::string& folder);

    // The file of that path, "/" for index.html; nothing for another.
    std::optional<HttpReply> Find(const std::string& path) const;

  private:
    struct File {
        const char* type;
        std::string bytes;
    };
    void Read(const std::string& path, const std::string& name);

    std::map<std::string, File> files_;
    size_t bytes_ = 0;
};

}  // namespace host::page
