// Montages, made by a process of the tests that speaks as the real one does. See montage-process.
#include <cerrno>
#include <cstdlib>
#include <random>

#include <sys/wait.h>

#include "tests/abi/GalleryRequests.h"
#include "tests/support/CaptureBytes.h"
#include "tests/support/Counter.h"
#include "tests/support/Processes.h"

namespace {

namespace fs = std::filesystem;
using std::chrono::steady_clock;

const std::string kMade = "0 Montage Transcoding";
const std::string kFolder = "data/ZORVEX/OvirastreamX/Montage/v1/";

bool HasChildren() {
    return waitpid(-1, nullptr, WNOHANG) >= 0 || errno != ECHILD;
}

std::string Payload(const std::string& output, const std::string& behaviour,
                    const std::string& recipe = "release/recipe.js") {
    return R"({"inputs":[{"details":{"path":"/a.mp4","duration":5},"inputFileType":"video"}],"recipe":")" +
           recipe + R"(","output":")" + output + R"(","behaviour":")" + behaviour + "\"}";
}

class MontageTest : public PluginTest {
  protected:
    MontageTest() {
        home().Write(kFolder + "release/recipe.js", "//");
        home().MakeFolder(kFolder + "media");
        EXPECT_TRUE(plugin_.Up(container_));
        EXPECT_EQ(container_.WaitFor(6, "CloudSync montage recipe files done").notification, 6);
    }
    ~MontageTest() override { Down(); }

    void Down() { EXPECT_TRUE(!std::exchange(isUp_, false) || plugin_.Down(container_)); }

    const TempFolder& home() const { return plugin_.home().folder(); }
    std::string Output(const std::string& id) const { return home() / (id + ".mp4"); }

    // The output is named after the identifier.
    void Begin(const std::string& id, const std::string& behaviour) {
        plugin_->OnJsonMessage(
            Envelope("CreateMontageFromRecipe", id, Payload(Output(id), behaviour)).c_str());
    }
    bool IsAnswered(const std::string& id) {
        return container_.WaitFor(3, "\"reference_uniqueid\":\"" + id + "\"")
                   .text.find(R"("_return_code":0,"_return_status":"Montage Transcoding")") !=
               std::string::npos;
    }

    // Returns what the process prints after this word.
    std::string Printed(const std::string& word) {
        const std::string text = container_.WaitFor(6, "Montage: " + word + " ").text;
        const size_t at = text.find("Montage: " + word + " ");
        if (at == std::string::npos) return "";
        const std::string rest = text.substr(at + 10 + word.size());
        return rest.substr(0, rest.find_first_of(" \n"));
    }

    bool isUp_ = true;
    // What a killed process leaves in its folder for temporary files goes with the home.
    const ScopedEnv temporary_{"TMPDIR", home().MakeFolder("tmp")};
};

}  // namespace

TEST_F(MontageTest, IsMadeAndEngraved) {
    Begin("whole", "babbles");
    EXPECT_TRUE(IsAnswered("whole"));
    EXPECT_TRUE(Has(container_.WaitFor(6, "Montage: running ").text,
                    " https://media-reference.localhost" + (home() / kFolder + "release/recipe.js")));
    EXPECT_FALSE(container_.All(6, "it prints more, which is not logged").empty());
    const std::string listing = AskText("GetFolderListing", R"({"directory":")" + home().path() + "\"}");
    EXPECT_TRUE(Has(listing, R"({"name":"whole.mp4","type":"video","subtype":"Montage")")) << listing;
    const std::string storage = home().Read("data/ZORVEX/OvirastreamXMontage/sharedstorage.json");
    EXPECT_TRUE(Has(storage, R"("mediaDirZorvex":")" + (home() / "data/ZORVEX/OvirastreamX/Montage/v1\"")))
        << storage;
    EXPECT_FALSE(Has(storage, "_return"));
}

TEST_F(MontageTest, SucceedsWhateverTheProcessDoesAndFindsRecipesInTheirFolderAlone) {
    home().Write("data/ZORVEX/OvirastreamX/Montage/x.js", "//");
    for (const char* recipe : {"../x.js", "release/none.js"}) {
        EXPECT_EQ(Result("CreateMontageFromRecipe", Payload(Output("a"), "fails", recipe)), kMade);
        EXPECT_TRUE(
            Has(container_.All(6, "Montage: running ").back().text, " https://media-reference.localhost"));
    }
    EXPECT_EQ(container_.All(6, "localhost/").size(), 0u) << "with no script";
    EXPECT_FALSE(fs::exists(Output("a")));
    EXPECT_EQ(Result("CreateMontage", R"({"script":"/none"})"), "0 Success");
    EXPECT_EQ(Result("UpdateMontageProgress", R"({"progress":12.5})"), "0 Success");
}

TEST_F(MontageTest, ACancelRightAfterTheRequestHoldsAndIsMeantForNoOther) {
    home().Write("early.mp4", "from before");
    Begin("early", "hangs");
    EXPECT_EQ(Result("CancelMontage"), "0 Success");
    EXPECT_TRUE(IsAnswered("early"));
    EXPECT_EQ(home().Read("early.mp4"), "from before") << "the process had not written it";
    EXPECT_EQ(Result("CancelMontage"), "0 Success") << "with nothing to cancel";
    Begin("done", "");
    EXPECT_TRUE(IsAnswered("done"));
    Begin("first", "lingers child");
    const std::string child = Printed("child");
    Begin("second", "lingers");
    ASSERT_NE(container_.WaitFor(6, "Montage: written", 3).text, "");
    EXPECT_EQ(Result("CancelMontage"), "0 Success");
    for (const char* id : {"first", "second"}) {
        EXPECT_TRUE(IsAnswered(id));
        EXPECT_FALSE(fs::exists(Output(id))) << id;
    }
    EXPECT_TRUE(fs::exists(Output("done")));
    EXPECT_TRUE(Soon([&] { return !IsAlive(child); })) << "it ends with its parent";
}

