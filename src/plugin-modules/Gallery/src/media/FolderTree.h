// The modification times in a tree of folders, in the order in which the folders list their entries. A tree
// that was read once can be brought up to date by asking only for what has changed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <sys/stat.h>

namespace KXP {
class FolderReader;
class IFolderVisitor;
}  // namespace KXP

namespace media {

// What the walk for a sum sees of the files, so that nobody has to walk for it again.
struct SeenFiles {
    // The regular files in the folders right below `path`, in no particular order. Those of links are not.
    struct File {
        size_t folder;  // index in `folders`
        size_t name;    // offset in `names`
        uint64_t size;
        int64_t modifiedNs;
        uint64_t inode;
    };
    std::vector<File> files;
    std::vector<std::string> folders;  // whole paths
    std::string names;                 // each ends with a zero byte
    bool legible = true;               // whether all names of these are UTF-8

    // What the sum may miss, because two changes within one second look the same: the files that have changed
    // since then, in seconds since 1970, and the gallery and its games in which names have.
    int64_t recentSince = INT64_MAX;
    std::vector<std::string> recent;

    KXP::IFolderVisitor* visitor = nullptr;  // sees all folders of the tree
};

// Hidden folders and links to folders are entries that are not walked, nor is a folder that contains itself
// by way of a mount. Times are those of what a link leads to. One thread; one folder is open at a time.
class FolderTree {
  public:
    enum class Kind : uint8_t {
        Self,    // "."
        Above,   // ".."
        Walked,  // a folder that is a part of the tree
        Hidden,  // a folder that is not walked
        Loop,    // a folder that contains itself
        File,    // anything else
        Shared,  // a link, or a file with further names: it may change under another path
    };
    struct Entry {
        int64_t seconds;  // only for Hidden, Loop, File and Shared
        uint32_t name;    // offset in the folder's `names`
        Kind kind;

        bool IsFolder() const { return kind < Kind::File; }
    };
    struct Identity {
        uint64_t device = 0;
        uint64_t inode = 0;
        bool operator==(const Identity& other) const {
            return device == other.device && inode == other.inode;
        }
    };
    // What the entries of a folder without folders in it add to a sum over the tree.
    struct KeptSum {
        int64_t self;  // the folder's time and that of the one around it, as they were summed
        int64_t above;
        uint32_t crc;
        uint32_t power;
        const Entry* firstFile;  // null when there is none
    };
    struct Folder {
        std::string path;
        Folder* parent = nullptr;
        Identity identity{};
        int64_t seconds = 0;  // its own time
        std::string names;    // each ends with a zero byte
        std::vector<Entry> entries;
        std::vector<std::unique_ptr<Folder>> walked;  // one for each entry of that kind, in their order
        bool hasShared = false;
        mutable std::optional<KeptSum> sum;  // of FolderCrc, until the folder is read again

        std::string_view NameOf(const Entry& entry) const { return &names[entry.name]; }
        // The folder in it that is walked; null when there is none of the name.
        Folder* Find(std::string_view name) const;
    };

    // A link that leads nowhere, or where nobody may look.
    enum class LostLinks {
        Fail,   // has no time, so the tree cannot be read
        Count,  // counts with its own time
    };
    explicit FolderTree(LostLinks lostLinks = LostLinks::Fail) : lostLinks_(lostLinks) {}

    // Reads the tree at `path`, which may be a link and has no "/" at its end. False, with log lines and an
    // empty tree, when a folder cannot be read or an entry has no time. `seen` may be null; after a failure
    // it is not complete.
    bool Read(const std::string& path, SeenFiles* seen = nullptr);
    // Asks again for what these paths name, with all that lies below them, for the folders around them, and
    // for entries that may change unseen. False, with an empty tree, when it has to be read as a whole.
    bool Update(const std::vector<std::string>& changed);
    bool IsEmpty() const { return !root_; }
    // Whether there were links, whose times may change without anybody's notice.
    bool HasLinks() const { return hasLinks_; }
    void Clear() { root_.reset(); }

    // There must be one.
    const Folder& root() const { return *root_; }
    // The time of an entry; `walked` is the next of the folder's.
    int64_t TimeOf(const Folder& folder, const Entry& entry, size_t walked) const;
    // Visits all folders; each time the one that was listed last goes first.
    void ForEach(const std::function<void(const Folder&)>& visit) const;

  private:
    using Names = std::set<std::string, std::less<>>;
    using Asked = std::map<const Folder*, Names>;
    class Former;

    bool Note(const std::string& path, Asked& asked) const;
    bool LookAtRoot();
    bool ReadPending(SeenFiles* seen);
    bool ReadFolder(Folder& folder, const Names* asked, SeenFiles* seen);
    bool Look(const KXP::FolderReader& entry, struct stat& status) const;
    bool TakeEntry(Folder& folder, const KXP::FolderReader& entry, SeenFiles* seen);
    void TakeFormer(Folder& folder, Former& former, const Entry& entry);
    bool RefuseFolder(const Folder& folder, int error) const;
    bool RefuseEntry(const Folder& folder, const char* name, int error) const;

    const LostLinks lostLinks_;
    std::unique_ptr<Folder> root_;
    int64_t aboveSeconds_ = 0;      // of the folder that the root lies in
    std::vector<Folder*> pending_;  // to be read as a whole; the last is the next
    bool hasLinks_ = false;
    bool quiet_ = false;  // a failure is no news yet
};

}  // namespace media
