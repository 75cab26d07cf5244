#include "tests/module/GalleryModel.h"

#include <algorithm>

namespace {

bool IsBeneath(const std::string& path, const std::string& folder) {
    return path.size() > folder.size() && path.compare(0, folder.size(), folder) == 0 &&
           path[folder.size()] == '/';
}

}  // namespace

GalleryModel::Place GalleryModel::PlaceOf(const std::string& path) const {
    if (!IsBeneath(path, gallery_)) return Place::Outside;
    const auto depth =
        std::count(path.begin() + static_cast<std::ptrdiff_t>(gallery_.size()), path.end(), '/');
    return depth == 1 ? Place::Outside : depth == 2 ? Place::Game : Place::Nested;
}

void GalleryModel::Touch(File& file) {
    if (!file.touched) file.mayBeKnown = file.id != 0;
    file.touched = true;
}

void GalleryModel::Put(const std::string& path, bool own, bool byFolder) {
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
    } else if (!wasTouched) {
        // What is on record stays there for as long as there is a file.
        file.expect = file.mayBeKnown ? Expect::Yes : Expect::No;
    } else {
        file.expect = file.mayBeKnown ? Expect::Open : Expect::No;
    }
    file.onDisk = true;
    file.own = own;
}

void GalleryModel::Remove(const std::string& path) {
    File& file = files_[path];
    Touch(file);
    file.onDisk = false;
    file.expect = Expect::No;
}

std::vector<std::string> GalleryModel::FilesBeneath(const std::string& folder) const {
    std::vector<std::string> found;
    for (auto file = files_.lower_bound(folder + "/"); file != files_.end() && IsBeneath(file->first, folder);
         ++file)
        if (file->second.onDisk) found.push_back(file->first);
    return found;
}

void GalleryModel::Move(const std::string& from, const std::string& to) {
    const auto file = files_.find(from);
    if (file != files_.end() && file->second.onDisk) {
        const bool own = file->second.own;
        Remove(from);
        Put(to, own);
        return;
    }
    CopyFolder(from, to);
    RemoveFolder(from);
}

void GalleryModel::CopyFolder(const std::string& from, const std::string& to) {
    for (const std::string& path : FilesBeneath(from))
        Put(to + path.substr(from.size()), files_[path].own, true);
}

void GalleryModel::RemoveFolder(const std::string& folder) {
    for (const std::string& path : FilesBeneath(folder))
        Remove(path);
}

void GalleryModel::Rebuilt(const std::string& gallery, bool orKept) {
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

void GalleryModel::CameBack() {
    for (const std::string& path : FilesBeneath(gallery_)) {
        File& file = files_[path];
        Touch(file);
        Put(path, file.own, true);
    }
}

std::string GalleryModel::Compare(const std::map<std::string, int>& records) const {
    std::string wrong;
    for (const auto& [path, file] : files_) {
        const auto record = records.find(path);
        const bool known = record != records.end();
        if (file.expect == Expect::Yes && !known) wrong += "not on record: " + path + "\n";
        if (file.expect == Expect::No && known) wrong += "on record: " + path + "\n";
        if (known && !file.touched && file.id != 0 && record->second != file.id)
            wrong += "id " + std::to_string(file.id) + " is now " + std::to_string(record->second) + ": " +
                     path + "\n";
    }
    for (const auto& [path, id] : records)
        if (files_.count(path) == 0) wrong += "on record, and never made: " + path + "\n";
    return wrong;
}

void GalleryModel::Settle(const std::map<std::string, int>& records) {
    for (auto file = files_.begin(); file != files_.end();) {
        if (!file->second.onDisk) {
            file = files_.erase(file);
            continue;
        }
        const auto record = records.find(file->first);
        file->second.id = record == records.end() ? 0 : record->second;
        file->second.expect = record == records.end() ? Expect::No : Expect::Yes;
        file->second.touched = false;
        ++file;
    }
}
