#include "plugin-modules/Gallery/src/media/FolderCrc.h"

#include <cerrno>
#include <cstring>
#include <string_view>
#include <system_error>
#include <utility>

#include <sys/stat.h>

#include "CobalixUtil.h"
#include "base/FileCalls.h"
#include "base/FolderReader.h"
#include "base/Path.h"
#include "base/Text.h"
#include "common/files/FileUtil.h"
#include "common/results/RetVal.h"

namespace media {
namespace {

using Bytes = std::vector<unsigned char>;

void Append(Bytes& bytes, std::string_view text) {
    bytes.insert(bytes.end(), text.begin(), text.end());
}

void AppendTime(Bytes& bytes, int64_t seconds) {
    unsigned char stamp[8];
    for (int i = 0; i < 8; ++i)
        stamp[i] = static_cast<unsigned char>(static_cast<uint64_t>(seconds) >> 8 * i);
    bytes.insert(bytes.end(), stamp, stamp + sizeof(stamp));
}

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

class TreeWalk {
  public:
    TreeWalk(Bytes& timeBytes, Bytes& dirBytes, Bytes& lastFileBytes, SeenFiles* seen)
        : timeBytes_(timeBytes), dirBytes_(dirBytes), lastFileBytes_(lastFileBytes), seen_(seen) {}

    bool Run(const std::string& path) {
        Append(dirBytes_, path);
        pending_.push_back({path, {}, kNone});
        while (!pending_.empty()) {
            const Folder folder = std::move(pending_.back());
            pending_.pop_back();
            if (!Read(folder)) return false;
        }
        return true;
    }

  private:
    static constexpr size_t kNone = SIZE_MAX;
    static constexpr size_t kRoot = 0;  // in walked_

    struct Identity {
        dev_t device;
        ino_t inode;

        bool operator==(const Identity& other) const {
            return device == other.device && inode == other.inode;
        }
    };

    struct Folder {
        std::string path;
        Identity identity;  // of the root, known only once it is open
        size_t parent;      // in walked_
    };

    // The folders on the way to a pending one; each leads to the folder that it lies in.
    struct Walked {
        Identity identity;
        size_t parent;
    };

    bool Read(const Folder& folder) {
        // Only the root may be a link: the user chose that place. Below it, one may have taken the place of a
        // folder since its entry was read.
        const bool isRoot = folder.parent == kNone;
        KXP::FolderReader entries(folder.path, isRoot ? KXP::Links::Follow : KXP::Links::Refuse);
        if (!entries.IsOpen()) return RefuseFolder(folder, errno);
        Identity identity = folder.identity;
        if (isRoot) {
            struct stat status {};
            if (fstat(entries.descriptor(), &status) != 0) return RefuseFolder(folder, errno);
            identity = {status.st_dev, status.st_ino};
        }
        walked_.push_back({identity, folder.parent});
        if (seen_ && folder.parent == kRoot) NoteFolder(folder);
        bool fileSeen = false;
        while (entries.NextOfAll())
            if (!TakeEntry(folder, entries, fileSeen)) return false;
        return entries.error() == 0 || RefuseFolder(folder, entries.error());
    }

    static bool RefuseFolder(const Folder& folder, int error) {
        KXP_LOG(KXP::LogMilestone, "GetTreeData: invalid file handle");
        KXP_LOG(KXP::LogFailure, "The folder %s cannot be read and its tree not summed: %s",
                Legible(folder.path).c_str(), ErrorText(error).c_str());
        return false;
    }

    bool TakeEntry(const Folder& folder, const KXP::FolderReader& entry, bool& fileSeen) {
        struct stat status {};
        if (!entry.Look(status, KXP::Links::Follow)) return RefuseEntry(folder, entry.Name(), errno);
        AppendTime(timeBytes_, status.st_mtime);
        if (entry.IsFolder()) {
            const bool isSelf = std::strcmp(entry.Name(), ".") == 0;
            if (seen_ && isSelf && (folder.parent == kNone || folder.parent == kRoot))
                NoteRecent(status, folder.path);
            if (entry.Name()[0] != '.') AddFolder(folder, entry.Name(), {status.st_dev, status.st_ino});
            return true;
        }
        if (seen_) NoteFile(folder, entry, status);
        if (!fileSeen) {
            fileSeen = true;
            lastFileBytes_.clear();
            Append(lastFileBytes_, folder.path + "/" + entry.Name());
        }
        return true;
    }

