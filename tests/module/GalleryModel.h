// What is to be on record, and what was given to it, worked out from what was done to the files alone.
#pragma once

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <sys/stat.h>

#include "tests/module/TrackerRecords.h"

class GalleryModel {
  public:
    explicit GalleryModel(std::string gallery) : gallery_(std::move(gallery)) {}

    const std::string& gallery() const { return gallery_; }

    // A file has new bytes from now on. Over a capture on record they renew it.
    void Put(const std::string& path, bool own) {
        File& file = files_[path];
        const bool renewed = file.onDisk && file.own && own;
        // What may not have been on record is not renewed for sure.
        if (!renewed || file.touched) Touch(file);
        file.onDisk = true;
        file.own = own;
        file.rewritten = true;
    }

    // A file, or a folder with all beneath.
    void Remove(const std::string& path) {
        for (const std::string& gone : FilesAt(path)) {
            Touch(files_[gone]);
            files_[gone].onDisk = false;
        }
    }

    // Likewise, over what there may be of a file.
    void Copy(const std::string& from, const std::string& to) {
        for (const std::string& path : FilesAt(from))
            Put(to + path.substr(from.size()), files_[path].own);
    }
    void Move(const std::string& from, const std::string& to) {
        for (const std::string& path : FilesAt(from)) {
            const File moved = files_[path];
            File& file = files_[to + path.substr(from.size())];
            Put(to + path.substr(from.size()), moved.own);
            // What was given follows its file. A file without anything takes the place of the one before, and
            // to a rebuild is a new one there.
            file.rewritten = moved.rewritten || (moved.caption == "" && file.caption != "");
            if (moved.caption != "") file.caption = moved.caption;
            // With new bytes in a new place it is known by nothing.
            if (moved.rewritten && file.caption != "") file.caption.reset();
        }
        Remove(from);
    }
    // By request, to a place where nothing was: the record goes along.
    void MoveRecord(const std::string& from, const std::string& to) {
        const File moved = files_[from];
        Move(from, to);
        files_[to].caption = moved.caption;
        files_[to].id = moved.id;
        files_[to].touched = moved.touched;
    }

    void Caption(const std::string& path, const std::string& caption) { files_[path].caption = caption; }
    // Whether it was on record when all was quiet, and has been since.
    bool IsKnown(const std::string& path) const {
        const auto file = files_.find(path);
        return file != files_.end() && file->second.id != 0 && !file->second.touched;
    }

    // Records were made anew from the disk, of a folder that may have become the gallery with this.
    void Rebuilt(const std::string& gallery) {
        gallery_ = gallery;
        for (auto& [path, file] : files_) {
            file.touched = true;
            // What has changed in the meantime is another file for the rebuild.
            if (file.rewritten && file.caption != "") file.caption.reset();
        }
    }

    // Why these are not the right records; empty when they are.
    std::string Compare(const TrackerRecords& records) const {
        std::string wrong;
        for (const auto& [path, file] : files_) {
            const auto record = records.ids.find(path);
            const bool known = record != records.ids.end();
            if (IsCapture(path, file) != known)
                wrong.append(known ? "on record: " : "not on record: ").append(path).append("\n");
            if (!known) continue;
            if (!file.touched && file.id != 0 && record->second != file.id)
                wrong += "id " + std::to_string(file.id) + " is now " + std::to_string(record->second) +
                         ": " + path + "\n";
            const std::string& caption = records.captions.at(path);
            const auto before = given_.find(Identity(path));
            const bool cameBack = before != given_.end() && before->second == caption;
            if (file.caption && *file.caption != caption && !cameBack)
                wrong.append(*file.caption)
                    .append(" is now ")
                    .append(caption)
                    .append(": ")
                    .append(path + "\n");
        }
        for (const auto& [path, id] : records.ids)
            if (files_.count(path) == 0) wrong += "on record, and never made: " + path + "\n";
        return wrong;
    }

    // All is quiet, and these are the records.
    void Settle(const TrackerRecords& records) {
        for (auto entry = files_.begin(); entry != files_.end();) {
            File& file = entry->second;
            if (!file.onDisk) {
                entry = files_.erase(entry);
                continue;
            }
            const auto record = records.ids.find(entry->first);
            file.id = record != records.ids.end() ? record->second : 0;
            file.touched = false;
            file.rewritten = false;
            if (file.id != 0) file.caption = records.captions.at(entry->first);
            if (file.caption && file.caption != "") given_[Identity(entry->first)] = *file.caption;
            ++entry;
        }
    }

    // Those on disk: the file itself, or what is beneath the folder.
    std::vector<std::string> FilesAt(const std::string& path) const {
        std::vector<std::string> found;
        for (const auto& [name, file] : files_)
            if (file.onDisk && (name == path || IsBeneath(name, path))) found.push_back(name);
        return found;
    }

  private:
    struct File {
        bool onDisk = false;
        bool own = false;
        int id = 0;                               // of its record when all was quiet; 0 without one
        bool touched = false;                     // since then, so that its record may be another one
        bool rewritten = false;                   // since then
        std::optional<std::string> caption = "";  // none where it may be lost or not
    };

    // A copy keeps the time of its source. In the place of the source it is taken for it.
    static std::string Identity(const std::string& path) {
        struct stat status {};
        if (lstat(path.c_str(), &status) != 0) return {};
        return path + " " + std::to_string(status.st_size) + " " + std::to_string(status.st_mtim.tv_sec) +
               " " + std::to_string(status.st_mtim.tv_nsec);
    }
    static bool IsBeneath(const std::string& path, const std::string& folder) {
        return path.compare(0, folder.size() + 1, folder + "/") == 0;
    }
    bool IsCapture(const std::string& path, const File& file) const {
        return file.onDisk && file.own && IsBeneath(path, gallery_) &&
               std::count(path.begin() + static_cast<std::ptrdiff_t>(gallery_.size()), path.end(), '/') == 2;
    }
    // It may come back before anybody has noticed that it was gone.
    static void Touch(File& file) {
        file.touched = true;
        if (file.caption != "") file.caption.reset();
    }

    std::string gallery_;
    std::map<std::string, File> files_;
    std::map<std::string, std::string> given_;  // captions by the identity of their file
};
