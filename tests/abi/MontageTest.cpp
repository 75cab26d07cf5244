// Montages, made by a process of the tests that speaks as the real one does. See montage-process.
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/wait.h>

#include "tests/abi/GalleryRequests.h"

namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

const std::string kMade = "0 Montage Transcoding";

bool IsAlive(const std::string& pid) {
    std::ifstream stat("/proc/" + pid + "/stat");
    std::string number;
    std::string name;
    std::string state;
    return stat >> number >> name >> state && state != "Z" && state != "X";
}

template <typename Condition>
bool Soon(const Condition& condition) {
    const auto deadline = steady_clock::now() + std::chrono::seconds(30);
    while (!condition() && steady_clock::now() < deadline)
        std::this_thread::yield();
    return condition();
}

size_t CountIn(const char* folder) {
    return static_cast<size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

bool HasChildren() {
    return waitpid(-1, nullptr, WNOHANG) >= 0 || errno != ECHILD;
}

class MontageTest : public testing::Test {
  protected:
    explicit MontageTest(const std::string& root = PRODUCT_ROOT)
        : plugin_(std::make_unique<PluginLibrary>(root)) {
        // What a killed process leaves in its folder for temporary files goes with the home.
        setenv("TMPDIR", home().MakeFolder("tmp").c_str(), 1);
        home().Write("data/ZORVEX/OvirastreamX/Montage/v1/release/recipe.js", "//");
        home().MakeFolder("data/ZORVEX/OvirastreamX/Montage/v1/media");
        EXPECT_TRUE(plugin_->Up(container_));
        EXPECT_EQ(container_.WaitFor(6, "CloudSync montage recipe files done").notification, 6);
    }
    ~MontageTest() override {
        Down();
        unsetenv("TMPDIR");
    }

    void Down() {
        if (!plugin_) return;
        EXPECT_TRUE(plugin_->Down(container_));
        plugin_.reset();
    }

    const TempFolder& home() const { return gallery_.home(); }
    std::string Output(const std::string& id) const { return home() / (id + ".mp4"); }

    static std::string Payload(const std::string& output, const std::string& behaviour,
                               const std::string& recipe = "release/recipe.js") {
        return R"({"inputs":[{"details":{"path":"/a.mp4","duration":5},"inputFileType":"video"}],"recipe":")" +
               recipe + R"(","output":")" + output + R"(","behaviour":")" + behaviour + "\"}";
    }
    // The output is named after the identifier.
    void Begin(const std::string& id, const std::string& behaviour) {
        (*plugin_)->OnJsonMessage(
            Envelope("CreateMontageFromRecipe", id, Payload(Output(id), behaviour)).c_str());
    }
    std::string Answer(const std::string& id) {
        return ResultOf(container_.WaitFor(3, "\"reference_uniqueid\":\"" + id + "\"").text);
    }
    std::string Ask(const std::string& method, const std::string& payload = "{}") {
        return ResultOf(AskText(method, payload));
    }
    std::string AskText(const std::string& method, const std::string& payload) {
        return plugin_->Ask(container_, method, "ask" + std::to_string(++asked_), payload);
    }
    static std::string ResultOf(const std::string& text) {
        KXP::Document answer;
        if (KXP::ParseJSON(text, answer).IsError()) return "no answer";
        return std::to_string(answer["payload"]["_return_code"].GetInt()) + " " +
               answer["payload"]["_return_status"].GetString();
    }

    // Returns what the process prints after this word the nth time.
    std::string Printed(const std::string& word, size_t count = 1) {
        const std::string text = container_.WaitFor(6, "Montage: " + word + " ", count).text;
        const size_t at = text.find("Montage: " + word + " ");
        if (at == std::string::npos) return "";
        const std::string rest = text.substr(at + 10 + word.size());
        return rest.substr(0, rest.find_first_of(" \n"));
    }

    FakeContainer container_;
    std::unique_ptr<PluginLibrary> plugin_;
    const TempGallery gallery_{};  // replaces the library's home
    int asked_ = 0;
};

}  // namespace

