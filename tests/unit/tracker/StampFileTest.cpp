// The file of stamps where it does not fit the tracker's file.
#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/tracker/journal/StampFile.h"
#include "tests/support/TempFolder.h"

namespace {

using Stamps = std::vector<FileStamp>;

const Stamps kThree = {{1, 2, 3}, {UINT64_MAX, INT64_MIN, 5}, {}};

TEST(StampFile, OnlyTheWholeFileOfThisTrackerFileIsBelieved) {
    const TempFolder folder;
    StampFile file;
    file.Init(folder / "t.json");
    const KXP::JSONFile::Stamp of{1, 2, 3, 4, 5};
    file.Write(of, 0, kThree);
    EXPECT_EQ(file.Read({9, 2, 3, 4, 5}), kThree) << "on another device";
    for (const KXP::JSONFile::Stamp& other :
         {KXP::JSONFile::Stamp{1, 9, 3, 4, 5}, {1, 2, 9, 4, 5}, {1, 2, 3, 9, 5}, {1, 2, 3, 4, 9}})
        EXPECT_FALSE(file.Read(other));
    const std::string whole = folder.Read("t.stamps");
    for (size_t size = 0; size < whole.size(); ++size) {
        folder.Write("t.stamps", whole.substr(0, size));
        EXPECT_FALSE(file.Read(of)) << size;
        std::string torn = whole;
        torn[size] = static_cast<char>(torn[size] ^ 0x40);
        folder.Write("t.stamps", torn);
        EXPECT_EQ(file.Read(of).has_value(), size >= 56) << size;
    }
}

}  // namespace
