#include "plugin-modules/Gallery/src/media/FolderTree.h"

#include <cerrno>
#include <cstring>
#include <system_error>
#include <tuple>
#include <unordered_map>
#include <utility>

#include <sys/stat.h>

#include "CobalixUtil.h"
#include "base/FileCalls.h"
#include "base/FolderReader.h"
#include "base/FolderVisitor.h"
#include "base/Text.h"
#include "common/results/RetVal.h"

namespace media {
namespace {

using Entry = FolderTree::Entry;
using Folder = FolderTree::Folder;
using Kind = FolderTree::Kind;

// For a log line, which is UTF-8: other bytes are marked in a path that is not.
std::string Legible(std::string path) {
    if (!KXP::IsValidUtf8(path))
        for (char& c : path)
            if (static_cast<unsigned char>(c) >= 0x80) c = '?';
    return path;
}

std::string ErrorText(int error) {
    return std::generic_category().message(error);
}

FolderTree::Identity IdentityOf(const struct stat& status) {
    return {static_cast<uint64_t>(status.st_dev), status.st_ino};
}

void Add(Folder& folder, std::string_view name, Kind kind, int64_t seconds) {
    folder.entries.push_back({seconds, static_cast<uint32_t>(folder.names.size()), kind});
    folder.names.append(name).push_back('\0');
    if (kind == Kind::Shared) folder.hasShared = true;
}

Kind KindOf(const Folder& folder, const KXP::FolderReader& entry, const struct stat& status) {
    if (!entry.IsFolder()) {
        const bool shared = entry.IsLink() || (!S_ISDIR(status.st_mode) && status.st_nlink > 1);
        return shared ? Kind::Shared : Kind::File;
    }
    if (entry.Name()[0] == '.') return Kind::Hidden;
    for (const Folder* around = &folder; around; around = around->parent)
        if (around->identity == IdentityOf(status)) return Kind::Loop;
    return Kind::Walked;
}

// Of the gallery and of its games.
bool IsGame(const Folder& folder) {
    return folder.parent && !folder.parent->parent;
}

void NoteRecent(int64_t seconds, const std::string& path, SeenFiles& seen) {
    if (seconds >= seen.recentSince) seen.recent.push_back(path);
}

void NoteFolder(const Folder& folder, SeenFiles& seen) {
    if (!folder.parent || IsGame(folder)) NoteRecent(folder.seconds, folder.path, seen);
    if (!IsGame(folder)) return;
    seen.folders.push_back(folder.path);
    if (!KXP::IsValidUtf8(folder.path)) seen.legible = false;
}

// Of the entry added last.
void NoteEntry(const Folder& folder, const KXP::FolderReader& entry, const struct stat& status,
               SeenFiles& seen) {
    if (seen.visitor) {
        const bool isLink = folder.entries.back().kind == Kind::Shared && entry.IsLink();
        seen.visitor->Found(entry.Name(), isLink, status);
    }
    if (folder.entries.back().IsFolder()) return;
    if (status.st_mtime >= seen.recentSince) seen.recent.push_back(folder.path + "/" + entry.Name());
    if (!IsGame(folder) || !S_ISREG(status.st_mode) || entry.IsLink()) return;
    if (!KXP::IsValidUtf8(entry.Name())) seen.legible = false;
    seen.files.push_back({seen.folders.size() - 1, seen.names.size(), static_cast<uint64_t>(status.st_size),
                          KXP::Platform::ModifiedNs(status), status.st_ino});
    seen.names.append(entry.Name(), std::strlen(entry.Name()) + 1);
}

}  // namespace

// What a folder listed before. Listings keep their order but for what came and went, so the next entry is
// mostly the one that is looked for.
class FolderTree::Former {
  public:
    Former(Folder& folder, const Names* asked) : asked_(asked) {
        names_.swap(folder.names);
        entries_.swap(folder.entries);
        walked_.swap(folder.walked);
        folder.hasShared = false;
        if (!asked_) entries_.clear();
    }

    // The entry of the name; null if it has to be asked for.
    const Entry* Find(std::string_view name) {
        if (entries_.empty() || asked_->find(name) != asked_->end()) return nullptr;
        while (next_ < entries_.size() && NameOf(next_) != name &&
               asked_->find(NameOf(next_)) != asked_->end())
            Step();
        if (next_ == entries_.size() || NameOf(next_) != name) {
            if (!Seek(name)) return nullptr;
        }
        const Entry& found = entries_[next_];
        if (found.kind == Kind::Shared) return nullptr;
        current_ = nextWalked_;
        Step();
        return &found;
    }
    std::string_view NameOf(const Entry& entry) const { return &names_[entry.name]; }
    // The folder of the entry found last.
    std::unique_ptr<Folder> TakeWalked() { return std::move(walked_[current_]); }

