// Settings through the entry calls: what reaches a page, and what is there at the next start.

#include <filesystem>

#include <gtest/gtest.h>

#include "tests/abi/PluginLibrary.h"

TEST(SettingsTest, AChangeReachesThePageOnceAndOutlivesAStop) {
    FakeContainer container;
    const PluginLibrary plugin(PRODUCT_ROOT);
    ASSERT_TRUE(plugin.Up(container));
    plugin->OnJsonMessage(
        Envelope("GalleryCapStateChangeNotification", "page", "{}", ",\"type\":3073").c_str());
    const std::string answer =
        plugin.Ask(container, "SetSettings", "set",
                   R"({"settings":{"capacity":{"enabled":true,"capacityPercent":50}}})");
    EXPECT_NE(answer.find("\"_return_status\":\"Success\""), std::string::npos) << answer;
    const auto told = container.All(3, "\"reference_uniqueid\":\"page\"");
    ASSERT_EQ(told.size(), 1u);
    EXPECT_NE(told[0].text.find(R"("capacity":{"enabled":true,"capacityPercent":50,)"), std::string::npos);
    EXPECT_NE(plugin.Ask(container, "CheckDiskSpace", "disk", "{}").find("\"lowDiskSpace\":"),
              std::string::npos);
    ASSERT_TRUE(plugin.Down(container));

    FakeContainer later;
    ASSERT_TRUE(plugin.Up(later));
    const std::string settings = plugin.Ask(later, "GetSettings", "get", "{}");
    EXPECT_NE(settings.find(R"("capacity":{"enabled":true,"capacityPercent":50,"usageMB":0,)"),
              std::string::npos)
        << settings;
    ASSERT_TRUE(plugin.Down(later));
}

TEST(SettingsTest, AHomeThatTakesNothingFailsTheStart) {
    FakeContainer container;
    const PluginLibrary plugin(PRODUCT_ROOT);
    plugin.home().folder().Write("data", "no folder");
    EXPECT_EQ(plugin->Initialize(&FakeContainer::Callback, "{}", &container), 2);
    EXPECT_NE(container.WaitFor(2).text.find("_CmdInit_"), std::string::npos);
    EXPECT_FALSE(
        container.All(6, "Exception during GalleryAPI construction, API is not valid: 0x80004005").empty());
    EXPECT_EQ(plugin->Stop(), 2);
    EXPECT_EQ(container.WaitFor(1).text, "_CmdStop_") << "there is nothing to clean up";
    EXPECT_EQ(plugin->Uninitialize(), 1);
}
