#include <dlfcn.h>
#include <gtest/gtest.h>

#include "common/TextUtil.h"
#include "tests/support/LogCapture.h"
#include "tests/support/ScopedEnv.h"
#include "tests/support/TempFolder.h"
#include "tests/unit/common/PathsProbe.h"

namespace KXP {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

constexpr const char* kConfigs = "Contents/Resources/data/configs/";
constexpr const char* kPlugin = "Contents/Frameworks/plugins/Gallery/libGallery.so";

// A product root with the probe in the plug-in's place.
class ProductRootTest : public testing::Test {
  protected:
    ProductRootTest() { root_.MakeFolder(kConfigs); }
    ~ProductRootTest() override {
        if (library_) dlclose(library_);
    }

    std::string Configs(const std::string& name) const { return kConfigs + name; }

    void Load(const std::string& place = kPlugin) {
        root_.MakeFolder(fs::path(place).parent_path().string());
        fs::copy_file(PATHS_PROBE_LIBRARY, root_ / place);
        library_ = dlopen((root_ / place).c_str(), RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library_, nullptr) << dlerror();
    }

    PathsProbe Paths() const {
        PathsProbe paths;
        reinterpret_cast<ProbePathsFunction>(dlsym(library_, "ProbePaths"))(paths);
        return paths;
    }

    RetVal ReadConfigs(const std::string& data, std::string& found) {
        ConfigsProbe configs;
        reinterpret_cast<ProbeConfigsFunction>(dlsym(library_, "ProbeConfigs"))(data, configs);
        found = configs.found;
        mediaDirs_ = configs.mediaDirs;
        return configs.result;
    }

    const TempFolder root_;
    const TempFolder home_;
    const ScopedEnv dataHome_{"XDG_DATA_HOME", home_.path()};
    const LogCapture log_;
    Names mediaDirs_;
    void* library_ = nullptr;
};

TEST_F(ProductRootTest, LiesFourLevelsAboveTheLibrary) {
    root_.Write(Configs("config.json"), "{}");
    Load();
    const PathsProbe paths = Paths();
    const std::string folder = root_ / "Contents/Frameworks/plugins/Gallery";
    EXPECT_EQ(paths.libraryFile, root_ / kPlugin);
    EXPECT_EQ(paths.libraryName, "libGallery");
    EXPECT_EQ(paths.nameWithoutPrefix, "Gallery");
    EXPECT_EQ(paths.productRoot, folder + "/../../../..");
    EXPECT_EQ(paths.pluginRoot, folder + "/../../../..");
    EXPECT_EQ(paths.pluginConfig, folder + "/../../../../" + Configs("Gallery.json"));
}

TEST_F(ProductRootTest, OrThree) {
    root_.Write(Configs("config.json"), "{}");
    Load("Contents/MacOS/plugins/Gallery.so");
    const PathsProbe paths = Paths();
    EXPECT_EQ(paths.productRoot, root_ / "Contents/MacOS/plugins/../../..");
    EXPECT_EQ(paths.pluginRoot, root_ / "Contents/MacOS/plugins/../../../..");
    EXPECT_EQ(paths.nameWithoutPrefix, "Gallery");
}

TEST_F(ProductRootTest, AFolderIsNoConfigAndAFailedSearchIsTriedAgain) {
    root_.MakeFolder(Configs("config.json"));
    Load();
    EXPECT_EQ(Paths().productRoot, "0x80004005[0]: Cannot find product root");
    EXPECT_TRUE(log_.HasLine(1, "Cannot find config.json. Paths searched:"));
    EXPECT_EQ(log_.Count(" \t/"), 4);  // two candidates, for the root and again for the plug-in's config
    fs::remove(root_ / Configs("config.json"));
    root_.Write(Configs("config.json"), "{}");
    EXPECT_EQ(Paths().productRoot, root_ / "Contents/Frameworks/plugins/Gallery/../../../..");
    fs::remove(root_ / Configs("config.json"));
    EXPECT_EQ(Paths().productRoot, root_ / "Contents/Frameworks/plugins/Gallery/../../../..");
}

TEST_F(ProductRootTest, DataIsFoundInTheUsersFoldersFirst) {
    const std::string own = home_ / "ZORVEX/OvirastreamX";
    root_.Write(Configs("config.json"), "// folders\n{\"additionalDataDirs\": [\"" + (home_ / "b") +
                                            "\", 7], \"mediaDirs\": [\"m/n\", \"/o\"]}");
    Load();
    root_.Write("Contents/Resources/data/appdata/x", "");
    std::string found;
    ASSERT_EQ(ReadConfigs("x", found).code, 0);
    EXPECT_TRUE(StringEndsWith(found, "/Contents/Resources/data/appdata//x")) << found;
    EXPECT_EQ(mediaDirs_, (Names{"m/n", "/o"}));
    home_.MakeFolder("b/x");
    ASSERT_EQ(ReadConfigs("x", found).code, 0);
    EXPECT_EQ(found, home_ / "b/x");
    home_.Write("ZORVEX/OvirastreamX/x", "");
    ASSERT_EQ(ReadConfigs("x", found).code, 0);
    EXPECT_EQ(found, own + "/x");
    ASSERT_EQ(ReadConfigs("none", found).code, 0);
    EXPECT_EQ(found, "");
    EXPECT_TRUE(log_.HasLine(1, "Could not find path none underneath any of the app data path(s)"));
}

TEST_F(ProductRootTest, OnlyABrokenConfigFails) {
    root_.Write(Configs("config.json"), "{}");
    Load();
    std::string found;
    EXPECT_EQ(ReadConfigs("configs", found).code, 0);
    EXPECT_EQ(log_.Lines().size(), 1u);  // of the data that is not there
    root_.Write(Configs("Gallery.json"), "{");
    const std::string folder = root_ / "Contents/Frameworks/plugins/Gallery/../../../../";
    RetVal result = ReadConfigs("x", found);
    EXPECT_EQ(static_cast<uint32_t>(result.code), 0x80004005u);
    EXPECT_EQ(result.text, "Could not read plugin config from " + folder + Configs("Gallery.json"));
    EXPECT_TRUE(log_.HasLine(1, "0x80004005[0]: " + result.text));
    root_.Write(Configs("config.json"), "[]");
    result = ReadConfigs("x", found);
    EXPECT_EQ(static_cast<uint32_t>(result.code), 0x80004005u);
    EXPECT_EQ(result.text, "Could not read product config from " + folder + Configs("config.json"));
}

}  // namespace
}  // namespace KXP