  private:
    std::string_view NameOf(size_t index) const { return NameOf(entries_[index]); }
    void Step() {
        if (entries_[next_].kind == Kind::Walked) ++nextWalked_;
        ++next_;
    }
    bool Seek(std::string_view name) {
        if (places_.empty()) {
            size_t walked = 0;
            for (size_t i = 0; i < entries_.size(); ++i) {
                places_.emplace(NameOf(i), std::pair(i, walked));
                if (entries_[i].kind == Kind::Walked) ++walked;
            }
        }
        const auto found = places_.find(name);
        if (found == places_.end()) return false;
        std::tie(next_, nextWalked_) = found->second;
        return true;
    }

    const Names* const asked_;
    std::string names_;
    std::vector<Entry> entries_;
    std::vector<std::unique_ptr<Folder>> walked_;
    size_t next_ = 0;
    size_t nextWalked_ = 0;
    size_t current_ = 0;
    std::unordered_map<std::string_view, std::pair<size_t, size_t>> places_;
};

Folder* FolderTree::Folder::Find(std::string_view name) const {
    for (const std::unique_ptr<Folder>& inner : walked)
        if (std::string_view(inner->path).substr(path.size() + 1) == name) return inner.get();
    return nullptr;
}

bool FolderTree::Read(const std::string& path, SeenFiles* seen) {
    root_ = std::make_unique<Folder>();
    root_->path = path;
    hasLinks_ = false;
    pending_ = {root_.get()};
    const bool read = ReadPending(seen);
    if (!read) Clear();
    return read;
}

bool FolderTree::ReadPending(SeenFiles* seen) {
    while (!pending_.empty()) {
        Folder& next = *pending_.back();
        pending_.pop_back();
        if (!ReadFolder(next, nullptr, seen)) return false;
    }
    return true;
}

bool FolderTree::Update(const std::vector<std::string>& changed) {
    Asked asked;
    bool updated = root_ != nullptr;
    for (const std::string& path : changed)
        updated = updated && Note(path, asked);
    quiet_ = true;
    updated = updated && LookAtRoot();
    std::vector<Folder*> rest;
    if (updated) rest.push_back(root_.get());
    while (updated && !rest.empty()) {
        Folder& folder = *rest.back();
        rest.pop_back();
        const auto names = asked.find(&folder);
        if (names != asked.end()) {
            updated = ReadFolder(folder, &names->second, nullptr) && ReadPending(nullptr);
        } else if (folder.hasShared) {
            const Names none;
            updated = ReadFolder(folder, &none, nullptr) && ReadPending(nullptr);
        }
        for (const std::unique_ptr<Folder>& inner : folder.walked)
            rest.push_back(inner.get());
    }
    quiet_ = false;
    if (!updated) Clear();
    return updated;
}

// False for the root itself. The name of a folder that is not walked stands for what lies in it.
bool FolderTree::Note(const std::string& path, Asked& asked) const {
    std::string_view rest = path;
    const std::string_view root = root_->path;
    if (rest == root) return false;
    if (rest.substr(0, root.size()) != root || rest[root.size()] != '/') return true;
    rest.remove_prefix(root.size() + 1);
    const Folder* folder = root_.get();
    for (size_t slash = rest.find('/'); slash != std::string_view::npos; slash = rest.find('/')) {
        const Folder* const inner = folder->Find(rest.substr(0, slash));
        if (!inner) break;
        folder = inner;
        rest.remove_prefix(slash + 1);
    }
    asked[folder].emplace(rest.substr(0, rest.find('/')));
    return true;
}

// What happens beside it changes the time of the folder around it.
bool FolderTree::LookAtRoot() {
    struct stat status {};
    if (stat(root_->path.c_str(), &status) != 0 || !(root_->identity == IdentityOf(status))) return false;
    root_->seconds = status.st_mtime;
    if (stat((root_->path + "/..").c_str(), &status) != 0) return false;
    aboveSeconds_ = status.st_mtime;
    return true;
}

// Only the root may be a link: the user chose that place. Below it, one may have taken the place of a folder
// since its entry was read.
bool FolderTree::ReadFolder(Folder& folder, const Names* asked, SeenFiles* seen) {
    KXP::IFolderVisitor* const visitor = seen ? seen->visitor : nullptr;
    if (visitor) visitor->Enter(folder.path);
    KXP::FolderReader entries(folder.path, folder.parent ? KXP::Links::Refuse : KXP::Links::Follow);
    struct stat status {};
    if (!entries.IsOpen() || fstat(entries.descriptor(), &status) != 0) return RefuseFolder(folder, errno);
    if (asked && !(folder.identity == IdentityOf(status))) return false;
    folder.identity = IdentityOf(status);
    folder.seconds = status.st_mtime;
    folder.sum.reset();
    if (seen) NoteFolder(folder, *seen);
    Former former(folder, asked);
    while (entries.NextOfAll()) {
        if (const Entry* const known = former.Find(entries.Name())) {
            TakeFormer(folder, former, *known);
        } else if (!TakeEntry(folder, entries, seen)) {
            return false;
        }
    }
    folder.entries.shrink_to_fit();
    folder.names.shrink_to_fit();
    if (entries.error() != 0) return RefuseFolder(folder, entries.error());
    if (visitor) visitor->Leave(status);
    return true;
}

void FolderTree::TakeFormer(Folder& folder, Former& former, const Entry& entry) {
    Add(folder, former.NameOf(entry), entry.kind, entry.seconds);
    if (entry.kind == Kind::Walked) folder.walked.push_back(former.TakeWalked());
}

bool FolderTree::Look(const KXP::FolderReader& entry, struct stat& status) const {
    if (entry.Look(status, KXP::Links::Follow)) return true;
    const int error = errno;
    if (lostLinks_ == LostLinks::Count && entry.IsLink() && entry.Look(status, KXP::Links::Refuse))
        return true;
    errno = error;
    return false;
}

bool FolderTree::TakeEntry(Folder& folder, const KXP::FolderReader& entry, SeenFiles* seen) {
    const std::string_view name = entry.Name();
    struct stat status {};
    if (name == ".") {
        Add(folder, name, Kind::Self, 0);
        return true;
    }
    const bool isAbove = name == "..";
    if (isAbove && folder.parent) {
        Add(folder, name, Kind::Above, 0);
        return true;
    }
    if (!Look(entry, status)) return RefuseEntry(folder, entry.Name(), errno);
    if (isAbove) aboveSeconds_ = status.st_mtime;
    const Kind kind = isAbove ? Kind::Above : KindOf(folder, entry, status);
    Add(folder, name, kind, status.st_mtime);
    if (kind == Kind::Shared && entry.IsLink()) hasLinks_ = true;
    if (seen && !isAbove) NoteEntry(folder, entry, status, *seen);
    if (kind != Kind::Walked) return true;
    folder.walked.push_back(std::make_unique<Folder>());
    Folder& inner = *folder.walked.back();
    inner.path.append(folder.path).append("/").append(name);
    inner.parent = &folder;
    inner.identity = IdentityOf(status);
    pending_.push_back(&inner);
    return true;
}

bool FolderTree::RefuseFolder(const Folder& folder, int error) const {
    if (quiet_) return false;
    KXP_LOG(KXP::LogMilestone, "GetTreeData: invalid file handle");
    KXP_LOG(KXP::LogFailure, "The folder %s cannot be read and its tree not summed: %s",
            Legible(folder.path).c_str(), ErrorText(error).c_str());
    return false;
}

bool FolderTree::RefuseEntry(const Folder& folder, const char* name, int error) const {
    if (quiet_) return false;
    KXP_LOG(KXP::LogMilestone, "KXP::FileTime error %d", KXP::Code::kNotFound);
    KXP_LOG(KXP::LogFailure, "%s has no time and its tree cannot be summed: %s",
            Legible(folder.path + "/" + name).c_str(), ErrorText(error).c_str());
    return false;
}

int64_t FolderTree::TimeOf(const Folder& folder, const Entry& entry, size_t walked) const {
    switch (entry.kind) {
        case Kind::Self:
            return folder.seconds;
        case Kind::Above:
            return folder.parent ? folder.parent->seconds : aboveSeconds_;
        case Kind::Walked:
            return folder.walked[walked]->seconds;
        default:
            return entry.seconds;
    }
}

void FolderTree::ForEach(const std::function<void(const Folder&)>& visit) const {
    std::vector<const Folder*> rest{root_.get()};
    while (!rest.empty()) {
        const Folder& next = *rest.back();
        rest.pop_back();
        visit(next);
        for (const std::unique_ptr<Folder>& inner : next.walked)
            rest.push_back(inner.get());
    }
}

}  // namespace media