TEST_F(MontageTest, TheStopEndsWhatWillNotEnd) {
    Begin("stubborn", "hangs ignores");
    const std::string pid = Printed("running");
    const auto start = steady_clock::now();
    Down();
    EXPECT_LT(steady_clock::now() - start, std::chrono::seconds(20));
    EXPECT_TRUE(Soon([&] { return !IsAlive(pid) && !HasChildren(); }));
}

TEST_F(MontageTest, AStartGoesOnWhereTheStopLeftOff) {
    plugin_->OnJsonMessage(Envelope("GalleryNotifications", "page", "{}", R"(,"type":3073)").c_str());
    Begin("cut", "hangs");
    ASSERT_NE(Printed("running"), "");
    EXPECT_EQ(plugin_->Stop(), 2);
    ASSERT_EQ(container_.WaitFor(1, "_CmdStop_").notification, 1);
    home().Write("Videos/ZORVEX/Ovirastream/Game/shot.png",
                 captures::Png(captures::PngText("Software", "Ovirastream SHARE")));
    // The answer of the montage, the capture, and what the gallery takes now.
    container_.WaitFor(6, "Keeping message in queue", 3);
    EXPECT_TRUE(container_.All(3, "shot.png").empty() && container_.All(3, "\"cut\"").empty());
    EXPECT_EQ(plugin_->Start(), 2);
    EXPECT_TRUE(IsAnswered("cut") && container_.WaitFor(3, "shot.png").notification == 3);
    Begin("whole", "");
    EXPECT_TRUE(IsAnswered("whole") && fs::exists(Output("whole")) && !fs::exists(Output("cut")));
    for (const char* once : {"shot.png", "\"cut\"", "\"CaptureSavedNotification\""})
        EXPECT_EQ(container_.All(3, once).size(), 1u) << once;
}

TEST_F(MontageTest, ACloudConfigurationThatCannotBeReadIsAFailure) {
    EXPECT_EQ(Result("GetMontageCloudConfig"), kFailure + " Success");
    home().Write(kFolder + "MontageConfig.json", "{");
    EXPECT_EQ(Result("GetMontageCloudConfig"), "-2147024894 Success");
}

// MONTAGE_CANCELS=1000 makes it longer.
TEST_F(MontageTest, CancelsAtAnyMomentLeaveNothingBehind) {
    const char* count = std::getenv("MONTAGE_CANCELS");
    const int cancels = count ? std::atoi(count) : 60;
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const char* const behaviours[] = {"", "hangs", "lingers", "fails"};
    Begin("warm", "fails");
    EXPECT_TRUE(IsAnswered("warm"));
    const size_t threads = RunningThreads();
    const size_t descriptors = OpenDescriptors();
    for (int i = 0; i < cancels; ++i) {
        const std::string id = "loop" + std::to_string(i);
        Begin(id, behaviours[random() % std::size(behaviours)]);
        // The moment is what this is about.
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 150000));
        ASSERT_EQ(Result("CancelMontage"), "0 Success");
        ASSERT_TRUE(IsAnswered(id));
    }
    // The thread of the first one may have been there still when they were counted.
    EXPECT_TRUE(Soon([&] {
        return !HasChildren() && RunningThreads() <= threads && OpenDescriptors() <= descriptors;
    })) << RunningThreads()
        << " threads for " << threads << ", " << OpenDescriptors() << " descriptors for " << descriptors;
}

TEST(Montage, TheProductsConfigNamesAScriptForAllAndFoldersForData) {
    const TempFolder elsewhere;
    fs::copy(PRODUCT_ROOT, elsewhere / "Product", fs::copy_options::recursive);
    elsewhere.Write("Product/Contents/Resources/data/configs/config.json",
                    R"({"montage":{"overrideRecipeScript":"/mine.js"}, // a comment
                        "additionalDataDirs":[")" +
                        (elsewhere / "more") + "\",7]}");
    FakeContainer container;
    const PluginLibrary plugin(elsewhere / "Product");
    ASSERT_TRUE(plugin.Up(container));
    plugin.Ask(container, "CreateMontageFromRecipe", "a", Payload("/none/a.mp4", "fails", "none.js"));
    EXPECT_EQ(container.All(6, " https://media-reference.localhost/mine.js").size(), 2u)
        << "logged, and printed by the process";
    // The user's own folder comes first, and the product's last.
    int asked = 0;
    for (const std::string& folder : {elsewhere / "Product/Contents/Resources/data/appdata",
                                      elsewhere / "more", plugin.home() / "data/ZORVEX/OvirastreamX"}) {
        fs::create_directories(folder + "/Montage/v1");
        std::ofstream(folder + "/Montage/v1/MontageConfig.json") << "{\"folder\":\"" << folder << "\"}";
        const std::string answer =
            plugin.Ask(container, "GetMontageCloudConfig", "ask" + std::to_string(++asked), "{}");
        EXPECT_TRUE(Has(answer, "\"montageConfig\":{\"folder\":\"" + folder + "\"}")) << answer;
    }
    EXPECT_TRUE(plugin.Down(container));
}
