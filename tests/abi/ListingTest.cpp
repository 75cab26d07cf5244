// The main job on real files: what the pages are told of a folder.

#include <filesystem>
#include <map>
#include <set>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/JsonHelpers.h"
#include "common/JsonParse.h"
#include "sample-captures/SampleGallery.h"
#include "tests/abi/PluginLibrary.h"
#include "tests/support/TempFolder.h"

namespace {

struct Listing {
    std::string order;                         // the files' names, with a bar behind each
    std::map<std::string, std::string> files;  // by name: "type subtype source", and the thumbnail's name
    std::string directories;
};

class ListingTest : public testing::Test {
  protected:
    ListingTest() { EXPECT_TRUE(plugin_.Up(container_)); }
    ~ListingTest() override { EXPECT_TRUE(plugin_.Down(container_)); }

    Listing List(const std::string& directory, const std::string& more = "") {
        const std::string id = "list" + std::to_string(++requests_);
        const std::string answer = plugin_.Ask(container_, "GetFolderListing", id,
                                               "{\"directory\":\"" + directory + "\"" + more + "}");
        EXPECT_NE(answer.find("\"_return_code\":0"), std::string::npos) << answer;
        return Read(answer);
    }

    static Listing Read(const std::string& answer) {
        KXP::Document document;
        EXPECT_FALSE(KXP::ParseJSON(answer, document).IsError());
        const KXP::Value& payload = KXP::JSONGetObject(document, "payload");
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
    FakeContainer container_;
    const PluginLibrary plugin_{PRODUCT_ROOT};
    int requests_ = 0;
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
    gallery_.Write(".hidden/file.txt", "");
    gallery_.Write("full/file.txt", "");
    gallery_.Write("hiding/.file", "");
    const std::string all = "empty|full|hiding|only folders|";
    EXPECT_EQ(List(gallery_.path()).directories, all);
    for (const char* word : {"none", "hidden", "hiddenAndEmpty", "no such word"}) {
        const std::string answer = plugin_.Ask(
            container_, "GetFolderListing", word,
            "{\"directory\":\"" + gallery_.path() + R"(","excludeDirectoryType":")" + word + "\"}");
        // A word that is none of the catalogue's is refused there.
        if (word[0] == 'n' && word[2] == ' ')
            EXPECT_NE(answer.find("Violation: enum"), std::string::npos);
        else
            EXPECT_EQ(Read(answer).directories, all) << word;
    }
    for (const char* word : {"empty", "hiddenOrEmpty"})
        EXPECT_EQ(
            List(gallery_.path(), std::string(R"(,"excludeDirectoryType":")") + word + "\"").directories,
            "full|");
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
    const std::string root = gallery_ / "gallery";
    samples::WriteSampleGallery(root);
    // An engraved media type goes into the subtype, which the pages' schema limits to the words it knows.
    std::string bytes = gallery_.Read("gallery/Desktop 2026-03-14 18.02.mp4");
    const size_t block = bytes.find("{\"Source\"");
    ASSERT_NE(block, std::string::npos);
    const std::string engraved = R"({"Source":"Ovirastream SHARE","B64":"eyJNZWRpYVR5cGUiOiJWaWRlbyJ9"})";
    const size_t end = bytes.find('}', block) + 1;
    bytes = bytes.substr(0, block - 8) + std::string(1, '\0') + std::string(1, '\0') + std::string(1, '\0') +
            static_cast<char>(engraved.size() + 8) + "tagc" + engraved + bytes.substr(end);
    gallery_.Write("media type.mp4", bytes);
    EXPECT_EQ(List(gallery_.path()).files.at("media type.mp4"), "video Unknown OVS_Share");
}
