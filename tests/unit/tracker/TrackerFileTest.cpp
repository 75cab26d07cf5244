#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>

#include <gtest/gtest.h>

#include "common/json/JsonHelpers.h"
#include "common/json/JsonParse.h"
#include "plugin-modules/Gallery/src/tracker/record/OwnLayout.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackerFile.h"
#include "tests/support/LogCapture.h"

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

TrackerContent ReadFrom(const std::string& text) {
    TrackerContent content;
    KXP::Document document;
    const KXP::ElementReader records = ParseUGCFromJSON(content.ugc);
    EXPECT_FALSE(KXP::ParseJSON(text, document, &records).IsError()) << text;
    EXPECT_EQ(ParseUGCGamesFromJSON(document, content.games).code, 0);
    ParseTrackerInfoFromJSON(document, content.info);
    return content;
}

// What the reader of our own layout makes of a file with this text; no value when it leaves that to the
// parser.
std::optional<TrackerContent> ReadDirectly(const std::string& text) {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::tmpfile(), &std::fclose);
    std::fwrite(text.data(), 1, text.size(), file.get());
    std::fflush(file.get());
    TrackerContent content;
    KXP::Document rest;
    if (!ReadOwnLayout(fileno(file.get()), content.ugc, rest)) return std::nullopt;
    EXPECT_EQ(ParseUGCGamesFromJSON(rest, content.games).code, 0);
    ParseTrackerInfoFromJSON(rest, content.info);
    return content;
}

// A video, a highlight and a picture whose texts need escapes and other alphabets.
TrackerContent SampleContent() {
    TrackerContent content = ReadFrom(
        R"({"UGC":[{"id":1,"path":"/g/a.mp4","type":"video","source":"OVS_SDK","subType":"Manual","msDuration":9},
            {"id":2,"path":"/g/b.mp4","type":"video","source":"OVS_SDK","subType":"Highlight","cmsId":7,
             "highlightTags":-1,"highlightGroupId":"g"},{"id":-3,"path":"/g/\u00e9\n\"\\.png","type":"image"}],
            "apps":[{"appName":"Game","recents":[1,2],"groups":{"g":[2]}}],
            "info":{"lastUGCIdUsed":2,"version":6,"folderCRC":4000000001}})");
    content.ugc[2]->bottomBarText = std::string("\0\x1F\xF0\x9F\x8E\xAE", 6);
    return content;
}

// Without the line breaks and tabs, of which the texts here have none.
std::string Line(std::string text) {
    text.erase(std::remove_if(text.begin(), text.end(), [](char c) { return c == '\n' || c == '\t'; }),
               text.end());
    return text;
}

TEST(TrackerFile, EachKindOfRecordHasItsFieldsInOrder) {
    const std::string head = R"({"UGC": [{"id": 1,"path": "","type": "image","subType": "","source": "",)"
                             R"("sizeKB": 0,"date": "","profileName": "","drsName": "","shortName": "",)";
    const std::string tail =
        R"("meme": {"top": "","bottom": "\u0000/"}},{"id": 2,"path": "/g","type": "video","subType": "Highlight",)"
        R"("source": "OVS_SDK","sizeKB": 4000000000,"date": "d","profileName": "p","drsName": "n",)"
        R"("shortName": "s","cmsId": 5,"duration": "0","msDuration": 15000,"audioType": "a",)"
        R"("highlightDefinitionId": "hd","highlightName": "hn","highlightGroupId": "g",)"
        R"("highlightTags": -1,"highlightSignificance": -2,"highlightEventTimeStamp": "e",)"
        R"("meme": {"top": "t","bottom": "b"}}],)"
        R"("apps": [{"appName": "App","recents": [1,2],"groups": {"g": [2]}},{"appName": "Bare"}],)"
        R"("info": {"lastUGCIdUsed": 2,"version": 6,"folderCRC": 4000000001}})";
    // Only the low half of a number of the catalogue and the first path are read; images have no duration.
    TrackerContent content = ReadFrom(
        head + R"("cmsId": 4294967303,"duration": "left out","path": "again","highlightTags": 9,)" + tail);
    content.games["App"].groups["empty"] = {};
    content.games["Bare"].groups["empty"] = {};
    EXPECT_EQ(Line(Written(content)), head + R"("cmsId": 7,)" + tail);
    content.ugc[0]->cmsId = 0x100000001;
    content.ugc[0]->topBarText = "\x80";
    EXPECT_NE(Line(Written(content))
                  .find(R"("cmsId": 4294967297,"meme": {"top": ")"
                        "\xEF\xBF\xBD\""),
              std::string::npos);
    // Each member stands just before the last one read.
    const TrackerContent turned = ReadFrom(R"({"UGC": [{"type": "video","path": "/p","id": 7}]})");
    EXPECT_EQ(turned.ugc[0]->path + std::to_string(turned.ugc[0]->id), "/p7");
    EXPECT_EQ(Written({}),
              "{\n\t\"UGC\": [],\n\t\"apps\": [],\n\t\"info\": {\n\t\t\"lastUGCIdUsed\": 0,\n"
              "\t\t\"version\": 0,\n\t\t\"folderCRC\": 0\n\t}\n}");
}

