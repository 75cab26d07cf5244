#include <cstring>

#include <gtest/gtest.h>

#include "common/Base64.h"
#include "common/JsonParse.h"
#include "libraries/share-common/MetadataBlock.h"
#include "plugin-modules/Gallery/src/engraving/MetadataText.h"

namespace {

// The inner object of the block.
std::string InnerOf(const std::string& text) {
    const std::string start = "\"B64\":\"";
    const size_t from = text.find(start) + start.size();
    return KXP::DecodeBase64Loosely(text.substr(from, text.size() - from - 2));
}

CaptureRequestInfo Info(uint32_t type) {
    CaptureRequestInfo info;
    std::memset(&info, 0, sizeof(info));
    info.captureType = type;
    return info;
}

TEST(MetadataText, HoldsWhatIsKnownInOrder) {
    struct Row {
        uint32_t type;
        const char* start;
        std::string inner;
    };
    const std::string highlight =
        R"("HighlightName":"","HighlightId":"é","HighlightGroupId":"","HighlightTags":4294967295,)"
        R"("HighlightSignificance":0})";
    const std::string facts =
        R"({"DRSAppName":"App","ProfileName":"profile","DRSProfileName":"profile","MediaType":"Video",)"
        R"("EventTimeStamp":"2021-03-07T14:05:09.042Z","CmsId":-1)";
    const std::string sdk = facts + "," + highlight;
    for (const Row& row : {Row{0, R"({"Source":"Ovirastream SHARE","B64":")", facts + "}"},
                           Row{8, R"({"Source":"Ovirastream LUMIS","B64":")", facts + "}"},
                           Row{5, R"({"Source":"Ovirastream SDK","B64":")", sdk},
                           Row{6, R"({"Source":"Ovirastream SHARE","B64":")", sdk}}) {
        CaptureRequestInfo info = Info(row.type);
        std::wcscpy(info.drsAppName, L"App");
        std::wcscpy(info.profileName, L"profile");
        std::wcscpy(info.mediaType, L"Video");
        std::wcscpy(info.highlightId, L"\u00e9");
        info.tags = UINT32_MAX;
        info.cmsId = -1;
        info.eventTimeStamp = 1615125909042;
        const std::string text = MakeMetadata(&info);
        EXPECT_EQ(text.rfind(row.start, 0), 0u) << text;
        EXPECT_EQ(text.find('\n'), std::string::npos);
        EXPECT_EQ(InnerOf(text), row.inner);
    }
}

TEST(MetadataText, ReadsBackWithATextThatFillsItsField) {
    CaptureRequestInfo info = Info(5);
    std::wmemset(info.highlightName, L'\U0001F600', 256);
    std::wcscpy(info.drsProfileName, L"drs");
    MetadataFields fields;
    ReadMetadataBlock(std::string_view(MakeMetadata(&info)), fields);
    EXPECT_EQ(fields.drsProfileName, "drs");
    EXPECT_EQ(fields.highlightName.size(), 4u * 256);
}

}  // namespace
