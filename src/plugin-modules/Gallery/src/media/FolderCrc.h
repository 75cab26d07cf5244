// One number for a tree of folders, from the modification times of its entries and the names of its folders,
// so that the tracker can see at its start whether anything has changed since it stopped. No file is opened.
//
// The order in which a folder lists its entries is part of the sum.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "plugin-modules/Gallery/src/media/FolderTree.h"

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
// See FolderTree for what is walked. False, with log lines, when the tree cannot be read; the vectors are
// then as before. Names need not be UTF-8. Any thread.
bool GetTreeData(const std::string& path, const std::string& galleryPath,
                 std::vector<unsigned char>& timeBytes, std::vector<unsigned char>& dirBytes,
                 std::vector<unsigned char>& lastFileBytes);

// Sets `crc` to the sum of the CRCs of these three and of the path, and logs it.
void SumTree(const FolderTree& tree, const std::string& galleryPath, unsigned int& crc);

// Reads the tree at `path`, without the "/" that it may end in, and sums it. False, and `crc` keeps its
// value, when it cannot be read; `tree` is then empty. `seen` may be null; after a failure it is not
// complete.
bool SumFolder(std::string path, const std::string& galleryPath, unsigned int& crc, FolderTree& tree,
               SeenFiles* seen = nullptr);

// The same for callers that recognise a failure by the value.
void CalculateFolderCRC(std::string path, const std::string& galleryPath, unsigned int& crc);

}  // namespace media
