// Loading, living and unloading, over the staged product root.

#include "tests/abi/PluginLibrary.h"
#include "tests/support/Processes.h"

namespace fs = std::filesystem;

namespace {

const std::string kConfigs = "Contents/Resources/data/configs/";

// Returns the response to the command that failed.
std::string ExpectNoStart(const PluginLibrary& plugin, const std::string& line) {
    FakeContainer container;
    EXPECT_EQ(plugin->Initialize(&FakeContainer::Callback, "{}", &container), 2);
    std::string failure = container.WaitFor(2, "_CmdInit_").text;
    EXPECT_FALSE(container.All(6, line).empty());
    EXPECT_EQ(plugin->Stop(), 2);
    EXPECT_EQ(container.WaitFor(1).text, "_CmdStop_") << "there is nothing to clean up";
    EXPECT_EQ(plugin->Uninitialize(), 1);
    return failure;
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
    const size_t threads = RunningThreads();
    const size_t descriptors = OpenDescriptors();
    for (int i = 0; i < 20; ++i)
        cycle();
    EXPECT_EQ(RunningThreads(), threads);
    EXPECT_EQ(OpenDescriptors(), descriptors);
    EXPECT_EQ(
        dlopen(PRODUCT_ROOT "/Contents/Frameworks/plugins/Gallery/libGallery.so", RTLD_NOW | RTLD_NOLOAD),
        nullptr)
        << "it was really unloaded each time";
}

TEST(LoadUnload, TheProductRootRunsWhereverItIsCopiedIfItsConfigIsWhole) {
    const TempFolder elsewhere;
    const std::string root = elsewhere / "My Apps/Product";
    const std::string configs = root + "/Contents/Frameworks/plugins/Gallery/../../../../" + kConfigs;
    fs::create_directories(root);
    fs::copy(PRODUCT_ROOT, root, fs::copy_options::recursive);
    FakeContainer container;
    {
        const PluginLibrary plugin(root);
        ASSERT_TRUE(plugin.Up(container));
        ASSERT_TRUE(plugin.Down(container));
    }
    {
        const PluginLibrary plugin(root);
        fs::rename(configs + "config.json", elsewhere / "config.json");
        fs::create_directory(configs + "config.json");
        ExpectNoStart(plugin, "Cannot find product root");
        // A failed search is tried again, and may end three folders above the library instead of four.
        fs::create_directories(root + "/Contents/" + kConfigs);
        fs::rename(elsewhere / "config.json", root + "/Contents/" + kConfigs + "config.json");
        FakeContainer second;
        EXPECT_TRUE(plugin.Up(second) && plugin.Down(second));
    }
    fs::remove(configs + "config.json");
    elsewhere.Write("My Apps/Product/" + kConfigs + "config.json", "{}");
    elsewhere.Write("My Apps/Product/" + kConfigs + "Gallery.json", "{");
    ExpectNoStart(PluginLibrary(root), "Could not read plugin config from " + configs + "Gallery.json");
    elsewhere.Write("My Apps/Product/" + kConfigs + "config.json", "[]");
    ExpectNoStart(PluginLibrary(root), "Could not read product config from " + configs + "config.json");
}

TEST(LoadUnload, AHomeThatTakesNothingFailsTheStart) {
    const PluginLibrary plugin(PRODUCT_ROOT);
    plugin.home().folder().Write("data", "no folder");
    ExpectNoStart(plugin, "Exception during GalleryAPI construction, API is not valid: 0x80004005");
}

TEST(LoadUnload, AHomeWhoseNameIsNotUtf8FailsTheStartWithTheReason) {
    const PluginLibrary plugin(PRODUCT_ROOT);
    const ScopedEnv home("HOME", "/h\xFF");
    EXPECT_TRUE(Has(ExpectNoStart(plugin, ""),
                    R"("_return_code":-2147024809,"_return_status":"The name of a folder of )"
                    "the user's is not UTF-8: /h\xEF\xBF\xBD\""));
}

TEST_F(RunningPlugin, ThrowsFromAnEntryCallWhatAContainerCatches) {
    for (const std::string& text : {std::string("{}"), "{\"system\":" + std::string(100000, '[')}) {
        try {
            plugin_->OnJsonMessage(text.c_str());
            ADD_FAILURE() << "took it";
        } catch (const std::exception& error) {
            EXPECT_TRUE(Has(std::string(error.what()), "0x8008f001[0]: "));
        }
    }
}

TEST_F(RunningPlugin, RefusesWhatItDoesNotKnowAndChecksWhatSlipsThrough) {
    for (const std::string method : {"TrimVideo", "MigrateHighlightsTracker"})
        EXPECT_EQ(Result(method), "-2147467263 Could not find registered API for " + method);
    EXPECT_TRUE(Has(Result("GetFolderListing", R"({"directory":""})"),
                    "Schema 'parameters' validation error. Problem found at key "));
    EXPECT_EQ(Result("GetFolderListing", R"({"_return_code":-1,"directory":[]})"),
              "-2147024809 Found key 'directory', with unexpected type: Array");
}

TEST_F(RunningPlugin, SubscribesToNotificationsOfOthers) {
    for (const char* word : {"CaptureSaved", "HighlightSaved", "HighlightCaptureFailure", "LumisShotSaved"})
        EXPECT_TRUE(Has(container_.WaitFor(3, std::string(word) + "Notification\"").text, "\"type\":3073"))
            << word;
}
