// Settings that cannot be kept.

#include <gtest/gtest.h>

#include "tests/abi/PluginLibrary.h"

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
