// A trim in place by the whole product, killed at any moment.
#include <filesystem>
#include <functional>
#include <iterator>

#include "sample-media/MadeMedia.h"
#include "tests/module/TrackerProcess.h"
#include "tests/support/CaptureBytes.h"
#include "tests/support/Counter.h"

namespace {

namespace fs = std::filesystem;

// Files in a folder, hidden ones included, whose names begin like this.
long Count(const std::string& folder, const std::string& start) {
    return std::count_if(fs::directory_iterator(folder), {}, [&](const fs::directory_entry& entry) {
        return entry.path().filename().string().compare(0, start.size(), start) == 0;
    });
}

TEST(TrimKill, LeavesTheOldOrTheNewFileAlone) {
    const TempFolder home;
    const std::string share = home / "data/ZORVEX/OvirastreamX/Share";
    const std::string game = home.MakeFolder("Videos/ZORVEX/Ovirastream/Game");
    const fs::path video = game + "/a.mp4";
    const std::string request = R"({"headTrimMs":500,"lengthMs":30000,"input":")" + video.string() +
                                R"(","output":")" + video.string() + "\"}";
    made::Video sample;
    sample.repeat = 20;
    sample.tagc = captures::Block("Ovirastream SHARE", "{}");
    const std::string source = made::Path(sample);
    const auto content = [&] { return home.Read("Videos/ZORVEX/Ovirastream/Game/a.mp4"); };

    fs::copy_file(source, video);
    const std::string old = content();
    TrackerProcess(home, {}).Ask("Trim", request);
    const std::string clip = content();
    ASSERT_NE(clip, old);

    const std::function<bool()> moments[] = {
        [] { return true; }, [&] { return Count(share, "UGCEdit_") > 0; },
        [&] { return Count(game, "a_tmp") > 0; }, [&] { return fs::file_size(video) == clip.size(); }};
    for (size_t round = 0; round < 5 * std::size(moments); ++round) {
        fs::copy_file(source, video, fs::copy_options::overwrite_existing);
        TrackerProcess process(home, {});
        process.Tell("Trim", request);
        // A moment that is over before it is seen ends with the trim.
        EXPECT_TRUE(Soon([&] { return moments[round % std::size(moments)]() || moments[3](); }));
        process.Kill();
        const TrackerProcess next(home, {});
        EXPECT_TRUE(content() == old || content() == clip) << round;
        EXPECT_EQ(Count(game, ""), 1) << round;
        EXPECT_EQ(Count(share, "UGCEdit_") + Count(share, "NewFile_"), 0) << round;
    }
}

}  // namespace
