// What is written in pieces against what is written whole, through random changes.
#include <optional>
#include <random>

#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/tracker/journal/TrackerFileWriter.h"
#include "tests/support/TempFolder.h"

namespace {

TrackedUGC Record(int id) {
    TrackedUGC record;
    record.id = id;
    record.profileName = "game" + std::to_string(id % 3);
    record.path = "/g/" + record.profileName + "/" + std::to_string(id);
    return record;
}

std::string Whole(const RecordStore& store, const TrackerInfo& info) {
    KXP::JsonBuffer buffer;
    KXP::PrettyJsonWriter writer(buffer);
    writer.SetIndent('\t', 1);
    WriteTrackerJSON(store.Snapshot(), store.games(), info, writer, [] {});
    return buffer.GetString();
}

TEST(TrackerFileWriter, TheTextIsTheSameHoweverMuchOfItIsWritten) {
    TempFolder folder;
    KXP::JSONFile file;
    file.Init(folder / "t.json");
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
                store.Track(Record(++id));
        } else if (change == 10) {
            store.Remove({Record(id - some).path});
        } else if (change == 11) {
            (void)store.Replace(Record(id - some));
        } else if (change == 12) {
            folder.Write("t.json", std::string(static_cast<size_t>(some), 'x'));
        } else if (change == 13 && some < 10) {
            store.Clear();
        }
        writer.Recheck(file);
        TrackerFileWriter::Content content(store, writer.FirstPlace(store));
        content.info = {id, kTrackerVersion, static_cast<uint32_t>(round)};
        pieces += content.firstPlace > 0 ? 1 : 0;
        KXP::HeldLog log;
        ASSERT_EQ(writer.Write(file, content, log).code, 0);
        ASSERT_EQ(folder.Read("t.json"), Whole(store, content.info)) << round;
    }
    EXPECT_GT(pieces, 50);
}

}  // namespace
