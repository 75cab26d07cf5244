// What is to be on record, worked out from what was done to the files alone.
#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <vector>

class GalleryModel {
  public:
    // Open: either is right, because it depends on what the disk held when it was looked at.
    enum class Expect { No, Yes, Open };

    explicit GalleryModel(std::string gallery) : gallery_(std::move(gallery)) {}

    const std::string& gallery() const { return gallery_; }

    // A file has these bytes from now on; `byFolder` when it came with the folder that it lies in.
    void Put(const std::string& path, bool own, bool byFolder = false) {
        File& file = files_[path];
        const bool wasTouched = file.touched;
        Touch(file);
        const Place place = PlaceOf(path);
        if (place == Place::Outside) {
            file.expect = Expect::No;
        } else if (own) {
            // Of a folder that comes, only the files directly in it are sure to be looked at.
            file.expect = place == Place::Nested && byFolder ? Expect::Open : Expect::Yes;
            file.mayBeKnown = true;
        } else {
            // What is on record stays there for as long as there is a file.
            file.expect = !file.mayBeKnown ? Expect::No : wasTouched ? Expect::Open : Expect::Yes;
        }
        file.onDisk = true;
        file.own = own;
    }

    // A file, or a folder with all beneath.
    void Remove(const std::string& path) {
        for (const std::string& gone : FilesAt(path)) {
            File& file = files_[gone];
            Touch(file);
            file.onDisk = false;
            file.expect = Expect::No;
        }
    }

    // Likewise, over what there may be of a file.
    void Copy(const std::string& from, const std::string& to) {
        for (const std::string& path : FilesAt(from))
            Put(to + path.substr(from.size()), files_[path].own, path != from);
    }
    void Move(const std::string& from, const std::string& to) {
        Copy(from, to);
        Remove(from);
    }

    // Records were made anew from the disk, of a folder that may have become the gallery with this; or those
    // that it had are in force again.
    void Rebuilt(const std::string& gallery, bool orKept) {
        gallery_ = gallery;
        for (auto& [path, file] : files_) {
            const Place place = PlaceOf(path);
            file.touched = true;
            const bool capture = file.onDisk && file.own && place != Place::Outside;
            const bool kept = file.onDisk && orKept && file.id != 0 && place != Place::Outside;
            file.mayBeKnown = capture || kept;
            file.expect = !file.mayBeKnown                  ? Expect::No
                          : capture && place == Place::Game ? Expect::Yes
                                                            : Expect::Open;
        }
    }

    // The gallery went and came back while it was watched.
    void CameBack() {
        for (const std::string& path : FilesAt(gallery_)) {
            Touch(files_[path]);
            Put(path, files_[path].own, true);
        }
    }

    // Why these are not the right records, by path with their ids; empty when they are.
    std::string Compare(const std::map<std::string, int>& records) const {
        std::string wrong;
        for (const auto& [path, file] : files_) {
            const auto record = records.find(path);
            const bool known = record != records.end();
            if (file.expect == Expect::Yes && !known) wrong += "not on record: " + path + "\n";
            if (file.expect == Expect::No && known) wrong += "on record: " + path + "\n";
            if (known && !file.touched && file.id != 0 && record->second != file.id)
                wrong += "id " + std::to_string(file.id) + " is now " + std::to_string(record->second) +
                         ": " + path + "\n";
        }
        for (const auto& [path, id] : records)
            if (files_.count(path) == 0) wrong += "on record, and never made: " + path + "\n";
        return wrong;
    }

    // All is quiet, and these are the records.
    void Settle(const std::map<std::string, int>& records) {
        for (auto file = files_.begin(); file != files_.end();) {
            if (!file->second.onDisk) {
                file = files_.erase(file);
                continue;
            }
            const auto record = records.find(file->first);
            const bool known = record != records.end();
            file->second.id = known ? record->second : 0;
            file->second.expect = known ? Expect::Yes : Expect::No;
            file->second.touched = false;
            ++file;
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
        int id = 0;               // of its record when all was quiet; 0 without one
        bool touched = false;     // since then
        bool mayBeKnown = false;  // was a capture, or on record, at some time since then
        Expect expect = Expect::No;
    };

    enum class Place { Outside, Game, Nested };

    static bool IsBeneath(const std::string& path, const std::string& folder) {
        return path.compare(0, folder.size() + 1, folder + "/") == 0;
    }
    Place PlaceOf(const std::string& path) const {
        if (!IsBeneath(path, gallery_)) return Place::Outside;
        const auto depth =
            std::count(path.begin() + static_cast<std::ptrdiff_t>(gallery_.size()), path.end(), '/');
        return depth == 1 ? Place::Outside : depth == 2 ? Place::Game : Place::Nested;
    }
    static void Touch(File& file) {
        if (!file.touched) file.mayBeKnown = file.id != 0;
        file.touched = true;
    }

    std::string gallery_;
    std::map<std::string, File> files_;
};
