#include <algorithm>

#include <gtest/gtest.h>

#include "common/JSONFile.h"
#include "common/JsonParse.h"
#include "plugin-modules/Gallery/src/tracker/record/RecordFields.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackerFile.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempFolder.h"

namespace {

KXP::Document Parsed(const std::string& text) {
    KXP::Document document;
    EXPECT_FALSE(KXP::ParseJSON(text, document).IsError()) << text;
    return document;
}

std::string Written(const TrackerContent& content) {
    KXP::JsonBuffer buffer;
    KXP::PrettyJsonWriter writer(buffer);
    writer.SetIndent('\t', 1);
    WriteTrackerJSON(content, writer);
    return {buffer.GetString(), buffer.GetSize()};
}

TrackerContent ReadFrom(const KXP::Document& document) {
    TrackerContent content;
    content.ugc = ParseUGCFromJSON(document);
    EXPECT_EQ(ParseUGCGamesFromJSON(document, content.games).code, 0);
    ParseTrackerInfoFromJSON(document, content.info);
    return content;
}

std::vector<TrackedUGC> ReadRecords(const std::string& text) {
    return ReadFrom(Parsed(text)).ugc;
}

// Gives every member of a record that the list names a value of its own.
struct Fill {
    TrackedUGC& record;
    int seed;

    void operator()(std::string TrackedUGC::*text) {
        record.*text = "text \xC3\xA9 " + std::to_string(++seed);
    }
    template <typename T>
    void operator()(T TrackedUGC::*number) {
        record.*number = static_cast<T>(++seed) * 100003;
    }
    void operator()(RecordFields fields) {
        for (const RecordField& field : fields)
            std::visit(*this, field.member);
    }
};

struct Same {
    const TrackedUGC& a;
    const TrackedUGC& b;

    template <typename T>
    bool operator()(T TrackedUGC::*member) const {
        return a.*member == b.*member;
    }
    bool operator()(RecordFields fields) const {
        return std::all_of(fields.begin(), fields.end(),
                           [&](const RecordField& field) { return std::visit(*this, field.member); });
    }
};

TEST(TrackerFile, WritesTheFieldsOfEachKindOfRecordInOrder) {
    TrackerContent content;
    content.ugc.resize(2);
    TrackedUGC& image = content.ugc[0];
    image.id = 1;
    image.fileType = "image";
    image.fileSubType = "Screenshot";
    image.cmsId = 0x100000001;
    image.duration = "left out";
    image.topBarText = std::string("\0\x80/", 3);
    TrackedUGC& video = content.ugc[1];
    video.id = 2;
    video.fileType = "video";
    video.fileSubType = "Highlight";
    video.fileSource = "OVS_SDK";
    video.sizeKB = 4000000000;
    video.msDuration = 15000;
    video.highlightTags = -1;
    content.games["App"].recents = {1, 2};
    content.games["App"].groups = {{"empty", {}}, {"g", {2}}};
    content.games["Bare"].groups = {{"empty", {}}};
    content.info = {2, kTrackerVersion, 4000000001};
    std::string text = Written(content);
    text.erase(std::remove_if(text.begin(), text.end(), [](char c) { return c == '\n' || c == '\t'; }),
               text.end());
    EXPECT_EQ(
        text,
        R"({"UGC": [{"id": 1,"path": "","type": "image","subType": "Screenshot","source": "","sizeKB": 0,)"
        R"("date": "","profileName": "","drsName": "","shortName": "","cmsId": 4294967297,)"
        R"("meme": {"top": "\u0000)"
        "\xEF\xBF\xBD"
        R"(/","bottom": ""}},{"id": 2,"path": "","type": "video","subType": "Highlight","source": "OVS_SDK",)"
        R"("sizeKB": 4000000000,"date": "","profileName": "","drsName": "","shortName": "","cmsId": 0,)"
        R"("duration": "","msDuration": 15000,"audioType": "","highlightDefinitionId": "",)"
        R"("highlightName": "","highlightGroupId": "","highlightTags": -1,"highlightSignificance": 0,)"
        R"("highlightEventTimeStamp": "","meme": {"top": "","bottom": ""}}],)"
        R"("apps": [{"appName": "App","recents": [1,2],"groups": {"g": [2]}},{"appName": "Bare"}],)"
        R"("info": {"lastUGCIdUsed": 2,"version": 6,"folderCRC": 4000000001}})");
    EXPECT_EQ(Written({}),
              "{\n\t\"UGC\": [],\n\t\"apps\": [],\n\t\"info\": {\n\t\t\"lastUGCIdUsed\": 0,\n"
              "\t\t\"version\": 0,\n\t\t\"folderCRC\": 0\n\t}\n}");
}

