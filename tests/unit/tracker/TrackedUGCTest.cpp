#include <gtest/gtest.h>

#include "common/JsonHelpers.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackedUGC.h"

namespace {

std::string ApiText(const TrackedUGC& record) {
    KXP::Document document;
    TrackedUGC::CreateUGCJSONValue(record, document, document.GetAllocator());
    return KXP::WriteJSONToString(document);
}

TEST(TrackedUGC, AHighlightInFlightHasNoSizeAndNoDate) {
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
    const TrackedUGC record(highlight);
    EXPECT_TRUE(TrackedUGC::IsAHighlight(record));
    EXPECT_EQ(record.fileType, "screenshot");
    EXPECT_EQ(record.shortName, "game");
    EXPECT_EQ(
        ApiText(record),
        R"({"id":7,"path":"/g/Game/h.png","fileType":"image","fileSubType":"Highlight","fileSource":"OVS_SDK",)"
        R"("fileSizeKB":0,"date":"","DRSName":"The Game","DRSProfileName":"Game",)"
        R"("cmsId":78187493520,"duration":"","msDuration":0,"audioType":"",)"
        R"("highlightDefinitionId":"def","highlightName":"name","highlightGroupId":"group",)"
        R"("highlightTags":1,"highlightSignificance":2,"eventTimeStamp":"stamp",)"
        R"("memeInfo":{"topBarText":"","bottomBarText":""}})");
}

TEST(TrackedUGC, OnlyTheExactWordsMakeAHighlight) {
    TrackedUGC record;
    for (const auto& [source, subType] : {std::pair("OVS_SDK", "highlight"), {"OVS", "Highlight"}}) {
        record.fileSource = source;
        record.fileSubType = subType;
        EXPECT_FALSE(TrackedUGC::IsAHighlight(record)) << source;
    }
}

TEST(TrackedUGC, TheApiFormLeavesOutAScreenshotsSubtypeAndBytesThatAreNoText) {
    TrackedUGC record;
    record.fileSubType = "Screenshot";
    record.topBarText = std::string("a\0\xFF\xC3", 4);
    const std::string text = ApiText(record);
    EXPECT_EQ(text.find("fileSubType"), std::string::npos);
    EXPECT_NE(text.find(R"("topBarText":"a\u0000)"
                        "\xEF\xBF\xBD\xEF\xBF\xBD\""),
              std::string::npos)
        << text;
}

}  // namespace
