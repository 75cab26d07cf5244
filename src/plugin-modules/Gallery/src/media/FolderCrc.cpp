#include "plugin-modules/Gallery/src/media/FolderCrc.h"

#include <cerrno>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include "CobalixUtil.h"
#include "common/FileDescriptor.h"
#include "common/FileUtil.h"
#include "common/RetVal.h"
#include "common/TextUtil.h"

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

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};
using OpenFolder = std::unique_ptr<DIR, CloseFolder>;

class TreeWalk {
  public:
    TreeWalk(Bytes& timeBytes, Bytes& dirBytes, Bytes& lastFileBytes)
        : timeBytes_(timeBytes), dirBytes_(dirBytes), lastFileBytes_(lastFileBytes) {}

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

    struct Identity {
        dev_t device;
        ino_t inode;

        bool operator==(const Identity& other) const {
            return device == other.device && inode == other.inode;
        }
    };

    struct Folder {
        std::string path;
        Identity identity;  // of the root it is taken when it is open
        size_t parent;      // in walked_
    };

    // The folders on the way to a pending one; each leads to the folder that it lies in.
    struct Walked {
        Identity identity;
        size_t parent;
    };

    bool Read(const Folder& folder) {
        const OpenFolder open = Open(folder);
        if (!open) return RefuseFolder(folder, errno);
        Identity identity = folder.identity;
        if (folder.parent == kNone) {
            struct stat status {};
            if (fstat(dirfd(open.get()), &status) != 0) return RefuseFolder(folder, errno);
            identity = {status.st_dev, status.st_ino};
        }
        walked_.push_back({identity, folder.parent});
        bool fileSeen = false;
        for (;;) {
            errno = 0;
            const dirent* entry = readdir(open.get());
            if (!entry) return errno == 0 || RefuseFolder(folder, errno);
            if (!TakeEntry(folder, dirfd(open.get()), *entry, fileSeen)) return false;
        }
    }

    // Only the root may be a link: the user chose that place. Below it one may have come since its entry was
    // read.
    static OpenFolder Open(const Folder& folder) {
        const int follow = folder.parent == kNone ? 0 : O_NOFOLLOW;
        // The system would take the text before a zero byte, which is another folder.
        if (folder.path.find('\0') != std::string::npos) {
            errno = EINVAL;
            return nullptr;
        }
        KXP::FileDescriptor file(open(folder.path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | follow));
        if (!file.IsOpen()) return nullptr;
        OpenFolder opened(fdopendir(file.get()));
        if (opened) (void)file.Release();
        return opened;
    }

    static bool RefuseFolder(const Folder& folder, int error) {
        KXP_LOG(KXP::LogMilestone, "GetTreeData: invalid file handle");
        KXP_LOG(KXP::LogFailure, "The folder %s cannot be read and its tree not summed: %s",
                Legible(folder.path).c_str(), ErrorText(error).c_str());
        return false;
    }

    bool TakeEntry(const Folder& folder, int descriptor, const dirent& entry, bool& fileSeen) {
        struct stat status {};
        if (fstatat(descriptor, entry.d_name, &status, 0) != 0) return RefuseEntry(folder, entry, errno);
        AppendTime(timeBytes_, status.st_mtime);
        if (IsFolder(descriptor, entry, status)) {
            if (entry.d_name[0] != '.') AddFolder(folder, entry.d_name, {status.st_dev, status.st_ino});
        } else if (!fileSeen) {
            fileSeen = true;
            lastFileBytes_.clear();
            Append(lastFileBytes_, folder.path + "/" + entry.d_name);
        }
        return true;
    }

    static bool RefuseEntry(const Folder& folder, const dirent& entry, int error) {
        KXP_LOG(KXP::LogMilestone, "KXP::FileTime error %d", KXP::Code::kNotFound);
        KXP_LOG(KXP::LogFailure, "%s has no time and its tree cannot be summed: %s",
                Legible(folder.path + "/" + entry.d_name).c_str(), ErrorText(error).c_str());
        return false;
    }

    // `status` is that of the entry or, for a link, of what it leads to.
    static bool IsFolder(int descriptor, const dirent& entry, const struct stat& status) {
        if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
        if (!S_ISDIR(status.st_mode)) return false;
        struct stat own {};
        return fstatat(descriptor, entry.d_name, &own, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(own.st_mode);
    }

    // Called while the last of walked_ is the folder that holds the entry.
    void AddFolder(const Folder& folder, const char* name, const Identity& identity) {
        Append(dirBytes_, name);
        for (size_t at = walked_.size() - 1; at != kNone; at = walked_[at].parent)
            if (walked_[at].identity == identity) return;
        pending_.push_back({folder.path + "/" + name, identity, walked_.size() - 1});
    }

    Bytes& timeBytes_;
    Bytes& dirBytes_;
    Bytes& lastFileBytes_;
    std::vector<Folder> pending_;  // the last is walked next
    std::vector<Walked> walked_;
};

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
    // The tracker itself writes into the gallery's own folder. One that has no time cannot be opened either,
    // which the walk tells.
    int64_t seconds = 0;
    if (path != galleryPath && KXP::FileTime(path, seconds) >= 0) AppendTime(timeBytes, seconds);
    return TreeWalk(timeBytes, dirBytes, lastFileBytes).Run(path);
}

void CalculateFolderCRC(std::string path, const std::string& galleryPath, unsigned int& crc) {
    if (!path.empty() && path.back() == '/') path.pop_back();
    Bytes timeBytes;
    Bytes dirBytes;
    Bytes lastFileBytes;
    if (!GetTreeData(path, galleryPath, timeBytes, dirBytes, lastFileBytes)) {
        KXP_LOG(KXP::LogMilestone, "GetTreeData had an error, returning CRC:%d", static_cast<int>(crc));
        return;
    }
    crc = CRC(timeBytes.begin(), timeBytes.end()) + CRC(dirBytes.begin(), dirBytes.end()) +
          CRC(lastFileBytes.begin(), lastFileBytes.end()) + StringCRC(path);
    const std::string text = "Files: " + std::to_string(timeBytes.size() / 8) +
                             " Dir size: " + std::to_string(dirBytes.size()) + " CRC: " + std::to_string(crc);
    KXP_LOG(KXP::LogDetail, "%s", text.c_str());
}

}  // namespace media
