// Thumbnails, and videos that are engraved and cut, by the whole product.
#include <cstdlib>

#include "sample-captures/PngImage.h"
#include "sample-media/DecodedMedia.h"
#include "sample-media/MadeMedia.h"
#include "sample-media/VariedMedia.h"
#include "tests/abi/PluginLibrary.h"
#include "tests/support/CaptureBytes.h"
#include "tests/support/Counter.h"

namespace {

std::vector<int> Numbers(const std::string& path) {
    std::vector<int> numbers;
    for (const made::ShownFrame& frame : made::Decode(path).frames)
        numbers.push_back(frame.number);
    return numbers;
}

class Videos : public RunningPlugin {
  protected:
    // A capture in the gallery, on record.
    std::string Add() {
        made::Video video;
        video.tagc = captures::Block("Ovirastream SHARE", R"({"DRSAppName":"old"})");
        const std::string folder = plugin_.home() / "Videos/ZORVEX/Ovirastream/Game";
        std::filesystem::create_directories(folder);
        std::filesystem::copy_file(made::Path(video), folder + "/a.mp4");
        EXPECT_TRUE(Soon([&] { return About(folder + "/a.mp4").HasMember("duration"); }));
        return folder + "/a.mp4";
    }
    const KXP::Value& About(const std::string& path) { return Ask("GetFileMetadata", File(path)); }
    std::string Status(const std::string& method, const std::string& payload) {
        return Ask(method, payload)["_return_status"].GetString();
    }
};

TEST_F(Videos, ShowTheSameWhenTheyAreEngraved) {
    const std::string path = Add();
    const std::vector<int> before = Numbers(path);
    EXPECT_EQ(Status("EngraveMP4",
                     File(path, R"(,"DRSProfileName":"profile","DRSAppName":"new","DRSShortName":"",)"
                                R"("highlightDefinitionId":"","highlightGroupId":"","mediaType":"",)"
                                R"("isAHighlight":true,"highlightTags":1,"highlightSignificance":2)")),
              "Success");
    EXPECT_EQ(Numbers(path), before);
    // What is on record stays; what looks at the file finds the new block.
    EXPECT_EQ(About(path)["fileSource"], "OVS_Share");
    const std::string folder = std::filesystem::path(path).parent_path();
    EXPECT_EQ(Ask("GetFolderListing", R"({"directory":")" + folder + "\"}")["files"][0]["source"], "OVS_SDK");
    EXPECT_EQ(Status("EngraveMP4", R"({"file":"/none.mp4"})"), "Missing mandatory field DRSProfileName");
}

TEST_F(Videos, AreCutInPlaceAndStayOurs) {
    const std::string path = Add();
    const auto trim = [&](double from, double length) {
        return Status("Trim", R"({"input":")" + path + R"(","output":")" + path + R"(","headTrimMs":)" +
                                  std::to_string(from) + R"(,"lengthMs":)" + std::to_string(length) + "}");
    };
    EXPECT_EQ(trim(1e300, 1000), "Gallery Trim failed");
    EXPECT_EQ(trim(5000, 1000), "Gallery Trim failed");
    EXPECT_EQ(trim(500, 1000), "Success");
    const std::vector<int> numbers = Numbers(path);
    ASSERT_EQ(numbers.size(), 30u);
    EXPECT_EQ(numbers.front(), 15);
    EXPECT_EQ(About(path)["msDuration"].GetInt(), 1000);
    EXPECT_EQ(About(path)["DRSName"], "old");
    EXPECT_EQ(
        std::distance(std::filesystem::directory_iterator(std::filesystem::path(path).parent_path()), {}), 1);
    EXPECT_EQ(Status("TranscodeMediaFile",
                     R"({"file":")" + path + R"(","targetPath":")" + path + R"(","newDuration":1})"),
              "targetPath is empty");
    EXPECT_EQ(Ask("TranscodeMediaFile", R"({"file":")" + path + R"(","targetPath":"/","newDuration":1,)" +
                                            R"("newWidth":4,"userData":"u"})")["newFileWidth"]
                  .GetInt(),
              4);
}

TEST_F(Videos, LoseASoundThatHasEndedWithALogLine) {
    made::VariedVideo video;
    video.encoder = "libx264";
    video.sounds = {{"aac", "", 48000, 0, 0.5}, {"aac", "", 48000, 0, 2}};
    const TempFolder folder;
    made::Write(video, folder / "a.mp4");
    Status("Trim", R"({"input":")" + (folder / "a.mp4") + R"(","output":")" + (folder / "b.mp4") +
                       R"(","headTrimMs":1000,"lengthMs":500})");
    EXPECT_TRUE(folder.Has("b.mp4"));
    EXPECT_EQ(
        container_.All(6, "left out of " + (folder / "b.mp4") + ", with nothing in the range: 1").size(), 1u);
}

