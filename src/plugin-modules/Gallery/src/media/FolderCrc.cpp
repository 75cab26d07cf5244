#include "plugin-modules/Gallery/src/media/FolderCrc.h"

#include <algorithm>
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

constexpr uint32_t kPolynomial = 0xEDB88320;
constexpr uint32_t kOne = 1u << 31;  // the highest bit stands for x^0

// The product of two polynomials, modulo that of the CRC.
uint32_t Multiply(uint32_t a, uint32_t b) {
    uint32_t product = 0;
    for (; a != 0; a <<= 1) {
        product ^= a & kOne ? b : 0;
        b = b & 1 ? b >> 1 ^ kPolynomial : b >> 1;
    }
    return product;
}

// By this a sum is multiplied when so many stamps of 64 bits follow.
uint32_t PowerOf(size_t stamps) {
    uint32_t power = kOne;
    uint32_t square = 1;  // x^31
    for (int shift = 31; shift < 64; ++shift)
        square = square & 1 ? square >> 1 ^ kPolynomial : square >> 1;
    for (; stamps != 0; stamps >>= 1) {
        if (stamps & 1) power = Multiply(power, square);
        square = Multiply(square, square);
    }
    return power;
}

// The same CRC of stamps of eight bytes, each taken at once: what table `i` has of a byte is that of the byte
// followed by `i` zero bytes.
class StampSum {
  public:
    explicit StampSum(uint32_t start = UINT32_MAX) : sum_(start) {}

    void Add(int64_t stamp) {
        uint64_t word = static_cast<uint64_t>(stamp) ^ sum_;
        sum_ = 0;
        for (size_t i = tables_.size(); i-- > 0; word >>= 8)
            sum_ ^= tables_[i][word & 255];
        ++count_;
    }
    // So many stamps, whose sum from 0 on is `sum`.
    void Add(uint32_t sum, uint32_t power, size_t count) {
        sum_ = Multiply(sum_, power) ^ sum;
        count_ += count;
    }
    uint32_t raw() const { return sum_; }
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
    uint32_t sum_;
    size_t count_ = 0;
};

// What counts in a tree beside its times.
struct TreeNames {
    std::string folders;
    // The first file of the folder visited last of those with files; null when there is none.
    const FolderTree::Folder* lastFolder = nullptr;
    const FolderTree::Entry* lastFile = nullptr;

    void NoteFirstFile(const FolderTree::Folder& folder, const FolderTree::Entry* file) {
        if (!file) return;
        lastFolder = &folder;
        lastFile = file;
    }
    std::string LastFilePath() const {
        if (!lastFile) return {};
        return lastFolder->path + "/" + std::string(lastFolder->NameOf(*lastFile));
    }
};

// Calls `addTime` for each time in the folder, and notes its names. Returns its first file, which may be
// null.
template <typename AddTime>
const FolderTree::Entry* CollectFolder(const FolderTree& tree, const FolderTree::Folder& folder,
                                       TreeNames& names, AddTime addTime) {
    size_t walked = 0;
    const FolderTree::Entry* firstFile = nullptr;
    for (const FolderTree::Entry& entry : folder.entries) {
        addTime(tree.TimeOf(folder, entry, walked));
        if (entry.kind == FolderTree::Kind::Walked) ++walked;
        if (entry.kind == FolderTree::Kind::Walked || entry.kind == FolderTree::Kind::Loop)
            names.folders += folder.NameOf(entry);
        if (!firstFile && !entry.IsFolder()) firstFile = &entry;
    }
    return firstFile;
}

// The time of the tree's own folder counts, except for the gallery's, because the tracker writes into it.
template <typename AddTime>
TreeNames Collect(const FolderTree& tree, const std::string& galleryPath, AddTime addTime) {
    TreeNames names{tree.root().path};
    if (tree.root().path != galleryPath) addTime(tree.root().seconds);
    tree.ForEach([&](const FolderTree::Folder& folder) {
        names.NoteFirstFile(folder, CollectFolder(tree, folder, names, addTime));
    });
    return names;
}

// Adds the times of a folder that adds no names, from what is kept of it if nothing has changed.
const FolderTree::Entry* AddKept(const FolderTree& tree, const FolderTree::Folder& folder, StampSum& times) {
    const int64_t above = folder.parent->seconds;
    if (!folder.sum || folder.sum->self != folder.seconds || folder.sum->above != above) {
        StampSum own(0);
        TreeNames none;
        const FolderTree::Entry* const firstFile =
            CollectFolder(tree, folder, none, [&own](int64_t seconds) { own.Add(seconds); });
        folder.sum = {folder.seconds, above, own.raw(), PowerOf(own.count()), firstFile};
    }
    times.Add(folder.sum->crc, folder.sum->power, folder.entries.size());
    return folder.sum->firstFile;
}

bool AddsNames(const FolderTree::Folder& folder) {
    const auto isNamed = [](const FolderTree::Entry& entry) { return entry.kind == FolderTree::Kind::Loop; };
    return !folder.parent || !folder.walked.empty() ||
           (!folder.sum && std::any_of(folder.entries.begin(), folder.entries.end(), isNamed));
}

}  // namespace

CRCTable CreateCRCTable() {
    CRCTable table{};
    for (uint32_t i = 0; i < table.size(); ++i) {
        uint32_t entry = i;
        for (int step = 0; step < 8; ++step)
            entry = entry & 1 ? entry >> 1 ^ kPolynomial : entry >> 1;
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
    const std::string lastFile = names.LastFilePath();
    if (!lastFile.empty()) lastFileBytes.assign(lastFile.begin(), lastFile.end());
    return true;
}

void SumTree(const FolderTree& tree, const std::string& galleryPath, unsigned int& crc) {
    StampSum times;
    const auto addTime = [&times](int64_t seconds) { times.Add(seconds); };
    TreeNames names{tree.root().path};
    if (tree.root().path != galleryPath) addTime(tree.root().seconds);
    tree.ForEach([&](const FolderTree::Folder& folder) {
        const FolderTree::Entry* const firstFile =
            AddsNames(folder) ? CollectFolder(tree, folder, names, addTime) : AddKept(tree, folder, times);
        names.NoteFirstFile(folder, firstFile);
    });
    crc = times.Value() + StringCRC(names.folders) + StringCRC(names.LastFilePath()) +
          StringCRC(tree.root().path);
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
