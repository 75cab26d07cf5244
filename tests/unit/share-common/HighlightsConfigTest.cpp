#include <thread>

#include <gtest/gtest.h>

#include "libraries/share-common/HighlightsConfig.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TemporaryHome.h"

namespace {

constexpr auto kNotFound = static_cast<int32_t>(0x80070002);
constexpr auto kFailure = static_cast<int32_t>(0x80004005);

class HighlightsConfigTest : public testing::Test {
  protected:
    static HighlightConfigData Data(const std::vector<std::string>& ids) {
        HighlightConfigData data{"en-US", "Game", "Profile", "game", {}};
        for (const std::string& id : ids)
            data.highlights[id] = {id, {{"EN-US", "The " + id}, {"pt", "O " + id}}, true, -1, 6, 0x80000000};
        return data;
    }

    // The user's choice as the file has it after these writes.
    int32_t StoredChoice() {
        HighlightConfigData data;
        EXPECT_EQ(config_.ReadConfig(data).code, 0);
        return data.highlights.at("kill").userEnabled;
    }

    void Choose(bool enabled) {
        EXPECT_EQ(config_.WriteUserConfig({{{"kill", {"", enabled, 0, 0}}, {"unknown", {}}}}).code, 0);
    }

    std::string Root(const std::string& highlights) {
        return "{\"highlights\":" + highlights +
               R"(,"defaultLocale":"","drsName":"","profileName":"","shortName":""})";
    }

