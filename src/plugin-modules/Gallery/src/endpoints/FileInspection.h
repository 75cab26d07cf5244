// What a listing says of the files in a folder: their times, and what they are by their bytes.
#pragma once

#include <atomic>
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
    const std::string_view* type = nullptr;  // a word of PageWords.h, as the next two; null: not to be listed
    const std::string_view* subtype = nullptr;
    const std::string_view* source = nullptr;
    const std::string* thumbnail = nullptr;  // its path, if there is one
};

// Inspects files of one folder. One thread.
class FileInspector {
  public:
    struct Rules {
        bool onlyOwn = false;  // leave out files that are not the product's
        bool showExr = false;

        // Whether files of that name are left out, whatever they are.
        bool LeaveOut(std::string_view name) const;
    };

    // `directory` ends in "/", and the descriptor `folder` is of it.
    FileInspector(const std::string& directory, int folder, Rules rules)
        : directory_(directory), folder_(folder), rules_(rules) {}

    // Completes the file of that name, if it is to be listed; it then refers to texts of the inspector's. One
    // that cannot be opened or inspected is logged. Throws std::bad_alloc.
    void Inspect(ListedFile& file);

  private:
    void InspectFile(const std::string& name, ListedFile& file);
    bool ReadTime(const std::string& name, int64_t& time) const;

    const std::string& directory_;
    const int folder_;
    const Rules rules_;
    media::SniffResult sniffed_;
    std::string name_;  // with a zero byte at its end
    std::deque<std::string> thumbnails_;
};

// Inspects files on this thread and, where that would take long, on a second one: a folder is read much
// faster from memory than files are opened, and a slow disk is asked for two at a time.
class FileInspection {
  public:
    FileInspection(const std::string& directory, int folder, FileInspector::Rules rules)
        : inspectors_{{directory, folder, rules}, {directory, folder, rules}} {}

    // Completes the files, of which it gets the names, and removes those that are not to be listed. They
    // refer to texts of the inspection's. Once `cancelled` is set, the rest is removed. Throws
    // std::bad_alloc.
    void Run(std::vector<ListedFile>& files, const std::atomic<bool>& cancelled);

  private:
    class Shares;

    void InspectOnTwo(Shares& shares);

    FileInspector inspectors_[2];
};
