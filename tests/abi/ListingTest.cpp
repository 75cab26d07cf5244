// Listings of real files, as the pages receive them.

#include <algorithm>
#include <set>

#include <sys/stat.h>
#include <unistd.h>

#include "sample-captures/SampleGallery.h"
#include "tests/abi/PluginLibrary.h"
#include "tests/support/TempGallery.h"

namespace {

class ListingTest : public RunningPlugin {
  protected:
    // The folders' names with "/", and one line for each file: "name: type subtype source", and the name of
    // its thumbnail.
    std::string List(const std::string& directory, const std::string& more = "") {
        const KXP::Value& payload =
            Ask("GetFolderListing", "{\"directory\":\"" + directory + "\"" + more + "}");
        EXPECT_EQ(payload["_return_code"].GetInt(), 0);
        std::string listing;
        for (const std::string& name : KXP::JSONGetStrings(payload, "directories"))
            listing += name + "/";
        for (const KXP::Value& file : KXP::JSONGetArray(payload, "files").GetArray()) {
            const auto text = [&](const char* key) {
                return KXP::jsonGetValueOrDefault<std::string>(file, key, "");
            };
            const std::string thumbnail = text("thumbnail");
            listing += "\n" + text("name") + ": " + text("type") + " " + text("subtype") + " " +
                       text("source") + (thumbnail.empty() ? "" : " ") +
                       thumbnail.substr(thumbnail.rfind('/') + 1);
        }
        return listing;
    }

    TempFolder gallery_;
};

}  // namespace

TEST_F(ListingTest, ShowsCapturesOfEveryKindNewestFirst) {
    const std::string root = gallery_ / "gallery";
    samples::WriteSampleGallery(root);
    EXPECT_EQ(List(root),
              "Drachenk\xC3\xBCste/Moss and Iron/Nine Lanterns/Rustwind Rally/"
              "\nNotes.txt: other Unknown Undefined"
              "\nCat on the keyboard.png: image Unknown Undefined"
              "\nDesktop 2026-03-14 18.02.mp4: video Normal OVS_Share"
              "\nLUMIS studio portrait.png: image Normal_Lumis Undefined"
              "\nDesktop 2026-03-14 18.00.png: image Normal OVS_Share");
    EXPECT_EQ(List(root + "/Rustwind Rally/"),
              "\nTeam photo.jpg: image Unknown Undefined"
              "\nGarage.jpg: image Unknown OVS_Share"
              "\nDownloaded trailer.mp4: video Unknown Undefined"
              "\nPhoto finish.mp4: video Highlight OVS_SDK"
              "\nSecond lap.mp4: video Normal OVS_Share"
              "\nPhoto finish.png: image Highlight OVS_SDK"
              "\nStart line.png: image Normal OVS_Share");
    EXPECT_EQ(List(root + "/Nine Lanterns", R"(,"shouldShowEXR":true)"),
              "\nLantern.exr: other Unknown Undefined Lantern Thumbnail.png"
              "\nPanorama.jpg: image SuperResolution_Oversized OVS_Lumis Panorama Thumbnail.jpg"
              "\nValley.jpg: image SuperResolution OVS_Lumis"
              "\nGate.jps: image Stereo OVS_Lumis"
              "\nGate.jpg: image Stereo OVS_Lumis"
              "\nSky in depth.jpg: image 360Stereo OVS_Lumis"
              "\nSky.jpg: image 360Mono OVS_Lumis"
              "\nTemple.png: image Normal_Lumis OVS_Lumis"
              "\nBridge.png: image Normal_Lumis OVS_Lumis");
    EXPECT_FALSE(Has(List(root + "/Nine Lanterns"), "exr"));
}

