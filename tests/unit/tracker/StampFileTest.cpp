// The file of stamps where it does not fit the tracker's file, and the pair through the life of a journal.
#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/settings/GalleryPaths.h"
#include "plugin-modules/Gallery/src/tracker/journal/TrackerJournal.h"
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

// A gallery whose captures never change.
class Source : public IJournalSource {
  public:
    Source() {
        for (int id = 1; id <= 3; ++id) {
            TrackedUGC record;
            record.id = id;
            record.stamp = kThree[static_cast<size_t>(id - 1)];
            store_.Track(std::make_shared<TrackedUGC>(record));
        }
    }
    bool HasUnwritten() override { return false; }
    bool KnowsAll() override { return true; }
    TrackerFileWriter::Content TakeContent(const TrackerFileWriter& writer) override {
        return {store_, writer.FirstPlace(store_)};
    }
    void NoteWritten(const KXP::RetVal&) override {}
    void QueueRelease() override {}

  private:
    RecordStore store_;
};

TEST(StampFile, GoesWithTheTrackerFileWhereverThatGoes) {
    const TempFolder folder;
    const std::string gallery = folder.MakeFolder("gallery") + "/";
    const std::string share = folder.MakeFolder("share");
    Source source;
    const auto files = [&] {
        return std::distance(std::filesystem::directory_iterator(share),
                             std::filesystem::directory_iterator());
    };
    const auto read = [&] {
        TrackerJournal journal(source, share, gallery, KXP::Clock::Steady(), {});
        journal.Open(false);
        KXP::Document document;
        std::vector<NewUGC> records;
        TrackerInfo info;
        TrackerJournal::Stamps stamps;
        EXPECT_FALSE(journal.Read(document, records, info, &stamps).Failed());
        return stamps;
    };
    {
        TrackerJournal rebuilt(source, share, gallery, KXP::Clock::Steady(), {});
        EXPECT_TRUE(rebuilt.Open(true));
        ASSERT_EQ(rebuilt.WriteUGCToTracker(TrackerJournal::Sum::Renew).code, 0);
        rebuilt.TakeOver();
        EXPECT_EQ(read(), kThree) << "who does not write the file may read it";
        ASSERT_EQ(rebuilt.WriteUGCToTracker(TrackerJournal::Sum::Renew).code, 0);
        EXPECT_EQ(read(), kThree);
    }
    for (const bool killed : {false, true}) {
        TrackerJournal journal(source, share, gallery, KXP::Clock::Steady(), {});
        EXPECT_TRUE(journal.Open(true));
        ASSERT_EQ(journal.WriteUGCToTracker(TrackerJournal::Sum::Keep).code, 0);
        if (!killed) journal.Close();
        EXPECT_EQ(files(), killed ? 5 : 3) << "among them the lock";
    }
    EXPECT_EQ(read(), kThree);
    EXPECT_EQ(files(), 3) << "a start removes the files of a rebuild that was killed";
    const std::string text = folder.Read(std::string("share/") + kTrackerFileName);
    folder.Write(std::string("share/") + kTrackerFileName, text + " ");
    EXPECT_EQ(read(), std::nullopt) << "edited by hand";
    TrackerJournal last(source, share, gallery, KXP::Clock::Steady(), {});
    EXPECT_TRUE(last.Open(false));
    last.DeleteTrackerFile();
    EXPECT_EQ(files(), 1);
}

}  // namespace