    static bool RefuseEntry(const Folder& folder, const char* name, int error) {
        KXP_LOG(KXP::LogMilestone, "KXP::FileTime error %d", KXP::Code::kNotFound);
        KXP_LOG(KXP::LogFailure, "%s has no time and its tree cannot be summed: %s",
                Legible(folder.path + "/" + name).c_str(), ErrorText(error).c_str());
        return false;
    }

    // Called while the last of walked_ is the folder that holds the entry.
    void AddFolder(const Folder& folder, const char* name, const Identity& identity) {
        Append(dirBytes_, name);
        for (size_t at = walked_.size() - 1; at != kNone; at = walked_[at].parent)
            if (walked_[at].identity == identity) return;
        pending_.push_back({folder.path + "/" + name, identity, walked_.size() - 1});
    }

    void NoteFolder(const Folder& folder) {
        seen_->folders.push_back(folder.path);
        if (!KXP::IsValidUtf8(folder.path)) seen_->legible = false;
    }

    void NoteRecent(const struct stat& status, const std::string& path) {
        if (status.st_mtime >= seen_->recentSince) seen_->recent.push_back(path);
    }

    void NoteFile(const Folder& folder, const KXP::FolderReader& entry, const struct stat& status) {
        NoteRecent(status, folder.path + "/" + entry.Name());
        if (folder.parent != kRoot || !S_ISREG(status.st_mode) || entry.IsLink()) return;
        if (!KXP::IsValidUtf8(entry.Name())) seen_->legible = false;
        seen_->files.push_back({seen_->folders.size() - 1, seen_->names.size(),
                                static_cast<uint64_t>(status.st_size), KXP::Platform::ModifiedNs(status),
                                status.st_ino});
        seen_->names.append(entry.Name(), std::strlen(entry.Name()) + 1);
    }

    Bytes& timeBytes_;
    Bytes& dirBytes_;
    Bytes& lastFileBytes_;
    SeenFiles* const seen_;
    std::vector<Folder> pending_;  // the last is walked next
    std::vector<Walked> walked_;
};

// The tracker itself writes into the gallery's own folder, whose time does not count.
bool Walk(const std::string& path, const std::string& galleryPath, TreeWalk& walk, Bytes& timeBytes) {
    // A folder that has no time cannot be opened either, which the walk logs.
    int64_t seconds = 0;
    if (path != galleryPath && KXP::FileTime(path, seconds) >= 0) AppendTime(timeBytes, seconds);
    return walk.Run(path);
}

}  // namespace

CRCTable CreateCRCTable() {
    CRCTable table{};
    for (uint32_t i = 0; i < table.size(); ++i) {
        uint32_t entry = i;
        for (int step = 0; step < 8; ++step)
            entry = entry & 1 ? entry >> 1 ^ 0xEDB88320 : entry >> 1;
        table[i] = entry;
    }
    return table;
}

const CRCTable& SharedCRCTable() {
    static const CRCTable table = CreateCRCTable();
    return table;
}

uint32_t StringCRC(const std::string& s) {
    return CRC(s.begin(), s.end());
}

bool GetTreeData(const std::string& path, const std::string& galleryPath, Bytes& timeBytes, Bytes& dirBytes,
                 Bytes& lastFileBytes) {
    TreeWalk walk(timeBytes, dirBytes, lastFileBytes, nullptr);
    return Walk(path, galleryPath, walk, timeBytes);
}

bool SumFolder(std::string path, const std::string& galleryPath, unsigned int& crc, SeenFiles* seen) {
    if (!path.empty() && path.back() == '/') path.pop_back();
    Bytes timeBytes;
    Bytes dirBytes;
    Bytes lastFileBytes;
    TreeWalk walk(timeBytes, dirBytes, lastFileBytes, seen);
    if (!Walk(path, galleryPath, walk, timeBytes)) {
        KXP_LOG(KXP::LogMilestone, "GetTreeData had an error, returning CRC:%d", static_cast<int>(crc));
        return false;
    }
    crc = CRC(timeBytes.begin(), timeBytes.end()) + CRC(dirBytes.begin(), dirBytes.end()) +
          CRC(lastFileBytes.begin(), lastFileBytes.end()) + StringCRC(path);
    const std::string text = "Files: " + std::to_string(timeBytes.size() / 8) +
                             " Dir size: " + std::to_string(dirBytes.size()) + " CRC: " + std::to_string(crc);
    KXP_LOG(KXP::LogDetail, "%s", text.c_str());
    return true;
}

void CalculateFolderCRC(std::string path, const std::string& galleryPath, unsigned int& crc) {
    (void)SumFolder(std::move(path), galleryPath, crc);
}

}  // namespace media
