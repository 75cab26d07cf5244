// What the random walk of whole galleries does not reach: ids and paths that repeat, as in a file that
// somebody has edited, and the sum of the sizes.
#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/tracker/record/RecordStore.h"

namespace {

TrackedUGC Record(int id, const std::string& name, uint32_t sizeKB = 0) {
    TrackedUGC record;
    record.id = id;
    record.profileName = "game";
    record.path = "/g/game/" + name;
    record.sizeKB = sizeKB;
    return record;
}

TrackedUGC Highlight(int id, const std::string& name) {
    TrackedUGC record = Record(id, name);
    record.fileSource = "OVS_SDK";
    record.fileSubType = "Highlight";
    record.highlightGroupId = "group";
    return record;
}

std::string Text(const std::vector<RecordStore::RecordPtr>& records) {
    std::string text;
    for (const auto& record : records)
        text += std::to_string(record->id) + record->path.substr(8) + " ";
    return text;
}

TEST(RecordStore, TheFirstOfRepeatedIdsAndPathsCounts) {
    RecordStore store;
    for (const TrackedUGC& record : {Record(2, "a"), Highlight(1, "b"), Highlight(2, "c"), Record(1, "a")})
        store.Track(std::make_shared<TrackedUGC>(record));
    EXPECT_EQ(store.FindById(1)->path, "/g/game/b");
    EXPECT_EQ(store.FindByPath("/g/game/a")->id, 2);
    EXPECT_EQ(Text(store.In("/g/game")), "2a 1b 2c 1a ");
    EXPECT_EQ(Text(store.OfGroup("game", "group")), "1b ") << "the first one with id 2 is no highlight";
    std::string pages;
    RecordStore::IdKey end = RecordStore::NewestEnd();
    for (auto page = store.Newest(3, end); !page.empty(); page = store.Newest(3, end))
        pages += Text(page) + "| ";
    EXPECT_EQ(pages, "2c 2a 1a | 1b | ");

    EXPECT_EQ(Text(store.Remove({"/g/game/a", "/g/game/c", "/g/game/a"}, 3).records), "2a 2c ");
    EXPECT_EQ(Text(store.Snapshot()), "1b 1a ");
    EXPECT_EQ(store.FindById(2), nullptr);
    EXPECT_EQ(store.games().at("game").recents, (std::vector<int>{1, 1}));
    EXPECT_EQ(store.games().at("game").groups.at("group"), (std::vector<int>{1}));
    store.Remove({"/g/game/b"});
    EXPECT_EQ(store.games().size(), 0u) << "the other record keeps no game without ids";
    EXPECT_EQ(store.Remove({"/g/game/a"}).withoutGame, 1);
}

}  // namespace
