#include "plugin-modules/Gallery/src/media/FolderCrc.h"

#include <string_view>
#include <utility>

#include "CobalixUtil.h"

namespace media {
namespace {

using Bytes = std::vector<unsigned char>;

void Append(Bytes& bytes, std::string_view text) {
    bytes.insert(bytes.end(), text.begin(), text.end());
}

void AppendTime(Bytes& bytes, int64_t seconds) {
    for (int i = 0; i < 8; ++i)
        bytes.push_back(static_cast<unsigned char>(static_cast<uint64_t>(seconds) >> 8 * i));
}

// The same CRC of stamps of eight bytes, each taken at once: what table `i` has of a byte is that of the byte
// followed by `i` zero bytes.
class StampSum {
  public:
    void Add(int64_t stamp) {
        uint64_t word = static_cast<uint64_t>(stamp) ^ sum_;
        sum_ = 0;
        for (size_t i = tables_.size(); i-- > 0; word >>= 8)
            sum_ ^= tables_[i][word & 255];
        ++count_;
    }
    uint32_t Value() const { return ~sum_; }
    size_t count() const { return count_; }

  private:
    using Tables = std::array<CRCTable, 8>;

    static const Tables& SharedTables() {
        static const Tables tables = [] {
            Tables made{SharedCRCTable()};
            for (size_t i = 1; i < made.size(); ++i)
                for (size_t byte = 0; byte < 256; ++byte)
                    made[i][byte] = made[i - 1][byte] >> 8 ^ made[0][made[i - 1][byte] & 255];
            return made;
        }();
        return tables;
    }

    const Tables& tables_ = SharedTables();
    uint32_t sum_ = UINT32_MAX;
    size_t count_ = 0;
};

// What counts in a tree beside its times.
struct TreeNames {
    std::string folders;
    std::string lastFile;
};

// Calls `addTime` for each time in the tree. That of the gallery itself is left out, because the tracker
// writes into its folder.
template <typename AddTime>
TreeNames Collect(const FolderTree& tree, const std::string& galleryPath, AddTime addTime) {
    TreeNames names{tree.root().path, {}};
    if (tree.root().path != galleryPath) addTime(tree.root().seconds);
    tree.ForEach([&](const FolderTree::Folder& folder) {
        size_t walked = 0;
        const FolderTree::Entry* firstFile = nullptr;
        for (const FolderTree::Entry& entry : folder.entries) {
            addTime(tree.TimeOf(folder, entry, walked));
            if (entry.kind == FolderTree::Kind::Walked) ++walked;
            if (entry.kind == FolderTree::Kind::Walked || entry.kind == FolderTree::Kind::Loop)
                names.folders += folder.NameOf(entry);
            if (!firstFile && !entry.IsFolder()) firstFile = &entry;
        }
        if (firstFile) names.lastFile = folder.path + "/" + std::string(folder.NameOf(*firstFile));
    });
    return names;
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
    FolderTree tree;
    if (!tree.Read(path)) return false;
    const TreeNames names =
        Collect(tree, galleryPath, [&timeBytes](int64_t seconds) { AppendTime(timeBytes, seconds); });
    Append(dirBytes, names.folders);
    if (!names.lastFile.empty()) lastFileBytes.assign(names.lastFile.begin(), names.lastFile.end());
    return true;
}

void SumTree(const FolderTree& tree, const std::string& galleryPath, unsigned int& crc) {
    StampSum times;
    const TreeNames names = Collect(tree, galleryPath, [&times](int64_t seconds) { times.Add(seconds); });
    crc = times.Value() + StringCRC(names.folders) + StringCRC(names.lastFile) + StringCRC(tree.root().path);
    const std::string text = "Files: " + std::to_string(times.count()) +
                             " Dir size: " + std::to_string(names.folders.size()) +
                             " CRC: " + std::to_string(crc);
    KXP_LOG(KXP::LogDetail, "%s", text.c_str());
}

bool SumFolder(std::string path, const std::string& galleryPath, unsigned int& crc, FolderTree& tree,
               SeenFiles* seen) {
    if (!path.empty() && path.back() == '/') path.pop_back();
    if (!tree.Read(path, seen)) {
        KXP_LOG(KXP::LogMilestone, "GetTreeData had an error, returning CRC:%d", static_cast<int>(crc));
        return false;
    }
    SumTree(tree, galleryPath, crc);
    return true;
}

void CalculateFolderCRC(std::string path, const std::string& galleryPath, unsigned int& crc) {
    FolderTree tree;
    (void)SumFolder(std::move(path), galleryPath, crc, tree);
}

}  // namespace media