TEST(TrackerFile, EveryFieldOfManyRecordsSurvivesTheFile) {
    TrackerContent content;
    for (int i = 0; i < 20000; ++i) {
        TrackedUGC& record = content.ugc.emplace_back();
        Fill{record, i}(kRecordFileFields);
        record.fileType = "video";
        record.fileSource = "OVS_SDK";
        record.fileSubType = "Highlight";
    }
    const TempFolder folder;
    KXP::JSONFile file;
    file.Init(folder / "UGCTracker.json");
    KXP::HeldLog log;
    ASSERT_EQ(file.WriteJSON([&](auto& writer) { WriteTrackerJSON(content, writer); }, log).code, 0);
    KXP::Document document;
    ASSERT_EQ(file.ReadAndParseJSON(document).code, 0);
    const TrackerContent again = ReadFrom(document);
    ASSERT_EQ(again.ugc.size(), content.ugc.size());
    for (size_t i = 0; i < again.ugc.size(); ++i)
        ASSERT_TRUE((Same{content.ugc[i], again.ugc[i]}(kRecordFileFields))) << i;
}

TEST(TrackerFile, WhatIsMissingOrOfAnotherTypeGetsItsDefault) {
    const auto records = ReadRecords(R"({"UGC":[{},5,{"id":"1","path":7,"sizeKB":-1,"cmsId":1.5,"meme":[1]},
        {"id":2147483648,"sizeKB":4294967296,"msDuration":"1","meme":{"top":1}}]})");
    ASSERT_EQ(records.size(), 4u);
    TrackedUGC defaults;
    defaults.id = -1;
    for (const TrackedUGC& record : records)
        EXPECT_TRUE((Same{record, defaults}(kRecordFileFields)));
    for (const char* text : {"{}", R"({"UGC":5})", R"({"UGC":{}})", R"({"UGC":[]})"})
        EXPECT_EQ(ReadRecords(text).size(), 0u) << text;
}

TEST(TrackerFile, TakesEveryKeyOfARecordInAnyOrder) {
    const auto records = ReadRecords(
        R"({"UGC":[{"meme":{"bottom":"b","more":1,"top":"t"},"unknown":{},"cmsId":18446744073709551615,
        "type":"image","id":3,"duration":"d","id":4,"highlightTags":-8,"sizeKB":4294967295}]})");
    ASSERT_EQ(records.size(), 1u);
    const TrackedUGC& record = records[0];
    EXPECT_EQ(record.id, 3);
    EXPECT_EQ(record.duration, "d");
    EXPECT_EQ(record.highlightTags, -8);
    EXPECT_EQ(record.topBarText + record.bottomBarText, "tb");
    EXPECT_EQ(record.cmsId, 0xFFFFFFFFu);
    EXPECT_EQ(record.sizeKB, 0xFFFFFFFFu);
}

TEST(TrackerFile, GamesWithoutANameAreDroppedAndTheOthersKept) {
    LogCapture log;
    TrackedUGCGames games;
    games["old"];
    const auto document = Parsed(R"({"apps":[5,{"recents":[1]},{"appName":1},{"appName":"a",
        "recents":[1,"2",3.5,4294967296,4],"groups":{"g":[5,null,6],"h":7}},{"appName":"b","groups":[1]}]})");
    EXPECT_EQ(ParseUGCGamesFromJSON(document, games).code, 0);
    EXPECT_EQ(log.Count("ParseUGCGamesFromJSON::Not using corrupt tracked highlight game"), 3);
    EXPECT_TRUE(log.HasLine(1, "ParseUGCGamesFromJSON::Not using corrupt tracked highlight game"));
    ASSERT_EQ(games.size(), 2u);
    EXPECT_EQ(games["a"].appName, "a");
    EXPECT_EQ(games["a"].recents, (std::vector<int>{1, 4}));
    EXPECT_EQ(games["a"].groups, (std::map<std::string, std::vector<int>>{{"g", {5, 6}}}));
    EXPECT_TRUE(games["b"].groups.empty());

    EXPECT_EQ(ParseUGCGamesFromJSON(Parsed(R"({"apps":{}})"), games).code, 0);
    EXPECT_TRUE(games.empty());
    const KXP::RetVal result = ParseUGCGamesFromJSON(Parsed("[]"), games);
    EXPECT_EQ(result.code, static_cast<int32_t>(0x8007000D));
    EXPECT_EQ(result.text, "Could not parse tracker");
    EXPECT_TRUE(log.HasLine(1, "ParseUGCGamesFromJSON::Could not parse tracker"));
}

TEST(TrackerFile, InfoOfAnotherTypeLeavesWhatWasThere) {
    TrackerInfo info{1, 2, 3};
    ParseTrackerInfoFromJSON(Parsed(R"({"info":{"lastUGCIdUsed":"9","version":4294967296,"folderCRC":-1}})"),
                             info);
    ParseTrackerInfoFromJSON(Parsed(R"({"info":[]})"), info);
    EXPECT_EQ(info.lastUGCIdUsed, 1);
    EXPECT_EQ(info.version, 2);
    EXPECT_EQ(info.folderCRC, 3u);
    ParseTrackerInfoFromJSON(Parsed(R"({"info":{"lastUGCIdUsed":-9,"folderCRC":4294967295}})"), info);
    EXPECT_EQ(info.lastUGCIdUsed, -9);
    EXPECT_EQ(info.version, 2);
    EXPECT_EQ(info.folderCRC, 0xFFFFFFFFu);
}

}  // namespace
