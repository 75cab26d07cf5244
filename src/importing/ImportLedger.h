// What was ever imported, one JSON object a line in a file beside the settings, so that the same picture or
// video is imported once.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace importing {

struct ImportedFile {
    std::string picture;  // the digest of its picture's data
    std::string source;
    uint64_t size = 0;  // of the source
    int64_t time = 0;   // of the source, in ns since 1970
    std::string path;   // where it went
};

class ImportLedger {
  public:
    // Reads the file, if it is there. Lines that are damaged count as absent. Throws std::runtime_error when
    // it cannot be read: everything would be imported once more.
    explicit ImportLedger(std::string path);

    bool KnowsSource(const std::string& source, uint64_t size, int64_t time) const {
        return sources_.count({source, size, time}) > 0;
    }
    bool KnowsPicture(const std::string& picture) const { return pictures_.count(picture) > 0; }

    // Is known from now on, and is in the file after the next Save.
    void Add(const ImportedFile& file);
    // Appends what was added. Throws std::runtime_error.
    void Save();

  private:
    void Know(const ImportedFile& file);

    const std::string path_;
    std::set<std::tuple<std::string, uint64_t, int64_t>> sources_;
    std::set<std::string> pictures_;
    std::string unsaved_;
};

}  // namespace importing
