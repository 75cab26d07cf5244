// The requests for what is on record, over a gallery that exists when the tracker starts.

#include "sample-captures/PngImage.h"
#include "tests/abi/GalleryRequests.h"

using RecordsTest = GalleryRequests;

TEST_F(RecordsTest, ListGamesTheirCapturesAndTheirLogs) {
    gallery_.AddImage("Race/a.png");
    gallery_.AddImage("Race/c.png");
    gallery_.AddHighlight("Race/b.mp4");
    gallery_.AddImage("Art/z.png");
    gallery_.AddImage("of no game.png");
    gallery_.Add("Race/foreign.txt", "text");
    Start();
    const KXP::Value& stats = Ask("GetAppStats", R"({"appName":"Race"})");
    EXPECT_EQ(KXP::jsonGetValue<unsigned>(stats, "screenshots"), 2u);
    EXPECT_EQ(KXP::jsonGetValue<unsigned>(stats, "videos"), 1u);
    EXPECT_EQ(Ask("GetAppUGC", R"({"appName":"Race"})")["ugc"].Size(), 3u);
    EXPECT_EQ(Ask("GetAppUGC", R"({"appName":"Nobody's"})")["ugc"].Size(), 0u);
    EXPECT_EQ(Ask("GetRecentUGC", R"({"count":3})")["recents"].Size(), 3u);

    const auto list = [&](const std::string& folder) {
        const KXP::Value& listing = Ask("GetFolderListing", R"({"directory":")" + gallery_.path() + folder +
                                                                R"(","shouldGetOnlyZv":true})");
        std::string names;
        for (const KXP::Value& file : listing["files"].GetArray())
            names += KXP::jsonGetValue<std::string>(file, "name") + "|";
        for (const std::string& name : KXP::JSONGetStrings(listing, "directories"))
            names += name + "/";
        return names;
    };
    EXPECT_EQ(list("/"), "Art/Race/");
    EXPECT_EQ(list("/Race"), "c.png|b.mp4|a.png|");

    EXPECT_EQ(Members(Ask("GetEventData", "{}")), "");
    gallery_.Add("Race/session.edgelog",
                 R"({"session":3,"events":[{"time":"1","name":"n","info":"i","round":2}],)"
                 R"("rounds":[{"number":2,"score1":5,"time":"0"}]})");
    EXPECT_EQ(KXP::WriteJSONToString(Ask("GetEventData", "{}")["recents"]),
              R"([{"gameName":"Race","session":3,"events":[{"time":"1","name":"n","info":"i","round":2}],)"
              R"("rounds":[{"number":2,"score1":5,"time":"0"}]}])");
}

TEST_F(RecordsTest, DescribeOneFile) {
    gallery_.Add("Race/shown.png",
                 samples::PngImage(64, 36, {{1, 2, 3}, {4, 5, 6}},
                                   {samples::PngTextChunk("Software", "Ovirastream SHARE")}));
    gallery_.AddImage("Race/a.png");
    gallery_.AddHighlight("Race/b.mp4");
    const std::string tag = samples::Mp4Box("tagc", captures::Block("Ovirastream SDK", "{}"));
    const std::string bare = gallery_.Add(
        "Race/bare.mp4", captures::FileType() + samples::Mp4Box("moov", samples::Mp4Box("udta", tag)) +
                             samples::Mp4Box("free", std::string(40, '\0')));
    Start();
    EXPECT_EQ(Ask("GetFileMetadata", File(bare))["audiotype"], "Unknown") << "of a video without a header";
    EXPECT_EQ(Members(Ask("GetFileMetadata", File(gallery_.Path("Race/a.png")))),
              "fileType|fileSubType|fileSource|DRSName|DRSProfileName|cmsId|date|fileSizeKB|eventTimeStamp|"
              "memeInfo|");
    const KXP::Value& video = Ask("GetFileMetadata", File(gallery_.Path("Race/b.mp4")));
    EXPECT_EQ(Members(video),
              "fileType|fileSubType|fileSource|DRSName|DRSProfileName|cmsId|date|fileSizeKB|eventTimeStamp|"
              "duration|msDuration|audiotype|memeInfo|");
    EXPECT_EQ(KXP::jsonGetValue<std::string>(video, "duration"), "00:00:02");
    EXPECT_EQ(KXP::jsonGetValue<std::string>(video, "DRSProfileName"), "Race");

    EXPECT_TRUE(Ask("GetFileMetadata", File(gallery_.Path("Race/shown.png"), R"(,"width":8,"height":8)"))
                    .HasMember("thumbnail"));

    EXPECT_EQ(Result("GetFileMetadata", File(gallery_.Path("Race/none.png"))), "0 Success");
    EXPECT_EQ(Members(Ask("GetFileMetadata", File(gallery_.Path("Race/none.png")))), "");
    const std::pair<const char*, const char*> wrong[] = {
        {R"(,"width":8)", R"( "width" defined, but not "height")"},
        {R"(,"height":8)", R"( "height" defined, but not "width")"},
        {R"(,"width":0,"height":8)", R"( "width" should be a positive integer)"},
        {R"(,"width":8,"height":0)", R"( "height" should be a positive integer)"}};
    for (const auto& [size, text] : wrong)
        EXPECT_EQ(Result("GetFileMetadata", File(gallery_.Path("Race/a.png"), size)), kInvalid + text);
}