TEST(TrackerFile, TheReaderOfOurLayoutReadsAsTheParserDoes) {
    TrackerContent content = SampleContent();
    const std::string text = Written(content);
    for (size_t at = 0; at < text.size(); ++at) {
        for (const std::string& instead :
             {std::string(1, '\0'), std::string(), std::string("0"), std::string(","), std::string("\""),
              std::string("\\"), std::string("\x80")}) {
            const std::string changed = text.substr(0, at) + instead + text.substr(at + 1);
            const std::optional<TrackerContent> direct = ReadDirectly(changed);
            if (!direct) continue;
            ASSERT_EQ(Written(*direct), Written(ReadFrom(changed))) << changed;
            ASSERT_EQ(changed.find('\0'), std::string::npos) << at;
        }
        ASSERT_FALSE(ReadDirectly(text.substr(0, at))) << at;
    }
    // Over many pieces, whose ends fall anywhere.
    for (int i = 0; i < 3000; ++i) {
        content.ugc.push_back(std::make_shared<TrackedUGC>(*content.ugc[static_cast<size_t>(i) % 3]));
        content.ugc.back()->topBarText = std::string(static_cast<size_t>(i) % 1000, 'x');
    }
    const std::optional<TrackerContent> direct = ReadDirectly(Written(content));
    ASSERT_TRUE(direct);
    EXPECT_EQ(Written(*direct), Written(content));
}

TEST(TrackerFile, WhatIsMissingOrOfAnotherTypeGetsItsDefault) {
    TrackerContent defaults;
    for (int i = 0; i < 4; ++i)
        defaults.ugc.emplace_back(std::make_shared<TrackedUGC>())->id = -1;
    TrackerContent read;
    read.ugc = ReadFrom(R"({"UGC":[{},5,{"id":"1","path":7,"sizeKB":-1,"cmsId":1.5,"meme":[1]},
        {"id":2147483648,"other":1,"sizeKB":4294967296,"msDuration":"1","meme":{"top":1}}],"UGC":[{}]})")
                   .ugc;
    EXPECT_EQ(Written(read), Written(defaults));
    for (const char* text : {"{}", R"({"UGC":{"UGC":[1]},"UGC":[1],"apps":[{"UGC":[1]}]})"})
        EXPECT_EQ(ReadFrom(text).ugc.size(), 0u) << text;
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
    const auto all = std::tie(info.lastUGCIdUsed, info.version, info.folderCRC);
    EXPECT_EQ(all, std::make_tuple(1, 2, 3u));
    ParseTrackerInfoFromJSON(Parsed(R"({"info":{"lastUGCIdUsed":-9,"folderCRC":4294967295}})"), info);
    EXPECT_EQ(all, std::make_tuple(-9, 2, 0xFFFFFFFFu));
}

TEST(TrackerFile, AHighlightInFlightHasTheMembersThatPagesRead) {
    Highlight highlight;
    highlight.SetId(7);
    highlight.SetPath("/g/Game/h.png");
    highlight.SetType(HighlightType::Screenshot);
    highlight.SetHighlightDefinitionId("def");
    highlight.SetGroupId("group");
    highlight.SetTags(1);
    highlight.SetSignificance(2);
    highlight.SetHighlightName("name");
    highlight.SetTimeStamp("stamp");
    highlight.SetSDKAppInfo({1, "Game", "The Game", "game", "game.bin", 0x1234567890, 2});
    TrackedUGC record(highlight);
    record.topBarText = "\xFF";
    EXPECT_EQ(record.fileType, "screenshot");
    EXPECT_EQ(record.shortName, "game");
    KXP::Document document;
    TrackedUGC::CreateUGCJSONValue(record, document, document.GetAllocator());
    EXPECT_EQ(
        KXP::WriteJSONToString(document),
        R"({"id":7,"path":"/g/Game/h.png","fileType":"image","fileSubType":"Highlight","fileSource":"OVS_SDK",)"
        R"("fileSizeKB":0,"date":"","DRSName":"The Game","DRSProfileName":"Game",)"
        R"("cmsId":78187493520,"duration":"","msDuration":0,"audioType":"",)"
        R"("highlightDefinitionId":"def","highlightName":"name","highlightGroupId":"group",)"
        R"("highlightTags":1,"highlightSignificance":2,"eventTimeStamp":"stamp",)"
        "\"memeInfo\":{\"topBarText\":\"\xEF\xBF\xBD\",\"bottomBarText\":\"\"}}");
    EXPECT_FALSE(record.MediaFileExists());
    record.fileSubType = "Normal";
    EXPECT_FALSE(TrackedUGC::IsAHighlight(record));
}

}  // namespace
