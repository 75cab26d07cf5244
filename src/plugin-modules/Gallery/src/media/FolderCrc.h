// One number for a tree of folders, from the modification times of its entries and the names of its folders,
// so that the tracker can see at its start whether anything has changed since it stopped. No file is opened.
//
// The order in which a folder lists its entries is part of the sum.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace media {

using CRCTable = std::array<uint32_t, 256>;

// The reflected CRC-32 of IEEE 802.3.
CRCTable CreateCRCTable();

// The table that CRC uses, made once.
const CRCTable& SharedCRCTable();

// The CRC-32 of a range of bytes; 0 of an empty one.
template <typename Iterator>
uint32_t CRC(Iterator first, Iterator last) {
    const CRCTable& table = SharedCRCTable();
    uint32_t sum = UINT32_MAX;
    for (; first != last; ++first)
        sum = sum >> 8 ^ table[(sum ^ static_cast<unsigned char>(*first)) & 255];
    return ~sum;
}

uint32_t StringCRC(const std::string& s);

// Adds to the three vectors, in the order of the walk: the time of each entry as eight bytes, low byte first;
// the bytes of `path` and of the name of each folder walked below it; and, replaced each time, the full path
// of a folder's first entry that is no folder. The time of `path` itself counts unless it is `galleryPath` as
// text. Times are those of what a link leads to, and "." and ".." count.
//
// Hidden folders and links to folders are not walked, nor is a folder that contains itself by way of a mount.
// `path` may be a link. False, with log lines, when a folder cannot be read or an entry has no time, as a
// link to nowhere has none; the vectors then hold what was found before. Names need not be UTF-8. Any thread;
// one folder is open at a time.
bool GetTreeData(const std::string& path, const std::string& galleryPath,
                 std::vector<unsigned char>& timeBytes, std::vector<unsigned char>& dirBytes,
                 std::vector<unsigned char>& lastFileBytes);

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
};

// Sets `crc` to the sum of the CRCs of these three and of `path`, without the "/" that it may end in. False,
// and `crc` keeps its value, when the tree cannot be walked. `seen` may be null; after a failure it is not
// complete.
bool SumFolder(std::string path, const std::string& galleryPath, unsigned int& crc,
               SeenFiles* seen = nullptr);

// The same for callers that recognise a failure by the value.
void CalculateFolderCRC(std::string path, const std::string& galleryPath, unsigned int& crc);

}  // namespace media
