#include <cwchar>

#include <gtest/gtest.h>

#include "common/json/JsonParse.h"
#include "common/text/Base64.h"
#include "libraries/share-common/MetadataBlock.h"
#include "plugin-modules/Gallery/src/engraving/MetadataText.h"

namespace {

// The inner object of the block.
std::string InnerOf(const std::string& text) {
    const std::string start = "\"B64\":\"";
    const size_t from = text.find(start) + start.size();
    return KXP::DecodeBase64Loosely(text.substr(from, text.size() - from - 2));
}

TEST(MetadataText, HoldsWhatIsKnownInOrder) {
    const std::string highlight =
        R"("HighlightName":"","HighlightId":"é","HighlightGroupId":"","HighlightTags":4294967295,)"
        R"("HighlightSignificance":0})";
    const std::string facts =
        R"({"DRSAppName":"App","ProfileName":"profile","DRSProfileName":"profile","MediaType":"Video",)"
        R"("EventTimeStamp":"2021-03-07T14:05:09.042Z","CmsId":-1)";
    const std::string share = facts + "}";
    const std::string sdk = facts + "," + highlight;
    const struct {
        uint32_t type;
        const char* source;
        const std::string& inner;
    } rows[] = {{0, "SHARE", share}, {8, "LUMIS", share}, {5, "SDK", sdk}, {6, "SHARE", sdk}};
    for (const auto& row : rows) {
        CaptureRequestInfo info{};
        info.captureType = row.type;
        std::wcscpy(info.drsAppName, L"App");
        std::wcscpy(info.profileName, L"profile");
        std::wcscpy(info.mediaType, L"Video");
        std::wcscpy(info.highlightId, L"\u00e9");
        info.tags = UINT32_MAX;
        info.cmsId = -1;
        info.eventTimeStamp = 1615125909042;
        const std::string text = MakeMetadata(&info);
        EXPECT_EQ(text.rfind(R"({"Source":"Ovirastream )" + std::string(row.source) + R"(","B64":")", 0), 0u)
            << text;
        EXPECT_EQ(text.find('\n'), std::string::npos);
        EXPECT_EQ(InnerOf(text), row.inner);
        EXPECT_EQ(MakeMetadataOvs(&info),
                  R"({"DRSAppName":"App","ProfileName":"profile","ShortName":"","MediaType":"Video")" +
                      (&row.inner == &sdk ? "," + highlight : "}"));
    }
}

TEST(MetadataText, ReadsBackWithATextThatFillsItsField) {
    CaptureRequestInfo info{};
    info.captureType = 5;
    std::wmemset(info.highlightName, L'\U0001F600', 256);
    std::wcscpy(info.drsProfileName, L"drs");
    MetadataFields fields;
    MetadataBlock(MakeMetadata(&info)).CopyTo(fields);
    EXPECT_EQ(fields.drsProfileName, "drs");
    EXPECT_EQ(fields.highlightName.size(), 4u * 256);
}

}  // namespace