    TemporaryHome home_;
    const TempFolder& folder_ = home_.folder();
    const std::string file_ = "data/ZORVEX/OvirastreamX/Share/Highlights/game/config.json";
    LogCapture log_;
    HighlightsConfig config_{"game"};
};

TEST_F(HighlightsConfigTest, WritesItsOrderAndKeepsTheUsersChoice) {
    auto data = Data({"kill", "win"});
    ASSERT_EQ(config_.WriteConfig(data).code, 0);
    EXPECT_TRUE(log_.HasLine(1, "WriteConfig: Couldn't open existing config file, creating new file"));
    EXPECT_EQ(StoredChoice(), -1);
    Choose(true);
    EXPECT_EQ(StoredChoice(), -1);  // confirms the default
    Choose(false);
    EXPECT_EQ(StoredChoice(), 0);
    Choose(true);
    EXPECT_EQ(StoredChoice(), 1);
    Choose(false);
    auto update = Data({"kill"});
    ASSERT_EQ(config_.WriteConfig(update).code, 0);
    EXPECT_EQ(update.highlights.at("kill").userEnabled, 0);
    EXPECT_EQ(folder_.Read(file_),
              "{\n\t\"highlights\": {\n\t\t\"kill\": {\n\t\t\t\"significance\": -2147483648,\n"
              "\t\t\t\"highlightTags\": 6,\n\t\t\t\"userInterest\": true,\n\t\t\t\"userEnabled\": false,\n"
              "\t\t\t\"name\": {\n\t\t\t\t\"en-us\": \"The kill\",\n\t\t\t\t\"pt\": \"O kill\"\n\t\t\t}\n"
              "\t\t}\n\t},\n\t\"defaultLocale\": \"en-US\",\n\t\"drsName\": \"Game\",\n"
              "\t\"profileName\": \"Profile\",\n\t\"shortName\": \"game\"\n}");
    HighlightUserConfigData user;
    ASSERT_EQ(config_.ReadUserConfig(user, "pt-BR").code, 0);
    const HighlightEntryInformation& entry = user.highlights.at("kill");
    EXPECT_EQ(entry.name, "O kill");
    EXPECT_FALSE(entry.enabled);
    EXPECT_EQ(entry.significance, 0x80000000u);
}

TEST_F(HighlightsConfigTest, LosesDamagedDefinitionsAlone) {
    const std::string good = R"({"significance":1,"highlightTags":2,"userInterest":true,"name":{}})";
    folder_.Write(file_,
                  Root(R"({"good":)" + good + R"(,"a":1,"b":{"significance":1,"highlightTags":2,)" +
                       R"("userInterest":true},"c":{"highlightTags":2,"userInterest":true,"name":{}},)" +
                       R"("d":{"significance":1,"highlightTags":4294967295,"userInterest":true,)" +
                       R"("name":{}},"e":{"significance":1,"highlightTags":2,"userInterest":1,)" +
                       R"("name":{}},"f":{"name":{"en":1}}})"));
    HighlightConfigData data;
    ASSERT_EQ(config_.ReadConfig(data).code, 0);
    EXPECT_EQ(data.highlights.size(), 1u);
    EXPECT_EQ(log_.Count("Throwing out corrupt highlight definition"), 6);
    EXPECT_EQ(log_.Count("Bad locale table"), 3);
    EXPECT_EQ(log_.Count("Bad highlight definition"), 3);
}

TEST_F(HighlightsConfigTest, AMissingFileFailsAndAnUnusableOneStaysAsItIs) {
    EXPECT_EQ(config_.WriteUserConfig({}).text, "Highlights have't been configured");
    EXPECT_EQ(config_.DeleteConfig().text, "Failed to access highlights config file");
    for (const std::string& text : {std::string("{"), Root("[]"), std::string(R"({"highlights":{}})")}) {
        folder_.Write(file_, text);
        auto data = Data({"kill"});
        EXPECT_EQ(config_.ReadConfig(data).code, kNotFound);
        EXPECT_EQ(data.drsName, "Game");
        const KXP::RetVal written = config_.WriteConfig(data);
        EXPECT_EQ(written.code, kFailure);
        EXPECT_EQ(written.text, "WriteConfig: Couldn't open or create config file");
        EXPECT_EQ(folder_.Read(file_), text);
    }
}

TEST_F(HighlightsConfigTest, NamesThatAreNoFolderNameTouchNothing) {
    std::filesystem::remove_all(folder_ / "data/ZORVEX");
    for (const std::string& name :
         {std::string(), std::string("."), std::string(".."), std::string("../game"), std::string("a\\b"),
          std::string("a\0b", 3), std::string(256, 'a')}) {
        const HighlightsConfig config(name);
        auto data = Data({"kill"});
        EXPECT_EQ(config.ReadConfig(data).code, kNotFound);
        EXPECT_EQ(config.WriteConfig(data).code, kFailure);
        EXPECT_EQ(config.DeleteConfig().code, kFailure);
        EXPECT_FALSE(folder_.Has("data/ZORVEX"));
    }
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

TEST_F(HighlightsConfigTest, AnswersFromTheCopyOfTheCaller) {
    auto data = Data({"kill"});
    for (const auto& [choice, interested] : {std::pair(1, true), {0, false}, {-1, true}, {2, false}}) {
        data.highlights.at("kill").userEnabled = choice;
        EXPECT_EQ(HighlightsConfig::IsUserInterested(data, "kill"), interested) << choice;
    }
    EXPECT_FALSE(HighlightsConfig::IsUserInterested(data, "win"));
    Highlight highlight;
    EXPECT_EQ(HighlightsConfig::GetHighlightTemplate(data, highlight, "win"), 1);
    EXPECT_EQ(HighlightsConfig::GetHighlightTemplate(data, highlight, "kill"), 0);
    EXPECT_EQ(highlight.GetHighlightDefinitionId() + std::to_string(highlight.GetTags()), "kill6");
}

// Every line of every call comes back here and asks again.
TEST_F(HighlightsConfigTest, ALogCallbackMayCallInAgain) {
    struct Client {
        const HighlightsConfig& config;
        int calls = 0;
        static void Take(const char*, void* context) {
            auto* client = static_cast<Client*>(context);
            HighlightConfigData data;
            if (++client->calls <= 3) (void)client->config.ReadConfig(data);
        }
    } client{config_};
    KXP::LogInit(KXP::LocalApp, &Client::Take, &client);
    auto data = Data({"kill"});
    EXPECT_EQ(config_.WriteConfig(data).code, 0);
    EXPECT_EQ(config_.DeleteConfig().code, 0);
    EXPECT_EQ(config_.DeleteConfig().code, kFailure);
    KXP::LogInit(KXP::LocalApp, nullptr, nullptr);
    EXPECT_GE(client.calls, 4);
}

TEST_F(HighlightsConfigTest, NeitherSideLosesTheOthersWrites) {
    auto data = Data({"kill"});
    ASSERT_EQ(config_.WriteConfig(data).code, 0);
    std::thread application([] {
        for (int i = 0; i < 50; ++i) {
            auto update = Data({"kill"});
            update.drsName = std::to_string(i);
            EXPECT_EQ(HighlightsConfig("game").WriteConfig(update).code, 0);
        }
    });
    for (int i = 0; i < 50; ++i)
        Choose(i % 2 == 0);
    application.join();
    EXPECT_EQ(StoredChoice(), 0);
    EXPECT_EQ(config_.ReadConfig(data).code, 0);
    EXPECT_EQ(data.drsName, "49");
}

}  // namespace
