// Loading, living and unloading, over the staged product root.

#include <filesystem>

#include <gtest/gtest.h>

#include "tests/abi/PluginLibrary.h"
#include "tests/support/TempFolder.h"

namespace {

namespace fs = std::filesystem;

// How many there are of what the process counts in this folder of /proc.
size_t CountIn(const char* folder) {
    return static_cast<size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

}  // namespace

TEST(LoadUnload, LeavesNoThreadAndNoDescriptor) {
    const auto cycle = [] {
        FakeContainer container;
        const PluginLibrary plugin(PRODUCT_ROOT);
        ASSERT_TRUE(plugin.Up(container));
        plugin.Ask(container, "GetFolderListing", "a", R"({"directory":"/"})");
        ASSERT_TRUE(plugin.Down(container));
    };
    cycle();
    const size_t threads = CountIn("/proc/self/task");
    const size_t descriptors = CountIn("/proc/self/fd");
    for (int i = 0; i < 20; ++i)
        cycle();
    EXPECT_EQ(CountIn("/proc/self/task"), threads);
    EXPECT_EQ(CountIn("/proc/self/fd"), descriptors);
    EXPECT_EQ(
        dlopen(PRODUCT_ROOT "/Contents/Frameworks/plugins/Gallery/libGallery.so", RTLD_NOW | RTLD_NOLOAD),
        nullptr)
        << "it was really unloaded each time";
}

TEST(LoadUnload, TheProductRootRunsWhereverItIsCopied) {
    const TempFolder elsewhere;
    const std::string root = elsewhere / "My Apps/Product";
    fs::create_directories(root);
    fs::copy(PRODUCT_ROOT, root, fs::copy_options::recursive);
    FakeContainer container;
    {
        const PluginLibrary plugin(root);
        ASSERT_TRUE(plugin.Up(container));
        ASSERT_TRUE(plugin.Down(container));
    }

    fs::remove(root + "/Contents/Resources/data/configs/config.json");
    FakeContainer unlucky;
    const PluginLibrary plugin(root);
    EXPECT_EQ(plugin->Initialize(&FakeContainer::Callback, "{}", &unlucky), 2);
    EXPECT_NE(unlucky.WaitFor(2).text.find("_CmdInit_"), std::string::npos);
    EXPECT_FALSE(unlucky.All(6, "Cannot find product root").empty());
    EXPECT_EQ(plugin->Uninitialize(), 1);
}

TEST(LoadUnload, AContainerCatchesWhatAnEntryCallThrows) {
    FakeContainer container;
    const PluginLibrary plugin(PRODUCT_ROOT);
    ASSERT_TRUE(plugin.Up(container));
    const std::string deep(100000, '[');
    for (const std::string& text : {std::string("{}"), std::string("\xC3("), deep, "{\"system\":" + deep}) {
        try {
            plugin->OnJsonMessage(text.c_str());
            ADD_FAILURE() << "took it";
        } catch (const std::exception& error) {
            EXPECT_NE(std::string(error.what()).find("0x8008f001[0]: "), std::string::npos);
        }
    }
    ASSERT_TRUE(plugin.Down(container));
}

TEST_F(RunningPlugin, RefusesWhatItDoesNotKnowAndChecksWhatSlipsThrough) {
    for (const char* method : {"TrimVideo", "MigrateHighlightsTracker"}) {
        const KXP::Value& answer = Ask(method, R"({"progress":1})");
        EXPECT_EQ(answer["_return_code"].GetInt(), -2147467263);
        EXPECT_EQ(answer["_return_status"],
                  (std::string("Could not find registered API for ") + method).c_str());
    }
    EXPECT_NE(AskText("GetFolderListing", R"({"directory":""})")
                  .find("Schema 'parameters' validation error. Problem found at key "),
              std::string::npos);
    const KXP::Value& slipped = Ask("GetFolderListing", R"({"_return_code":-1,"directory":[]})");
    EXPECT_EQ(slipped["_return_status"], "Found key 'directory', with unexpected type: Array");
    EXPECT_EQ(slipped["_return_code"].GetInt(), -2147024809);
}

TEST_F(RunningPlugin, SubscribesToWhatOthersTell) {
    for (const char* word : {"CaptureSaved", "HighlightSaved", "HighlightCaptureFailure", "LumisShotSaved"})
        EXPECT_NE(container_.WaitFor(3, std::string(word) + "Notification\"").text.find("\"type\":3073"),
                  std::string::npos)
            << word;
}
