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

TEST(Requests, UnfinishedAndUnknownMethodsAnswerAlike) {
    FakeContainer container;
    const PluginLibrary plugin(PRODUCT_ROOT);
    ASSERT_TRUE(plugin.Up(container));
    for (const char* method : {"TrimVideo", "MigrateHighlightsTracker"}) {
        const std::string answer = plugin.Ask(container, method, method, "{}");
        EXPECT_NE(answer.find("\"_return_code\":-2147467263"), std::string::npos) << answer;
        EXPECT_NE(answer.find(std::string("Could not find registered API for ") + method), std::string::npos);
    }
    const std::string refused = plugin.Ask(container, "GetFolderListing", "empty", R"({"directory":""})");
    EXPECT_NE(refused.find("Schema 'parameters' validation error. Problem found at key "), std::string::npos);
    const std::string slipped =
        plugin.Ask(container, "GetFolderListing", "slipped", R"({"_return_code":-1,"directory":[]})");
    EXPECT_NE(slipped.find("Found key 'directory', with unexpected type: Array"), std::string::npos)
        << slipped;
    EXPECT_NE(slipped.find("\"_return_code\":-2147024809"), std::string::npos) << slipped;
    ASSERT_TRUE(plugin.Down(container));
}
