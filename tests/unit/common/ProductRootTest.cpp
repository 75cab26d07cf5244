#include <dlfcn.h>
#include <gtest/gtest.h>

#include "tests/support/LogCapture.h"
#include "tests/support/ScopedEnv.h"
#include "tests/support/TempFolder.h"

namespace KXP {
namespace {

namespace fs = std::filesystem;

const std::string kConfigs = "Contents/Resources/data/configs/";
const std::string kFolder = "Contents/Frameworks/plugins/Gallery";

// A product root with the probe in the plug-in's place.
class ProductRootTest : public testing::Test {
  protected:
    ProductRootTest() { root_.MakeFolder(kConfigs); }
    ~ProductRootTest() override {
        if (library_) dlclose(library_);
    }

    void WriteConfig(const std::string& text) const { root_.Write(kConfigs + "config.json", text); }

    void Load(const std::string& place = kFolder + "/libGallery.so") {
        root_.MakeFolder(fs::path(place).parent_path().string());
        fs::copy_file(PATHS_PROBE_LIBRARY, root_ / place);
        library_ = dlopen((root_ / place).c_str(), RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library_, nullptr) << dlerror();
    }

    std::string Ask(const std::string& question) const {
        using Probe = void (*)(const std::string& question, std::string& answer);
        std::string answer;
        reinterpret_cast<Probe>(dlsym(library_, "ProbePaths"))(question, answer);
        return answer;
    }

    const TempFolder root_;
    const TempFolder home_;
    const ScopedEnv dataHome_{"XDG_DATA_HOME", home_.path()};
    const LogCapture log_;
    const std::string fourAbove_ = root_ / (kFolder + "/../../../..");
    void* library_ = nullptr;
};

TEST_F(ProductRootTest, OrThree) {
    WriteConfig("{}");
    Load("Contents/MacOS/plugins/Gallery.so");
    EXPECT_EQ(Ask("product root"), root_ / "Contents/MacOS/plugins/../../..");
}

TEST_F(ProductRootTest, AFolderIsNoConfigAndAFailedSearchIsTriedAgain) {
    root_.MakeFolder(kConfigs + "config.json");
    Load();
    EXPECT_EQ(Ask("product root"), "0x80004005[0]: Cannot find product root");
    EXPECT_TRUE(log_.HasLine(1, "Cannot find config.json. Paths searched:"));
    EXPECT_EQ(log_.Count(" \t/"), 2);
    fs::remove(root_ / (kConfigs + "config.json"));
    WriteConfig("{}");
    EXPECT_EQ(Ask("product root"), fourAbove_);
    fs::remove(root_ / (kConfigs + "config.json"));
    EXPECT_EQ(Ask("product root"), fourAbove_) << "once found it stays";
    EXPECT_EQ(Ask("plug-in root"), fourAbove_);
    EXPECT_EQ(Ask("plug-in config"), fourAbove_ + "/" + kConfigs + "Gallery.json");
}

TEST_F(ProductRootTest, DataIsFoundInTheUsersFoldersFirst) {
    WriteConfig("// folders\n{\"additionalDataDirs\": [\"" + (home_ / "b") + "\", 7]}");
    Load();
    root_.Write("Contents/Resources/data/appdata/x", "");
    EXPECT_EQ(Ask("x"), fourAbove_ + "/Contents/Resources/data/appdata//x");
    home_.MakeFolder("b/x");
    EXPECT_EQ(Ask("x"), home_ / "b/x");
    home_.Write("ZORVEX/OvirastreamX/x", "");
    EXPECT_EQ(Ask("x"), home_ / "ZORVEX/OvirastreamX/x");
}

TEST_F(ProductRootTest, OnlyABrokenConfigFails) {
    WriteConfig("{}");
    Load();
    EXPECT_EQ(Ask("x"), "");
    EXPECT_TRUE(log_.HasLine(1, "Could not find path x underneath any of the app data path(s)"));
    EXPECT_EQ(log_.Lines().size(), 1u);
    const std::string configs = fourAbove_ + "/" + kConfigs;
    root_.Write(kConfigs + "Gallery.json", "{");
    EXPECT_EQ(Ask("x"), "0x80004005[0]: Could not read plugin config from " + configs + "Gallery.json");
    WriteConfig("[]");
    const std::string complaint =
        "0x80004005[0]: Could not read product config from " + configs + "config.json";
    EXPECT_EQ(Ask("x"), complaint);
    EXPECT_TRUE(log_.HasLine(1, complaint));
}

}  // namespace
}  // namespace KXP
