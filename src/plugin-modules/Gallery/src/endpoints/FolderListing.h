// The content of one folder as the pages browse it: its files with their types, newest first, and its
// folders. Reads only the disk; knows neither requests nor the tracker.
#pragma once

#include <atomic>
#include <deque>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "common/json/IJsonSink.h"
#include "plugin-modules/Gallery/src/endpoints/FileInspection.h"

// Which folders a listing leaves out.
enum class ExcludeDirs { None = 0, Hidden = 1, Empty = 2, HiddenAndEmpty = 3, HiddenOrEmpty = 4 };

// Their words in a request.
extern const std::map<std::string, ExcludeDirs> kExcludeDirsWords;

class FolderListing {
  public:
    using FileItemData = ListedFile;

    // Compares bytes; a shorter name comes before a longer one that begins with it.
    struct DirectoryCompare {
        bool operator()(const std::string& a, const std::string& b) const;
    };

    struct Options {
        std::string directory;  // ends in "/"
        ExcludeDirs exclude = ExcludeDirs::None;
        FileInspector::Rules files;
    };

    explicit FolderListing(Options options) : options_(std::move(options)) {}
    // Items refer to texts in it.
    FolderListing(const FolderListing&) = delete;
    FolderListing& operator=(const FolderListing&) = delete;

    // Adds the content of the folder, until `cancelled` is set; to be called once. A file that cannot be
    // opened or inspected and a name that is not UTF-8 are logged and left out; a folder that cannot be
    // opened counts as empty.
    void Read(const std::atomic<bool>& cancelled);

    // Copies the texts of the item. Its words may be any.
    void InsertIntoSet(const FileItemData& item);
    void InsertDirectory(const std::string& name) { directories_.insert(name); }

    // Sorts the items, and drops all but one of equal ones. Before Write.
    void Sort();
    // Writes the members "files" and "directories" of a response.
    void Write(KXP::IJsonSink& sink) const;

  private:
    void AddDirectory(const std::string& name);

    const Options options_;
    std::string names_;  // of the files in the folder, each with a zero byte
    std::optional<FileInspection> inspection_;
    std::deque<std::string> inserted_;  // texts
    std::vector<FileItemData> files_;   // once sorted, oldest first
    std::set<std::string, DirectoryCompare> directories_;
};
