// What a listing says of the files in a folder: their times, and what they are by their bytes.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "plugin-modules/Gallery/src/media/SniffResult.h"

// One file. The texts lie elsewhere, with whoever made the item.
struct ListedFile {
    int64_t time = 0;  // in seconds since 1970
    std::string_view name;
    std::string_view type;  // words of PageWords.h, as the next two
    std::string_view subtype;
    std::string_view source;
    std::string_view thumbnail;  // its path, if there is one

    // By time, and by text where that is the same.
    bool operator<(const ListedFile& other) const;
    bool operator==(const ListedFile& other) const;
};

// Inspects files of one folder and keeps what it finds. One thread.
class FileInspector {
  public:
    struct Rules {
        bool onlyOwn = false;  // leave out files that are not the product's
        bool showExr = false;
    };

    // `directory` ends in "/", and the descriptor `folder` is of it.
    FileInspector(const std::string& directory, int folder, Rules rules)
        : directory_(directory), folder_(folder), rules_(rules) {}

    // `name` outlives what is found. A file that cannot be opened or inspected is logged and left out. Throws
    // std::bad_alloc.
    void Inspect(std::string_view name);

    // Refers to texts of the inspector's.
    const std::vector<ListedFile>& found() const { return found_; }

  private:
    void InspectFile(const std::string& name, ListedFile& file);
    bool ReadTime(const std::string& name, int64_t& time) const;

    const std::string& directory_;
    const int folder_;
    const Rules rules_;
    media::SniffResult sniffed_;
    std::string name_;  // with a zero byte at its end
    std::vector<ListedFile> found_;
    std::deque<std::string> thumbnails_;
};

// Inspects files on this thread and, where it pays, on a second one: a folder is read much faster from memory
// than files are opened, and a slow disk is asked for two at a time.
class FileInspection {
  public:
    FileInspection(const std::string& directory, int folder, FileInspector::Rules rules)
        : inspectors_{{directory, folder, rules}, {directory, folder, rules}} {}

    // Until `cancelled` is set. Throws std::bad_alloc.
    void Run(const std::vector<std::string_view>& names, const std::atomic<bool>& cancelled);
    // Adds what was found, in no order. It refers to texts of the inspection's.
    void AddFound(std::vector<ListedFile>& files) const;

  private:
    FileInspector inspectors_[2];
};
