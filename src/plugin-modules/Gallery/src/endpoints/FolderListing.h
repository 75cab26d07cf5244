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

    // Copies the name.
    void InsertIntoSet(FileItemData item);
    void InsertDirectory(const std::string& name) { directories_.insert(name); }

    // Sorts the items by time and, where that is the same, by their texts, and drops all but one of equal
    // ones. Before Write.
    void Sort();
    // Writes the members "files" and "directories" of a response.
    void Write(KXP::IJsonSink& sink) const;

  private:
    // An item, with the part of its name by which nearly all differ.
    struct Place {
        int64_t time;
        uint64_t nameKey;
        const FileItemData* item;

        // The names of one folder differ, so these two settle nearly all without a look at the item.
        bool operator<(const Place& other) const {
            if (time != other.time) return time < other.time;
            if (nameKey != other.nameKey) return nameKey < other.nameKey;
            return IsBefore(*item, *other.item);
        }
    };

    // By the texts.
    static bool IsBefore(const FileItemData& item, const FileItemData& other);

    void AddDirectory(const std::string& name);

    const Options options_;
    std::string names_;  // of the files in the folder, each with a zero byte
    std::optional<FileInspection> inspection_;
    std::deque<std::string> inserted_;  // names
    std::vector<FileItemData> files_;   // in no order
    std::vector<Place> sorted_;         // oldest first
    std::set<std::string, DirectoryCompare> directories_;
};
