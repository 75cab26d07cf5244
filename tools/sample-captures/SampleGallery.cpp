#include "sample-captures/SampleGallery.h"

#include "sample-captures/EngravedBlock.h"
#include "sample-captures/ExrImage.h"
#include "sample-captures/JpegImage.h"
#include "sample-captures/Mp4Video.h"
#include "sample-captures/PngImage.h"

namespace samples {
namespace {

constexpr char kShare[] = "Ovirastream SHARE";
constexpr char kSdk[] = "Ovirastream SDK";
constexpr char kLumis[] = "Ovirastream LUMIS";

constexpr Gradient kDawn = {{38, 54, 112}, {246, 168, 120}};
constexpr Gradient kSea = {{16, 78, 122}, {132, 206, 196}};
constexpr Gradient kForest = {{22, 58, 44}, {176, 196, 112}};
constexpr Gradient kEmber = {{58, 18, 34}, {232, 104, 48}};
constexpr Gradient kSlate = {{70, 76, 88}, {168, 174, 182}};

std::string Png(const Gradient& colours, const std::vector<std::string>& chunks) {
    return PngImage(640, 360, colours, chunks);
}

// The name of a game is that of the application and of its profile.
std::vector<BlockMember> GameMembers(const std::string& game, const std::string& shortName, int64_t cmsId) {
    return {{"DRSAppName", game}, {"DRSProfileName", game}, {"ShortName", shortName}, {"CmsId", cmsId}};
}

std::vector<BlockMember> HighlightMembers(const std::string& game, const std::string& shortName) {
    std::vector<BlockMember> members = GameMembers(game, shortName, 100448211);
    members.insert(members.end(), {{"EventTimeStamp", "2026-03-14T18:21:40.000Z"},
                                   {"HighlightName", "Photo Finish"},
                                   {"HighlightId", "PHOTO_FINISH"},
                                   {"HighlightGroupId", "RACE_3"},
                                   {"HighlightTags", 4},
                                   {"HighlightSignificance", 2}});
    return members;
}

void AddTopFolder(std::vector<SampleFile>& files) {
    files.push_back({"Desktop 2026-03-14 18.00.png",
                     Png(kDawn, {PngTextChunk("Software", std::string(kShare) + " 3.20")}),
                     "screenshot, PNG signed by its software, with a version behind the name"});
    files.push_back({"LUMIS studio portrait.png", Png(kSea, {PngTextChunk("Source", "ZORVEX")}),
                     "stand-alone LUMIS capture, PNG"});
    Mp4Options video;
    video.tagc = EngravedBlock(kShare, {});
    files.push_back({"Desktop 2026-03-14 18.02.mp4", Mp4Video(video, kDawn), "recording, MP4"});
    files.push_back({"Cat on the keyboard.png", Png(kSlate, {PngTextChunk("Software", "Pixel Kettle 7")}),
                     "foreign PNG"});
    files.push_back({"Notes.txt", "Clips to keep: the finish of race three.\n", "foreign text file"});
}

void AddRaceFolder(std::vector<SampleFile>& files) {
    const std::string game = "Rustwind Rally";
    const std::string block = EngravedBlock(kShare, GameMembers(game, "rustwind", 100448211));
    const std::string highlight = EngravedBlock(kSdk, HighlightMembers(game, "rustwind"));
    files.push_back({game + "/Start line.png",
                     Png(kEmber, {PngTextChunk("Software", kShare), PngTextChunk("DRSName", game),
                                  PngTextChunk("DRSProfileName", game)}),
                     "screenshot, PNG with the game's name"});
    files.push_back({game + "/Photo finish.png",
                     Png(kEmber, {PngTextChunk("Software", kSdk), PngTextChunk("Description", highlight)}),
                     "highlight screenshot, PNG with an engraved block"});
    Mp4Options video;
    video.timeScale = 30000;
    video.duration = 75075;
    video.frames = 15;
    video.tagc = block;
    files.push_back({game + "/Second lap.mp4", Mp4Video(video, kEmber), "recording, MP4"});
    video.moovBehind = true;
    video.tagc = highlight;
    files.push_back({game + "/Photo finish.mp4", Mp4Video(video, kEmber),
                     "highlight, MP4 with its index behind the frames"});
    video.tagc.clear();
    files.push_back({game + "/Downloaded trailer.mp4", Mp4Video(video, kSlate), "foreign MP4"});
    files.push_back({game + "/Garage.jpg",
                     JpegImage(640, 360, kEmber, {"", "ZORVEX", "", kShare, game, "Rustwind Rally profile"}),
                     "screenshot, JPEG with the game's name"});
    files.push_back({game + "/Team photo.jpg",
                     JpegImage(640, 360, kSlate, {"Pit crew", "Kestrel Optics", "K-20", "", "", ""}),
                     "foreign JPEG"});
}

void AddPhotoFolder(std::vector<SampleFile>& files) {
    const std::string game = "Nine Lanterns";
    const auto exif = [](const std::string& kind) { return ExifTexts{kind, "ZORVEX", "", kLumis, "", ""}; };
    files.push_back(
        {game + "/Bridge.png", Png(kForest, {PngTextChunk("Software", kLumis)}), "LUMIS capture, PNG"});
    files.push_back(
        {game + "/Temple.png",
         Png(kForest, {PngXmpChunk(kLumis, EngravedBlock(kLumis, GameMembers(game, "lanterns", 100913002)))}),
         "LUMIS capture, PNG signed in its XMP packet"});
    files.push_back({game + "/Sky.jpg", JpegImage(2048, 1024, kDawn, exif("360Mono")), "360 degrees, JPEG"});
    files.push_back({game + "/Sky in depth.jpg", JpegImage(2048, 2048, kDawn, exif("360Stereo")),
                     "360 degrees, stereo, JPEG"});
    files.push_back({game + "/Gate.jpg", JpegImage(1280, 360, kForest, exif("Stereo")), "stereo, JPEG"});
    files.push_back({game + "/Gate.jps", JpegImage(1280, 360, kForest, exif("")), "stereo, JPS"});
    files.push_back({game + "/Valley.jpg", JpegImage(4096, 2304, kForest, exif("SuperResolution")),
                     "super resolution, JPEG"});
    files.push_back({game + "/Panorama.jpg",
                     WithClaimedSize(JpegImage(512, 512, kSea, exif("SuperResolution")), 8192, 8200),
                     "super resolution too large to show, JPEG"});
    files.push_back({game + "/Panorama Thumbnail.jpg", JpegImage(256, 256, kSea), "its thumbnail"});
    files.push_back({game + "/Lantern.exr", ExrImage(64, 36, kEmber), "raw light, EXR"});
    files.push_back({game + "/Lantern Thumbnail.png", PngImage(64, 36, kEmber), "its thumbnail"});
}

void AddOtherFolders(std::vector<SampleFile>& files) {
    // A name beyond ASCII, as games have them.
    const std::string game = "Drachenk\xC3\xBCste";
    std::vector<BlockMember> members = GameMembers(game, "drachen", 101200377);
    members.push_back({"MediaType", "Screenshot"});
    files.push_back({game + "/Klippe.png", Png(kSea, {PngXmpChunk(kShare, EngravedBlock(kShare, members))}),
                     "screenshot, PNG signed in its XMP packet"});
    files.push_back({game + "/Bucht.jpg", JpegImage(640, 360, kSea, {"", "", "ZvCamera", "", "", ""}),
                     "photo, JPEG signed by its model"});
    files.push_back({"Moss and Iron/", "", "a game without captures"});
}

}  // namespace

std::vector<SampleFile> MakeSampleGallery() {
    std::vector<SampleFile> files;
    AddTopFolder(files);
    AddRaceFolder(files);
    AddPhotoFolder(files);
    AddOtherFolders(files);
    return files;
}

}  // namespace samples