TEST_F(MontageTest, IsMadeAndEngraved) {
    Begin("whole", "babbles");
    EXPECT_EQ(Answer("whole"), kMade);
    EXPECT_NE(container_.WaitFor(6, "Montage: running ")
                  .text.find(" https://media-reference.localhost" +
                             (home() / "data/ZORVEX/OvirastreamX/Montage/v1/release/recipe.js")),
              std::string::npos);
    EXPECT_FALSE(container_.All(6, "it prints more, which is not logged").empty());
    const std::string listing = AskText("GetFolderListing", R"({"directory":")" + home().path() + "\"}");
    EXPECT_NE(listing.find(R"({"name":"whole.mp4","type":"video","subtype":"Montage")"), std::string::npos)
        << listing;
    const std::string storage = home().Read("data/ZORVEX/OvirastreamXMontage/sharedstorage.json");
    EXPECT_NE(storage.find(R"("mediaDirZorvex":")" + (home() / "data/ZORVEX/OvirastreamX/Montage/v1\"")),
              std::string::npos)
        << storage;
    EXPECT_EQ(storage.find("_return"), std::string::npos);
}

TEST_F(MontageTest, SucceedsWhateverTheProcessDoes) {
    Begin("failing", "fails");
    EXPECT_EQ(Answer("failing"), kMade);
    EXPECT_FALSE(fs::exists(Output("failing")));
    EXPECT_EQ(Ask("CreateMontage", R"({"script":"/none"})"), "0 Success");
    EXPECT_EQ(Ask("UpdateMontageProgress", R"({"progress":12.5})"), "0 Success");
}

TEST_F(MontageTest, ARecipeIsOnlyFoundInItsFolder) {
    home().Write("data/ZORVEX/OvirastreamX/Montage/x.js", "//");
    for (const char* recipe : {"../x.js", "release/none.js"}) {
        EXPECT_EQ(Ask("CreateMontageFromRecipe", Payload(Output("a"), "fails", recipe)), kMade);
        EXPECT_NE(
            container_.All(6, "Montage: running ").back().text.find(" https://media-reference.localhost"),
            std::string::npos);
    }
    EXPECT_EQ(container_.All(6, "localhost/").size(), 0u) << "with no script";
}

TEST_F(MontageTest, ACancelRightAfterTheRequestHolds) {
    home().Write("early.mp4", "from before");
    Begin("early", "hangs");
    EXPECT_EQ(Ask("CancelMontage"), "0 Success");
    EXPECT_EQ(Answer("early"), kMade);
    EXPECT_EQ(home().Read("early.mp4"), "from before") << "the process had not written it";
    EXPECT_EQ(Ask("CancelMontage"), "0 Success") << "with nothing to cancel";
    Begin("next", "");
    EXPECT_EQ(Answer("next"), kMade);
    EXPECT_TRUE(fs::exists(Output("next"))) << "which the cancel was not meant for";
}

TEST_F(MontageTest, ACancelEndsThoseThatRunAndDeletesTheirOutputs) {
    Begin("done", "");
    EXPECT_EQ(Answer("done"), kMade);
    Begin("first", "lingers child");
    const std::string child = Printed("child");
    ASSERT_NE(container_.WaitFor(6, "Montage: written", 2).text, "");
    Begin("second", "hangs");
    const std::string pid = Printed("running", 3);
    ASSERT_TRUE(IsAlive(pid) && IsAlive(child));
    EXPECT_EQ(Ask("CancelMontage"), "0 Success");
    EXPECT_EQ(Ask("CancelMontage"), "0 Success");
    for (const char* id : {"first", "second"}) {
        EXPECT_EQ(Answer(id), kMade);
        EXPECT_FALSE(fs::exists(Output(id))) << id;
    }
    EXPECT_TRUE(fs::exists(Output("done")));
    EXPECT_FALSE(IsAlive(pid));
    EXPECT_TRUE(Soon([&] { return !IsAlive(child); })) << "it ends with its parent";
}

