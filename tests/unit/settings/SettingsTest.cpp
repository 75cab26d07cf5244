#include <thread>

#include <gtest/gtest.h>

#include "common/Exception.h"
#include "plugin-modules/Gallery/src/settings/Settings.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TemporaryHome.h"

namespace {

class SettingsTest : public testing::Test {
  protected:
    std::string WriteFile(const std::string& members) {
        return folder_.Write(file_, "{\"settings\":{" + members + "}}");
    }

    // The file as WriteSettings leaves it.
    static std::string Text(const std::string& enabled, const std::string& percent,
                            const std::string& gallery, const std::string& temp, const std::string& state) {
        return "{\n\t\"settings\": {\n\t\t\"capEnabled\": " + enabled +
               ",\n\t\t\"capSizePercent\": " + percent + ",\n\t\t\"currentDirectoryV2\": \"" + gallery +
               "\",\n\t\t\"tempDirectory\": \"" + temp + "\",\n\t\t\"trackerUpdateState\": \"" + state +
               "\"\n\t}\n}";
    }
    std::string DefaultText() const {
        return Text("false", "100", gallery_, temp_, "TrackerUpdateNotActive");
    }

    TemporaryHome home_;
    const TempFolder& folder_ = home_.folder();
    const std::string file_ = "data/ZORVEX/OvirastreamX/Share/GallerySettings.json";
    const std::string gallery_ = folder_ / "Videos/ZORVEX/Ovirastream";
    const std::string temp_ = folder_ / "data/ZORVEX/OvirastreamX/temp";
    LogCapture log_;
};

TEST_F(SettingsTest, AFileThatCannotBeUsedIsReplacedByTheDefaults) {
    const std::pair<const char*, const char*> rows[] = {
        {nullptr, "Settings file not found"},
        {"", "Failure opening existing settings file"},
        {"{\"settings\":{\"capEnabled\":tr", "Failure opening existing settings file"},
        {"[]", "Failure opening existing settings file"},
        {"{}", "Settings file invalid"},
        {"{\"settings\":{}}", "Settings file invalid"},
        {"{\"settings\":[1]}", "Settings file invalid"},
    };
    for (const auto& [text, line] : rows) {
        log_.Clear();
        std::filesystem::remove_all(folder_ / "Videos");
        if (text) folder_.Write(file_, text);
        const Settings settings;
        EXPECT_TRUE(log_.HasLine(1, line));
        EXPECT_TRUE(log_.HasLine(1, "Failed to read settings file, using defaults"));
        EXPECT_EQ(folder_.Read(file_), DefaultText());
        EXPECT_TRUE(folder_.Has("Videos/ZORVEX/Ovirastream"));
        EXPECT_GT(settings.GetTotalDiskSpaceMB(), 0u);
        EXPECT_EQ(settings.GetCurrentSizeMB(), 0u);
    }
}

TEST_F(SettingsTest, AFolderInPlaceOfTheFileLeavesTheDefaultsInMemory) {
    folder_.MakeFolder(file_);
    Settings settings;
    EXPECT_EQ(settings.GetUserGalleryPath(), gallery_);
    EXPECT_TRUE(settings.UpdateTrackerSettings(TrackerUpdateInProgress));
    EXPECT_GE(log_.Count("Failed to open GallerySettings.json for wb"), 2);
    EXPECT_TRUE(std::filesystem::is_directory(folder_ / file_));
}

TEST_F(SettingsTest, WordsAndNumbersOfTheFile) {
    const std::string other = folder_.MakeFolder("other");
    const std::pair<std::string, std::string> rows[] = {
        {R"("trackerUpdateState":"CancelUpdate","capSizePercent":250,"capEnabled":true,"currentDirectoryV2":")" +
             other + R"(","tempDirectory":")" + other + "\"",
         Text("true", "250", other, other, "CancelUpdate")},
        {R"("trackerUpdateState":"Unknown","capSizePercent":-1,"capEnabled":1)",
         Text("false", "4294967295", gallery_, temp_, "TrackerUpdateNotActive")},
    };
    for (const auto& [members, text] : rows) {
        WriteFile(members);
        const Settings settings;
        EXPECT_EQ(folder_.Read(file_), text) << members;
    }
}

