// Videos that are engraved and cut, by the whole product.
#include <filesystem>
#include <thread>

#include <gtest/gtest.h>

#include "sample-media/DecodedMedia.h"
#include "sample-media/MadeMedia.h"
#include "tests/abi/PluginLibrary.h"
#include "tests/support/CaptureBytes.h"

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
    std::string Add(bool moovInFront) {
        made::Video video;
        video.moovInFront = moovInFront;
        video.tagc = captures::Block("Ovirastream SHARE", R"({"DRSAppName":"old"})");
        const std::string folder = plugin_.home() / "Videos/ZORVEX/Ovirastream/Game";
        std::filesystem::create_directories(folder);
        const std::string path = folder + (moovInFront ? "/front.mp4" : "/behind.mp4");
        std::filesystem::copy_file(made::Path(video), path);
        while (!About(path).HasMember("duration"))
            std::this_thread::yield();
        return path;
    }
    const KXP::Value& About(const std::string& path) {
        return Ask("GetFileMetadata", R"({"file":")" + path + "\"}");
    }
    std::string Status(const std::string& method, const std::string& payload) {
        return Ask(method, payload)["_return_status"].GetString();
    }
};

TEST_F(Videos, ShowTheSameWhenTheyAreEngraved) {
    for (const bool moovInFront : {false, true}) {
        const std::string path = Add(moovInFront);
        const std::vector<int> before = Numbers(path);
        EXPECT_EQ(
            Status("EngraveMP4", R"({"file":")" + path +
                                     R"(","DRSProfileName":"profile","DRSAppName":"new","DRSShortName":"",)"
                                     R"("highlightDefinitionId":"","highlightGroupId":"","mediaType":"",)"
                                     R"("isAHighlight":true,"highlightTags":1,"highlightSignificance":2})"),
            "Success");
        EXPECT_EQ(Numbers(path), before);
        // What is on record stays; what looks at the file finds the new block.
        const std::string folder = std::filesystem::path(path).parent_path();
        const KXP::Value& listing = Ask("GetFolderListing", R"({"directory":")" + folder + "\"}");
        EXPECT_EQ(listing["files"].Size(), moovInFront ? 2u : 1u);
        for (const KXP::Value& file : listing["files"].GetArray())
            EXPECT_EQ(file["source"], "OVS_SDK");
    }
    EXPECT_EQ(Status("EngraveMP4", R"({"file":"/none.mp4"})"), "Missing mandatory field DRSProfileName");
}

TEST_F(Videos, AreCutInPlaceAndStayOurs) {
    const std::string path = Add(true);
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

}  // namespace
