#include <gtest/gtest.h>

#include "libraries/share-common/MetadataBlock.h"
#include "tests/support/CaptureBytes.h"

namespace {

MetadataFields Read(const std::string& text) {
    MetadataFields fields;
    fields.fileSubType = "Normal";
    fields.highlightName = "before";
    fields.highlightTags = 77;
    MetadataBlock(text).CopyTo(fields);
    return fields;
}

TEST(MetadataBlock, LongNamesWinOverShortOnesInAnyOrder) {
    const MetadataFields fields = Read(captures::Block(
        "any", R"({"HighlightName":"ln","Name":"sn","Id":"si","HighlightId":"li","GroupId":"sg",)"
               R"("HighlightGroupId":5,"HighlightTags":4294967295,"Tags":2,"MediaType":"Screenshot"})"));
    EXPECT_EQ(fields.highlightName + fields.highlightDefinitionId, "lnli");
    EXPECT_EQ(fields.highlightGroupId, "sg") << "the long name is of another type";
    EXPECT_EQ(fields.highlightTags, 4294967295u);
    EXPECT_EQ(fields.fileSubType, "Normal") << "a screenshot does not name its subtype";
}

TEST(MetadataBlock, PassesOverMembersOfAnotherType) {
    const MetadataFields fields = Read(captures::Block(
        "any", R"({"CmsId":9223372036854775808,"HighlightTags":-1,"Tags":1.5,"HighlightName":null,)"
               R"("MediaType":["Video"],"DRSAppName":{},"ShortName":"kept"})"));
    EXPECT_EQ(fields.cmsId, 0);
    EXPECT_EQ(fields.highlightTags, 77u);
    EXPECT_EQ(fields.highlightName + fields.fileSubType + fields.drsName + fields.shortName,
              "beforeNormalkept");
}

TEST(MetadataBlock, Base64SkipsForeignCharactersAndNeedsNoPadding) {
    // {"Name":"a"}, {"Name":"ab"} and {"Name":"abc"}: all three lengths of the last group.
    EXPECT_EQ(Read(R"({"B64":"eyJOYW1lIjoiYSJ9"})").highlightName, "a");
    EXPECT_EQ(Read(R"({"B64":"eyJOYW1lIjoiYWIifQ"})").highlightName, "ab");
    EXPECT_EQ(Read(R"({"B64":"eyJOYW1lIjoiYWJjIn0"})").highlightName, "abc");
    EXPECT_EQ(Read(R"({"B64":"ey\nJO YW{1l}~\u00e9Ijoi-_YWIifQ=="})").highlightName, "ab");
}

TEST(MetadataBlock, BadBlocksChangeNothing) {
    const std::string good = R"({"Name":"after","MediaType":"Video","Tags":1})";
    const std::string deep =
        "{\"Name\":\"after\",\"x\":" + std::string(100000, '[') + std::string(100000, ']') + "}";
    for (const std::string& text :
         {std::string("[]"), std::string(R"({"B64":1})"), std::string(R"({"B64":"!!!"})"),
          "{\"b64\":\"" + captures::Base64(good) + "\"}", captures::Block("s", good.substr(1)),
          captures::Block("s", "[" + good + "]"), captures::Block("s", "{\"Name\":\"\xFF\"}"),
          captures::Block("s", deep), deep}) {
        const MetadataFields fields = Read(text);
        EXPECT_EQ(fields.highlightName, "before") << text.substr(0, 80);
        EXPECT_EQ(fields.fileSubType, "Normal");
        EXPECT_EQ(fields.highlightTags, 77u);
    }
}

TEST(MetadataBlock, AReaderMistakesNoBlockForTheOnesBefore) {
    const std::string first = captures::Block("first", R"({"HighlightName":"a","Tags":1})");
    const std::string second = captures::Block("second", R"({"HighlightTags":2})");
    MetadataReader reader;
    for (const std::string& text :
         {std::string(), first, second, first, std::string("["), second, first, first, second}) {
        MetadataFields fields;
        reader.Read(text).CopyTo(fields);
        EXPECT_EQ(reader.Read(text).source(), MetadataBlock(text).source());
        EXPECT_EQ(fields.highlightName, text == first ? "a" : "");
        EXPECT_EQ(fields.highlightTags, text == first ? 1u : text == second ? 2u : 0u);
    }
}

}  // namespace
