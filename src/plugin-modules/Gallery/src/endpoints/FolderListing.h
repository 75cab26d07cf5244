// The content of one folder as the pages browse it: its files with their types, newest first, and its
// folders. Reads only the disk; knows neither requests nor the tracker.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <utility>

#include "common/json/Json.h"

// Which folders a listing leaves out.
enum class ExcludeDirs { None = 0, Hidden = 1, Empty = 2, HiddenAndEmpty = 3, HiddenOrEmpty = 4 };

// Their words in a request.
extern const std::map<std::string, ExcludeDirs> kExcludeDirsWords;

class FolderListing {
  public:
    // File time in seconds since 1970, name, type, subtype, source, and the path of the thumbnail, if any.
    using FileItemData = std::tuple<int64_t, std::string, std::string, std::string, std::string, std::string>;

    // Compares bytes; a shorter name comes before a longer one that begins with it.
    struct DirectoryCompare {
        bool operator()(const std::string& a, const std::string& b) const;
    };

    struct Options {
        std::string directory;  // ends in "/"
        bool onlyOwn = false;   // leave out files that are not the product's
        ExcludeDirs exclude = ExcludeDirs::None;
        bool showExr = false;
    };

    explicit FolderListing(Options options) : options_(std::move(options)) {}

    // Adds the content of the folder, until `cancelled` is set. A file that cannot be opened or inspected and
    // a name that is not UTF-8 are logged and left out; a folder that cannot be opened counts as empty.
    void Read(const std::atomic<bool>& cancelled);

    void InsertIntoSet(const FileItemData& item) { files_.insert(item); }
    void InsertDirectory(const std::string& name) { directories_.insert(name); }

    // Writes the members "files" and "directories" of a response.
    void Write(KXP::Value& response, KXP::Allocator& allocator) const;

  private:
    void AddDirectory(const std::string& name);
    void InspectFile(const std::string& name);

    const Options options_;
    std::set<FileItemData> files_;  // oldest first
    std::set<std::string, DirectoryCompare> directories_;
};