class Thumbnails : public RunningPlugin {
  protected:
    // The text of the thumbnail; "" for none.
    std::string Ask(const std::string& file, const std::string& size = R"(,"width":64,"height":64)") {
        const KXP::Value& answer = RunningPlugin::Ask("GetThumbnail", File(file, size));
        EXPECT_EQ(answer["_return_code"].GetInt(), 0);
        return answer.HasMember("thumbnail") ? answer["thumbnail"].GetString() : "";
    }
};

TEST_F(Thumbnails, AreOfTheFileAsItIsNow) {
    const TempFolder folder;
    const std::string path = folder.Write("a.png", samples::PngImage(640, 360, {{255, 0, 0}, {255, 0, 0}}));
    const std::string red = Ask(path);
    EXPECT_EQ(red.rfind("data:image/png;base64,iVBOR", 0), 0u);
    EXPECT_EQ(Ask(path), red);
    EXPECT_NE(Ask(path, R"(,"width":32,"height":32)"), red);
    folder.Write("a.png", samples::PngImage(640, 360, {{0, 0, 255}, {0, 0, 255}}));
    EXPECT_NE(Ask(path), red);
    EXPECT_NE(Ask(made::Path({})), "");
    folder.Write("a.png", "\x89PNG\r\n\x1A\n and nothing more");
    for (const std::string& none : {path, folder / "missing.png", folder.path()})
        EXPECT_EQ(Ask(none), "");
}

TEST_F(Thumbnails, AreSharedWithTheDesktopForCapturesOnRecord) {
    const TempFolder& home = plugin_.home().folder();
    const std::string thumbnails = "cache/thumbnails/large";
    const samples::Gradient red{{255, 0, 0}, {255, 0, 0}};
    const samples::Gradient green{{0, 255, 0}, {0, 255, 0}};
    const std::string foreign = home.Write("foreign.png", samples::PngImage(640, 360, red));
    const std::string path = home.Write(
        "Videos/ZORVEX/Ovirastream/Game/a.png",
        samples::PngImage(640, 360, red, {samples::PngTextChunk("Software", "Ovirastream SHARE")}));
    ASSERT_TRUE(
        Soon([&] { return RunningPlugin::Ask("GetFileMetadata", File(path)).HasMember("fileType"); }));
    const std::string large = R"(,"width":320,"height":320)";
    EXPECT_EQ(Ask(foreign, large), Ask(path, large));
    // A hidden file is one that is about to get its name.
    std::string shared;
    const auto isThere = [&] {
        if (!home.Has(thumbnails)) return false;
        for (const auto& entry : std::filesystem::directory_iterator(home / thumbnails))
            shared = entry.path().filename().string();
        return !shared.empty() && shared[0] != '.';
    };
    ASSERT_TRUE(Soon(isThere));

    // Another picture under the same label shows which one the answer is of.
    const std::string name = thumbnails + "/" + shared;
    const std::string drawn = home.Read(name);
    EXPECT_TRUE(Has(drawn, "/Game/a.png"));
    const std::string label = drawn.substr(33, drawn.find("IDAT") - 4 - 33);
    home.Write(name, samples::PngImage(256, 144, green, {label}));
    EXPECT_EQ(Ask(path), Ask(home.Write("green.png", samples::PngImage(256, 144, green))));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(home / thumbnails), {}), 1);
}

TEST(StoredThumbnails, OutlastTheProcessUnchanged) {
    const PluginLibrary plugin(PRODUCT_ROOT);
    const TempFolder folder;
    const std::string path = folder.Write("a.png", samples::PngImage(640, 360, {{255, 0, 0}, {0, 0, 255}}));
    const auto thumbnail = [&] {
        FakeContainer container;
        EXPECT_TRUE(plugin.Up(container));
        const std::string answer = plugin.Ask(container, "GetThumbnail", "ask",
                                              R"({"file":")" + path + R"(","width":64,"height":64})");
        EXPECT_TRUE(plugin.Down(container));
        const size_t start = answer.find("data:image/png;base64,");
        return start == std::string::npos ? "none" : answer.substr(start, answer.find('"', start) - start);
    };
    const std::string drawn = thumbnail();
    // What the same file holds is not looked at again.
    const auto time = std::filesystem::last_write_time(path);
    folder.Write("a.png", std::string(std::filesystem::file_size(path), '?'));
    std::filesystem::last_write_time(path, time);
    EXPECT_EQ(thumbnail(), drawn);
    folder.Write("a.png", "?");
    EXPECT_EQ(thumbnail(), "none");
}

#ifndef GALLERY_SANITIZED  // which would have to be loaded ahead of the foreign codecs
TEST(ForeignCodecs, AreNotMistakenForOurs) {
    const TemporaryHome home;
    const TempFolder folder;
    for (const std::string& file :
         {made::Path({}), folder.Write("a.png", samples::PngImage(640, 360, {{1, 2, 3}, {4, 5, 6}}))}) {
        const std::string command = "LD_PRELOAD=" FOREIGN_CODECS " " GALLERY_HOST " thumb '" + file +
                                    "' --size 32x32 -o '" + (folder / "out.png") + "'";
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
    }
    EXPECT_TRUE(folder.Has("out.png"));
}
#endif

}  // namespace
