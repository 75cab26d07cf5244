// Listings of real files, as the pages receive them.

#include <filesystem>
#include <map>

#include <sys/stat.h>
#include <unistd.h>

#include "sample-captures/SampleGallery.h"
#include "tests/abi/PluginLibrary.h"
#include "tests/support/TempGallery.h"

namespace {

struct Listing {
    std::string order;                         // the files' names, each followed by a bar
    std::map<std::string, std::string> files;  // by name: "type subtype source", and the thumbnail's name
    std::string directories;
};

class ListingTest : public RunningPlugin {
  protected:
    Listing List(const std::string& directory, const std::string& more = "") {
        const KXP::Value& payload =
            Ask("GetFolderListing", "{\"directory\":\"" + directory + "\"" + more + "}");
        EXPECT_EQ(payload["_return_code"].GetInt(), 0);
        Listing listing;
        for (const KXP::Value& file : KXP::JSONGetArray(payload, "files").GetArray()) {
            const auto text = [&](const char* key) {
                return KXP::jsonGetValueOrDefault<std::string>(file, key, "");
            };
            const std::string thumbnail = text("thumbnail");
            listing.order += text("name") + "|";
            listing.files[text("name")] =
                text("type") + " " + text("subtype") + " " + text("source") +
                (thumbnail.empty() ? "" : " " + thumbnail.substr(thumbnail.rfind('/') + 1));
        }
        for (const std::string& name : KXP::JSONGetStrings(payload, "directories"))
            listing.directories += name + "|";
        return listing;
    }

    TempFolder gallery_;
};

}  // namespace

TEST_F(ListingTest, TellsCapturesOfEveryKind) {
    const std::string root = gallery_ / "gallery";
    samples::WriteSampleGallery(root);
    const Listing top = List(root);
    EXPECT_EQ(top.directories, "Drachenk\xC3\xBCste|Moss and Iron|Nine Lanterns|Rustwind Rally|");
    EXPECT_EQ(top.order,
              "Notes.txt|Cat on the keyboard.png|Desktop 2026-03-14 18.02.mp4|LUMIS studio portrait.png|"
              "Desktop 2026-03-14 18.00.png|")
        << "newest first";
    EXPECT_EQ(top.files.at("Desktop 2026-03-14 18.00.png"), "image Normal OVS_Share");
    EXPECT_EQ(top.files.at("LUMIS studio portrait.png"), "image Normal_Lumis Undefined");
    EXPECT_EQ(top.files.at("Desktop 2026-03-14 18.02.mp4"), "video Normal OVS_Share");
    EXPECT_EQ(top.files.at("Cat on the keyboard.png"), "image Unknown Undefined");
    EXPECT_EQ(top.files.at("Notes.txt"), "other Unknown Undefined");

    const Listing race = List(root + "/Rustwind Rally/");
    EXPECT_EQ(race.files.at("Photo finish.png"), "image Highlight OVS_SDK");
    EXPECT_EQ(race.files.at("Photo finish.mp4"), "video Highlight OVS_SDK");
    EXPECT_EQ(race.files.at("Downloaded trailer.mp4"), "video Unknown Undefined");
    EXPECT_EQ(race.files.at("Garage.jpg"), "image Unknown OVS_Share");
    EXPECT_EQ(race.files.at("Team photo.jpg"), "image Unknown Undefined");

    const Listing photos = List(root + "/Nine Lanterns", R"(,"shouldShowEXR":true)");
    EXPECT_EQ(photos.files.at("Temple.png"), "image Normal_Lumis OVS_Lumis");
    EXPECT_EQ(photos.files.at("Sky.jpg"), "image 360Mono OVS_Lumis");
    EXPECT_EQ(photos.files.at("Sky in depth.jpg"), "image 360Stereo OVS_Lumis");
    EXPECT_EQ(photos.files.at("Gate.jps"), "image Stereo OVS_Lumis");
    EXPECT_EQ(photos.files.at("Valley.jpg"), "image SuperResolution OVS_Lumis");
    EXPECT_EQ(photos.files.at("Panorama.jpg"),
              "image SuperResolution_Oversized OVS_Lumis Panorama Thumbnail.jpg");
    EXPECT_EQ(photos.files.at("Lantern.exr"), "other Unknown Undefined Lantern Thumbnail.png");
    EXPECT_EQ(photos.order.find(" Thumbnail."), std::string::npos);
    EXPECT_EQ(List(root + "/Nine Lanterns").files.count("Lantern.exr"), 0u);
}

TEST_F(ListingTest, OrdersByTimeThenNameAndCountsWhatHasNoPlaceInTheSchema) {
    gallery_.Write("b.txt", "");
    gallery_.Write("a.txt", "");
    gallery_.Write("x Thumbnail.png", "");
    gallery_.Write("x Thumbnail.jpeg", "");
    gallery_.Write("lonely.exr", "");
    const auto when = std::filesystem::last_write_time(gallery_ / "a.txt");
    for (const char* name : {"b.txt", "x Thumbnail.jpeg"})
        std::filesystem::last_write_time(gallery_ / name, when);
    EXPECT_EQ(List(gallery_.path(), R"(,"shouldShowEXR":true)").order, "x Thumbnail.jpeg|b.txt|a.txt|");
}

TEST_F(ListingTest, LeavesOutFoldersAsAsked) {
    gallery_.MakeFolder("empty");
    gallery_.MakeFolder("only folders/inside");
    for (const char* file : {".hidden/file.txt", "full/file.txt", "hiding/.file"})
        gallery_.Write(file, "");
    const std::string all = "empty|full|hiding|only folders|";
    EXPECT_EQ(List(gallery_.path()).directories, all);
    for (const char* word : {"none", "hidden", "hiddenAndEmpty", "empty", "hiddenOrEmpty"})
        EXPECT_EQ(
            List(gallery_.path(), std::string(R"(,"excludeDirectoryType":")") + word + "\"").directories,
            std::string(word) == "empty" || std::string(word) == "hiddenOrEmpty" ? "full|" : all)
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
    ASSERT_EQ(chmod(gallery_.Write("secret.png", "x").c_str(), 0), 0);
    gallery_.MakeFolder("folder.png");
    gallery_.Write("not \xFF utf-8.txt", "");
    gallery_.Write("tab\tand \"quotes\".txt", "");

    Listing listing = List(gallery_.path());
    listing.files.erase("secret.png");  // readable for root
    std::string names;
    for (const auto& [name, what] : listing.files)
        names += name + "|";
    EXPECT_EQ(names, "good.txt|tab\tand \"quotes\".txt|");
    EXPECT_EQ(listing.directories, "folder.png|self|");
    EXPECT_FALSE(container_.All(6, "FileTime failed for").empty());
    EXPECT_EQ(container_.All(6, "that are not UTF-8").size(), 1u);

    EXPECT_EQ(List("/no/such/folder").order, "");
    EXPECT_EQ(List(at("good.txt")).order, "");
}

TEST_F(ListingTest, AFileWithAWordOfItsOwnDoesNotSpoilTheAnswer) {
    // An engraved media type goes into the subtype, which the pages' schema limits to the words it knows.
    const std::string block = captures::Block("Ovirastream SHARE", R"({"MediaType":"Video"})");
    gallery_.Write("media type.mp4", TempGallery::Video(600, 1200, block));
    EXPECT_EQ(List(gallery_.path()).files.at("media type.mp4"), "video Unknown OVS_Share");
}
