#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/activity/EdgeLogs.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempFolder.h"

namespace {

namespace fs = std::filesystem;

class EdgeLogs : public testing::Test {
  protected:
    void Add(const std::string& name, const std::string& text, int age) {
        const std::string path = gallery_.Write(name, text);
        fs::last_write_time(path, now_ - std::chrono::seconds(age));
    }

    // The games in their order, each followed by "|".
    std::string Games() {
        std::vector<ActivityData> list;
        EXPECT_TRUE(ParseEdgeLogs(list, gallery_.path() + "/"));
        std::string games;
        for (const ActivityData& data : list)
            games += data.gameName.value_or("none") + "|";
        return games;
    }

    const LogCapture log_;
    const TempFolder gallery_;
    const fs::file_time_type now_ = fs::file_time_type::clock::now();
};

}  // namespace

TEST_F(EdgeLogs, ComeNewestFirstUnderTheirGamesNames) {
    Add("Race/a.edgelog", R"({"gameName":""})", 2);
    Add("Art/b.edgelog", R"({"gameName":"The Art"})", 1);
    Add("Race/c.edgelog", R"({"gameName":7})", 3);
    for (const char* none : {"root.edgelog", ".hidden/a.edgelog", "Race/deep/a.edgelog", "Race/a.EDGELOG",
                             "Race/.edgelog", "Race/a.json"})
        Add(none, "{}", 0);
    EXPECT_EQ(Games(), "The Art|Race|Race|");
    std::vector<ActivityData> list;
    EXPECT_FALSE(ParseEdgeLogs(list, gallery_ / "nowhere"));
}

TEST_F(EdgeLogs, DamagedOnesAreLoggedAndPassedOver) {
    const char* const damaged[] = {"", "[]", R"({"events":[5]})",
                                   R"({"rounds":[{"number":"1","time":"t"}]})"};
    int count = 0;
    for (const char* text : damaged)
        Add("Race/" + std::to_string(count++) + ".edgelog", text, 0);
    Add("Race/large.edgelog", "{}" + std::string(16 << 20, ' '), 0);
    fs::create_symlink("/dev/zero", gallery_ / "Race/device.edgelog");
    Add("Race/good.edgelog", R"({"events":7})", 0);
    EXPECT_EQ(Games(), "Race|");
    EXPECT_EQ(log_.Count("Passing over activity log"), count + 2);
}