TEST_F(SettingsTest, GalleryOfEitherLayout) {
    const std::string there = folder_.MakeFolder("there");
    const std::string videos = folder_.MakeFolder("Videos");
    folder_.Write("file", "");
    const std::tuple<std::string, std::string> rows[] = {
        {R"("currentDirectory":"/gone","currentDirectoryV2":")" + there + '"', "/gone"},
        {R"("currentDirectory":")" + videos + '"', gallery_},
        {R"("currentDirectory":5)", gallery_},
        {R"("currentDirectory":"")", gallery_},
        {R"("currentDirectory":"relative")", gallery_},
        {R"("currentDirectory":")" + there + R"(\u0000x")", gallery_},
        {R"("currentDirectoryV2":"/gone")", gallery_},
        {R"("currentDirectoryV2":".")", gallery_},
        {R"("currentDirectoryV2":")" + there + R"(\u0000x")", gallery_},
        {R"("currentDirectoryV2":")" + (folder_ / "file") + '"', gallery_},
    };
    for (const auto& [members, gallery] : rows) {
        std::filesystem::remove_all(folder_ / "Videos/ZORVEX");
        WriteFile(members + R"(,"tempDirectory":".")");
        const Settings settings;
        EXPECT_EQ(settings.GetUserGalleryPath(), gallery) << members;
        EXPECT_EQ(folder_.Has("Videos/ZORVEX/Ovirastream"), gallery == gallery_) << members;
        EXPECT_EQ(settings.GetTempFolder(), temp_);
        EXPECT_EQ(folder_.Read(file_), Text("false", "100", gallery, temp_, "TrackerUpdateNotActive"));
    }
}

TEST_F(SettingsTest, SetsAGalleryThatCanBeMadeAndMeasured) {
    Settings settings;
    const std::string made = folder_ / "made/new";
    EXPECT_TRUE(settings.SetUserGalleryPath(made));
    EXPECT_TRUE(log_.HasLine(1, "Gallery directory does not exist, create one"));
    EXPECT_TRUE(folder_.Has("made/new"));
    EXPECT_EQ(folder_.Read(file_), DefaultText());
    const std::string file = folder_.Write("file", "");
    for (const std::string& path :
         {std::string(), std::string("."), made + std::string("\0x", 2), file + "/x", file}) {
        log_.Clear();
        EXPECT_FALSE(settings.SetUserGalleryPath(path)) << path;
        EXPECT_TRUE(log_.HasLine(1, "Failed to get drive space to adjust cap"));
        EXPECT_EQ(settings.GetTotalDiskSpaceMB(), 0x7FFFFFFFu);
        EXPECT_EQ(settings.GetUserGalleryPath(), made);
        EXPECT_FALSE(settings.SetTempFolder(path));
        EXPECT_TRUE(log_.HasLine(1, "Can not set temp directory to non-existant path"));
    }
    EXPECT_TRUE(settings.SetTempFolder(made));
    std::filesystem::remove_all(folder_ / "made");
    EXPECT_EQ(settings.GetGalleryPath(), made);
    EXPECT_TRUE(folder_.Has("made/new"));
    std::filesystem::remove_all(folder_ / "made");
    folder_.Write("made", "");
    EXPECT_THROW(settings.GetGalleryPath(), KXP::Exception);
}

TEST_F(SettingsTest, TheMarkOfARebuildIsOnDiskAtOnce) {
    Settings settings;
    EXPECT_TRUE(settings.UpdateTrackerSettings(TrackerUpdateInProgress));
    EXPECT_EQ(Settings().GetTrackerUpdateState(), TrackerUpdateInProgress);
    settings.SetTrackerUpdateState(static_cast<TrackerUpdateState>(9));
    EXPECT_TRUE(settings.WriteSettings());
    EXPECT_EQ(folder_.Read(file_), Text("false", "100", gallery_, temp_, ""));
}

TEST_F(SettingsTest, ManyThreadsAndALogCallbackThatCallsIn) {
    Settings settings;
    KXP::LogInit(
        KXP::LocalApp,
        [](const char*, void* context) {
            thread_local int depth = 0;
            if (++depth == 1) static_cast<Settings*>(context)->WriteSettings();
            --depth;
        },
        &settings);
    std::thread writer([&] {
        for (int i = 0; i < 50; ++i)
            settings.UpdateTrackerSettings(i % 2 == 0 ? TrackerUpdateInProgress : TrackerUpdateComplete);
    });
    for (int i = 0; i < 50; ++i) {
        settings.SetUserGalleryPath(i % 2 == 0 ? folder_ / "even" : folder_ / "odd");
        EXPECT_TRUE(settings.ReadSettings());
        EXPECT_FALSE(settings.GetGalleryPath().empty());
    }
    writer.join();
    KXP::LogInit(KXP::LocalApp, nullptr, nullptr);
}

}  // namespace
