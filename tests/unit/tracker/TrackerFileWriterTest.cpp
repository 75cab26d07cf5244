// What is written in pieces against what is written whole, through random changes, with the stamps.
#include <optional>
#include <random>

#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/tracker/journal/TrackerFileWriter.h"
#include "tests/support/TempFolder.h"

namespace {

TrackedUGC Record(int id) {
    TrackedUGC record;
    record.id = id;
    const std::string game = "game" + std::to_string(id % 3);
    record.profileName = game;
    record.path = "/g/" + game + "/" + std::to_string(id);
    record.stamp = {static_cast<uint64_t>(id), -id, UINT64_MAX};
    return record;
}

std::string Whole(const RecordStore& store, const TrackerInfo& info) {
    KXP::JsonBuffer buffer;
    KXP::PrettyJsonWriter writer(buffer);
    writer.SetIndent('\t', 1);
    WriteTrackerJSON(store.Snapshot(), store.games(), info, writer);
    return buffer.GetString();
}

std::vector<FileStamp> Stamps(const RecordStore& store) {
    std::vector<FileStamp> stamps;
    for (const auto& record : store.Snapshot())
        stamps.push_back(record->stamp);
    return stamps;
}

TEST(TrackerFileWriter, TheTextIsTheSameHoweverMuchOfItIsWritten) {
    TempFolder folder;
    KXP::JSONFile file;
    file.Init(folder / "t.json");
    StampFile stampFile;
    stampFile.Init(file.path());
    KXP::JSONFile::Stamp stamp;
    RecordStore store;
    TrackerFileWriter writer;
    std::mt19937 random(7);
    int id = 0;
    int pieces = 0;
    for (int round = 0; round < 100; ++round) {
        const unsigned change = random() % 16;
        const auto some = static_cast<int>(random() % 40);
        if (change < 10) {
            for (unsigned i = 0; i < 1 + change % 3; ++i)
                store.Track(std::make_shared<TrackedUGC>(Record(++id)));
        } else if (change == 10) {
            store.Remove({Record(id - some).path});
        } else if (change == 11) {
            (void)store.Replace(Record(id - some));
        } else if (change == 12) {
            folder.Write("t.json", std::string(static_cast<size_t>(some), 'x'));
            if (some % 2 != 0) std::filesystem::remove(file.path());
        } else if (change == 13 && some < 10) {
            store.Clear();
        }
        if (change == 12 && file.ReadStamp(stamp)) {
            EXPECT_FALSE(stampFile.Read(stamp));
        }
        writer.Recheck(file);
        TrackerFileWriter::Content content = writer.ContentOf(store);
        content.info = {id, kTrackerVersion, static_cast<uint32_t>(round)};
        pieces += content.firstPlace > 0 ? 1 : 0;
        KXP::HeldLog log;
        ASSERT_EQ(writer.Write(file, stampFile, content, log).code, 0);
        ASSERT_EQ(folder.Read("t.json"), Whole(store, content.info)) << round;
        ASSERT_TRUE(file.ReadStamp(stamp));
        ASSERT_EQ(stampFile.Read(stamp), std::make_optional(Stamps(store))) << round;
    }
    EXPECT_GT(pieces, 50);
}

// As in a file that somebody has edited.
TEST(RecordStore, AllRecordsOfAPathGoTogether) {
    RecordStore store;
    for (const int id : {3, 1, 2}) {
        TrackedUGC record = Record(id);
        record.path = Record(id > 1 ? 3 : 1).path;
        store.Track(std::make_shared<TrackedUGC>(record));
    }
    EXPECT_EQ(store.FindByPath(Record(3).path)->id, 3) << "the first";
    EXPECT_EQ(store.Remove({Record(3).path}).records.size(), 2u);
    EXPECT_EQ(store.Snapshot().size(), 1u);
    EXPECT_EQ(store.games().size(), 1u);
}

}  // namespace
