#include <gtest/gtest.h>

#include "common/json/JsonHelpers.h"
#include "common/json/JsonParse.h"
#include "libraries/share-common/Highlight.h"
#include "libraries/share-common/HighlightsConfig.h"
#include "tests/support/DescriptorLimit.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TemporaryHome.h"

namespace {

constexpr auto kNotFound = static_cast<int32_t>(0x80070002);

class HighlightsConfigTest : public testing::Test {
  protected:
    static std::string Root(const std::string& highlights) {
        return "{\"highlights\":" + highlights +
               R"(,"defaultLocale":"","drsName":"","profileName":"","shortName":""})";
    }

    TemporaryHome home_;
    const TempFolder& folder_ = home_.folder();
    const std::string file_ = "data/ZORVEX/OvirastreamX/Share/Highlights/game/config.json";
    LogCapture log_;
    HighlightsConfig config_{"game"};
};

TEST_F(HighlightsConfigTest, LosesDamagedDefinitionsAlone) {
    folder_.Write(file_,
                  Root(R"({"good":{"significance":-2147483648,"highlightTags":2,"userInterest":true,)"
                       R"("userEnabled":false,"name":{"pt":"O"}},"a":1,)"
                       R"("b":{"significance":1,"highlightTags":2,"userInterest":true},)"
                       R"("c":{"highlightTags":2,"userInterest":true,"name":{}},)"
                       R"("d":{"significance":1,"highlightTags":4294967295,"userInterest":true,"name":{}},)"
                       R"("e":{"name":{"en":1}}})"));
    HighlightConfigData data;
    ASSERT_EQ(config_.ReadConfig(data).code, 0);
    ASSERT_EQ(data.highlights.size(), 1u);
    const HighlightDefinition& kept = data.highlights.at("good");
    EXPECT_EQ(kept.names.at("pt"), "O");
    EXPECT_EQ(kept.significance, 0x80000000u);
    EXPECT_EQ(kept.userEnabled, 0);
    EXPECT_EQ(log_.Count("Throwing out corrupt highlight definition"), 5);
    EXPECT_EQ(log_.Count("Bad locale table"), 3);
    EXPECT_EQ(log_.Count("Bad highlight definition"), 2);
}

TEST_F(HighlightsConfigTest, AnUnusableFileLeavesTheCallersCopy) {
    HighlightConfigData data;
    data.drsName = "Game";
    for (const std::string& text : {std::string("{"), Root("[]"), std::string(R"({"highlights":{}})")}) {
        folder_.Write(file_, text);
        EXPECT_EQ(config_.ReadConfig(data).code, kNotFound);
        EXPECT_EQ(data.drsName, "Game");
    }
    std::filesystem::remove_all(folder_ / "data/ZORVEX");
    for (const std::string& name : {std::string(), std::string(".."), std::string("../game"),
                                    std::string("a\0b", 3), std::string(256, 'a')}) {
        EXPECT_EQ(HighlightsConfig(name).ReadConfig(data).code, kNotFound);
        EXPECT_FALSE(folder_.Has("data/ZORVEX")) << name;
    }
}

TEST_F(HighlightsConfigTest, IsNotReplacedWhenItCannotBeReadAtTheMoment) {
    SKIP_WHERE_DESCRIPTORS_ARE_NEEDED();
    folder_.Write(file_, Root("{}"));
    HighlightConfigData data;
    const DescriptorLimit none;
    EXPECT_EQ(config_.WriteConfig(data).text, "WriteConfig: Couldn't open or create config file");
    EXPECT_EQ(log_.Count("creating new file"), 0);
}

TEST_F(HighlightsConfigTest, FindsNamesByLocaleThenLanguageThenDefault) {
    const HighlightDefinition definition{"id", {{"en-us", "US"}, {"pt", "Portuguese"}, {"deu", "Three"}}};
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"EN-us", "pt", "US"}, {"pt-BR", "en-US", "Portuguese"}, {"xx", "en-US", "US"},
        {"de-DE", "xx", "id"}, {"xx", "pt-BR", "Portuguese"},    {"", "", "id"},
    };
    for (const auto& [locale, fallback, name] : rows)
        EXPECT_EQ(HighlightsConfig::GetLocalizedHighlightName(definition, locale, fallback), name) << locale;
}

TEST(Highlight, GoesThroughJsonInItsOrder) {
    const std::string text =
        R"({"id":7,"definitionId":"d","name":"n","groupId":"g","path":"/p","type":"screenshot",)"
        R"("tags":4294967295,"significance":2147483648,"messageBusReferenceId":"r\u0000","videoLengthSeconds":3,"startDelta":-4,)"
        R"("endDelta":5,"eventTimeStamp":"t","app":{"appShortName":"s","profileName":"p","name":"a"}})";
    KXP::Document document;
    ASSERT_FALSE(KXP::ParseJSON(text, document).IsError());
    Highlight highlight;
    Highlight::ParseHighlightJSON(highlight, document);
    KXP::Value out;
    Highlight::CreateHighlightJSONValue(highlight, out, document.GetAllocator());
    EXPECT_EQ(KXP::WriteJSONToString(out), text);

    document["tags"].SetInt(-1);  // as some senders write a mask
    Highlight::ParseHighlightJSON(highlight, document);
    Highlight::CreateHighlightJSONValue(highlight, out, document.GetAllocator());
    EXPECT_EQ(KXP::WriteJSONToString(out), text);
}

}  // namespace