TEST_F(MontageTest, TheStopEndsWhatWillNotEnd) {
    Begin("stubborn", "hangs ignores child");
    const std::string pid = Printed("running");
    const std::string child = Printed("child");
    const auto start = steady_clock::now();
    Down();
    EXPECT_LT(steady_clock::now() - start, std::chrono::seconds(20));
    EXPECT_TRUE(Soon([&] { return !IsAlive(pid) && !IsAlive(child) && !HasChildren(); }));
}

TEST_F(MontageTest, TheCloudsConfigurationIsGiven) {
    EXPECT_EQ(Ask("GetMontageCloudConfig"), kFailure + " Success");
    home().Write("data/ZORVEX/OvirastreamX/Montage/v1/MontageConfig.json", "{");
    EXPECT_EQ(Ask("GetMontageCloudConfig"), std::to_string(static_cast<int32_t>(0x80070002)) + " Success");
    home().Write("data/ZORVEX/OvirastreamX/Montage/v1/MontageConfig.json", R"({"filters":[{"id":"f"}]})");
    EXPECT_NE(AskText("GetMontageCloudConfig", "{}").find(R"("montageConfig":{"filters":[{"id":"f"}]})"),
              std::string::npos);
}

// MONTAGE_CANCELS=1000 makes it longer.
TEST_F(MontageTest, CancelsAtAnyMomentLeaveNothingBehind) {
    const char* count = std::getenv("MONTAGE_CANCELS");
    const int cancels = count ? std::atoi(count) : 60;
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const char* const behaviours[] = {"", "hangs", "hangs child", "lingers", "fails"};
    Begin("warm", "fails");
    EXPECT_EQ(Answer("warm"), kMade);
    const size_t threads = CountIn("/proc/self/task");
    const size_t descriptors = CountIn("/proc/self/fd");
    for (int i = 0; i < cancels; ++i) {
        const std::string id = "loop" + std::to_string(i);
        Begin(id, behaviours[random() % std::size(behaviours)]);
        // The moment is what this is about.
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 150000));
        ASSERT_EQ(Ask("CancelMontage"), "0 Success");
        ASSERT_EQ(Answer(id), kMade);
    }
    // The thread of the first one may have been there still when they were counted.
    EXPECT_TRUE(Soon([&] {
        return !HasChildren() && CountIn("/proc/self/task") <= threads &&
               CountIn("/proc/self/fd") <= descriptors;
    })) << CountIn("/proc/self/task")
        << " threads for " << threads << ", " << CountIn("/proc/self/fd") << " descriptors for "
        << descriptors;
    for (const auto& told : container_.All(6, "Montage: child ")) {
        const std::string pid = told.text.substr(told.text.find("child ") + 6);
        EXPECT_TRUE(Soon([&] { return !IsAlive(std::to_string(std::atoi(pid.c_str()))); })) << pid;
    }
}

TEST(Montage, AScriptOfTheProductsConfigTakesThePlaceOfAnyRecipe) {
    const TempFolder elsewhere;
    fs::copy(PRODUCT_ROOT, elsewhere / "Product", fs::copy_options::recursive);
    elsewhere.Write("Product/Contents/Resources/data/configs/config.json",
                    R"({"montage":{"overrideRecipeScript":"/mine.js"}})");
    FakeContainer container;
    const PluginLibrary plugin(elsewhere / "Product");
    ASSERT_TRUE(plugin.Up(container));
    plugin.Ask(
        container, "CreateMontageFromRecipe", "a",
        R"({"inputs":[{"details":{"path":"/a","duration":5},"inputFileType":"video"}],"recipe":"none.js",)"
        R"("output":"/none/a.mp4","behaviour":"fails"})");
    EXPECT_EQ(container.All(6, " https://media-reference.localhost/mine.js").size(), 2u)
        << "told by the log, and by the process";
    EXPECT_TRUE(plugin.Down(container));
}