TEST_F(ListingTest, OrdersByTimeThenNameAndCountsWhatHasNoPlaceInTheSchema) {
    for (const char* name :
         {"b.txt", "a.txt", "x Thumbnail.png", "x Thumbnail.jpe", "x Thumbnail.jpeg", "lonely.exr"})
        gallery_.Write(name, "");
    const auto when = std::filesystem::last_write_time(gallery_ / "a.txt");
    for (const char* name : {"b.txt", "x Thumbnail.jpeg", "x Thumbnail.jpe"})
        std::filesystem::last_write_time(gallery_ / name, when);
    // An engraved media type goes into the subtype, which the pages' schema limits to the words it knows.
    const std::string block = captures::Block("Ovirastream SHARE", R"({"MediaType":"Video"})");
    gallery_.Write("media type.mp4", TempGallery::Video(600, 1200, block));
    std::filesystem::last_write_time(gallery_ / "media type.mp4", when - std::chrono::seconds(1));
    EXPECT_EQ(List(gallery_.path(), R"(,"shouldShowEXR":true)"),
              "\nx Thumbnail.jpeg: other Unknown Undefined\nx Thumbnail.jpe: other Unknown Undefined"
              "\nb.txt: other Unknown Undefined"
              "\na.txt: other Unknown Undefined\nmedia type.mp4: video Unknown OVS_Share");
}

TEST_F(ListingTest, HoldsEachOfManyFilesOnce) {
    std::set<std::string> wanted;
    for (int i = 0; i < 1000; ++i)
        gallery_.Write(*wanted.insert(std::to_string(i) + ".png").first, "");
    std::multiset<std::string> listed;
    for (const KXP::Value& file :
         Ask("GetFolderListing", "{\"directory\":\"" + gallery_.path() + "\"}")["files"].GetArray())
        listed.insert(file["name"].GetString());
    EXPECT_TRUE(std::equal(listed.begin(), listed.end(), wanted.begin(), wanted.end()));
}

TEST_F(ListingTest, LeavesOutFoldersAsAsked) {
    gallery_.MakeFolder("empty");
    gallery_.MakeFolder("only folders/inside");
    for (const char* file : {".hidden/file.txt", "full/file.txt", "hiding/.file"})
        gallery_.Write(file, "");
    const std::string all = "empty/full/hiding/only folders/";
    EXPECT_EQ(List(gallery_.path()), all);
    for (const std::string word : {"none", "hidden", "hiddenAndEmpty", "empty", "hiddenOrEmpty"})
        EXPECT_EQ(List(gallery_.path(), R"(,"excludeDirectoryType":")" + word + "\""),
                  word == "empty" || word == "hiddenOrEmpty" ? "full/" : all)
            << word;
}

TEST_F(ListingTest, HostileEntriesNeitherBlockNorBreakIt) {
    gallery_.Write("good.txt", "");
    const auto at = [&](const char* name) { return gallery_ / name; };
    ASSERT_EQ(mkfifo(at("pipe.png").c_str(), 0600), 0);
    ASSERT_EQ(symlink("nowhere", at("dangling.png").c_str()), 0);
    ASSERT_EQ(symlink("loop.mp4", at("loop.mp4").c_str()), 0);
    ASSERT_EQ(symlink(".", at("self").c_str()), 0);
    ASSERT_EQ(symlink("/dev/zero", at("device.jpg").c_str()), 0);
    gallery_.MakeFolder("folder.png");
    gallery_.Write("not \xFF utf-8.txt", "");
    const std::string late = gallery_.Write("tab\tand \"quotes\".txt", "");
    std::filesystem::last_write_time(
        late, std::filesystem::last_write_time(at("good.txt")) + std::chrono::hours(1));

    EXPECT_EQ(List(gallery_.path()),
              "folder.png/self/\ntab\tand \"quotes\".txt: other Unknown Undefined"
              "\ngood.txt: other Unknown Undefined");
    EXPECT_FALSE(container_.All(6, "FileTime failed for").empty());
    EXPECT_EQ(container_.All(6, "that are not UTF-8").size(), 1u);
    EXPECT_EQ(List("/no/such/folder") + List(at("good.txt")), "");
}