TEST_F(RecordsTest, TheSumOfAFolderChangesWithItsFiles) {
    gallery_.AddImage("Race/a.png");
    Start();
    for (const std::string& folder : {gallery_.path(), gallery_.Path("Race")}) {
        const std::string payload = R"({"directory":")" + folder + "\"}";
        const std::string before = AskText("GetFolderCRC", payload);
        EXPECT_EQ(before.find(R"({"crc":)"), 0u) << before;
        EXPECT_EQ(AskText("GetFolderCRC", payload), before);
        gallery_.AddHighlight("Race/" + std::to_string(folder.size()) + ".mp4");
        EXPECT_NE(AskText("GetFolderCRC", payload), before) << folder;
    }
}

TEST_F(RecordsTest, NothingOnRecordIsNoFailureAndNoTrackerIsOne) {
    Start();
    EXPECT_EQ(AskText("GetRecentUGC", R"({"count":3})").find(R"({"_return_code":0,)"), 0u);
    // There is no change of folder to undo; the attempt leaves no tracker.
    EXPECT_EQ(Result("CancelPathUpdate", "{}"), kInvalid + " Invalid path defined");
    const std::string directory = R"({"shouldGetOnlyZv":true,"directory":")" + gallery_.path() + "\"}";
    for (const auto& [method, payload] : std::initializer_list<std::pair<const char*, std::string>>{
             {"GetAppStats", R"({"appName":"Race"})"},
             {"GetAppUGC", R"({"appName":"Race"})"},
             {"GetRecentUGC", R"({"count":3})"},
             {"GetFileMetadata", File(gallery_.Path("Race/a.png"))},
             {"GetFolderCRC", directory},
             {"GetFolderListing", directory}})
        EXPECT_EQ(Result(method, payload), kFailure + " No tracker") << method;
}

TEST_F(RecordsTest, AHighlightInFlightIsListedInThePagesWords) {
    Start();
    Ask("EnqueuePendingHighlight",
        R"({"app":{"profileName":"Race"},"highlight":{"type":"screenshot","path":"/t/a.png"}})");
    const std::string folder = R"({"shouldGetOnlyZv":true,"directory":")" + gallery_.Path("Race") + "\"}";
    EXPECT_EQ(KXP::WriteJSONToString(Ask("GetFolderListing", folder)["files"]),
              R"([{"name":"a.png","type":"image","subtype":"Highlight","source":"OVS_SDK"}])");
}

TEST_F(RecordsTest, AScreenshotOfAnEarlierVersionHasNoSubtype) {
    const std::string capture = gallery_.AddImage("Race/a.png");
    StartWithRecords({{"\"Normal\"", "\"Screenshot\""}});
    const std::string metadata = AskText("GetFileMetadata", File(capture));
    EXPECT_TRUE(Has(metadata, R"("fileType":"image","fileSource":"OVS_Share")")) << metadata;
}
