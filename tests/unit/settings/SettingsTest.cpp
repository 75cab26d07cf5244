#include <thread>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "common/results/Exception.h"
#include "plugin-modules/Gallery/src/settings/Settings.h"
#include "tests/support/DescriptorLimit.h"
#include "tests/support/LogCapture.h"
#include "tests/support/ScopedEnv.h"
#include "tests/support/TemporaryHome.h"

namespace {

class SettingsTest : public testing::Test {
  protected:
    void WriteFile(const std::string& members) { folder_.Write(file_, "{\"settings\":{" + members + "}}"); }

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
        {"{\"settings\":{\"capEnabled\":tr", "Failure opening existing settings file"},
        {"[]", "Failure opening existing settings file"},
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

TEST_F(SettingsTest, ReadsValuesAndGalleriesOfEitherLayout) {
    const std::string there = folder_.MakeFolder("there");
    const std::string videos = folder_.MakeFolder("Videos");
    folder_.Write("file", "");
    const std::pair<std::string, std::string> rows[] = {
        {R"(":"/gone","currentDirectoryV2":")" + there + '"', "/gone"},
        {"\":\"" + videos + '"', gallery_},
        {R"(":5)", gallery_},
        {R"(":"relative")", gallery_},
        {"\":\"" + there + R"(\u0000x")", gallery_},
        {R"(V2":"/gone")", gallery_},
        {R"(V2":".")", gallery_},
        {"V2\":\"" + there + R"(\u0000x")", gallery_},
        {"V2\":\"" + (folder_ / "file") + '"', gallery_},
    };
    WriteFile(
        R"("trackerUpdateState":"CancelUpdate","capSizePercent":-1,"capEnabled":true,"currentDirectoryV2":")" +
        there + R"(","tempDirectory":")" + there + '"');
    EXPECT_EQ(Settings().GetUserGalleryPath(), there);
    EXPECT_EQ(folder_.Read(file_), Text("true", "4294967295", there, there, "CancelUpdate"));
    for (const auto& [members, gallery] : rows) {
        std::filesystem::remove_all(folder_ / "Videos/ZORVEX");
        WriteFile("\"currentDirectory" + members + R"(,"tempDirectory":".","trackerUpdateState":"Unknown")");
        const Settings settings;
        EXPECT_EQ(folder_.Read(file_), Text("false", "100", gallery, temp_, "TrackerUpdateNotActive"));
        EXPECT_EQ(folder_.Has("Videos/ZORVEX/Ovirastream"), gallery == gallery_) << members;
        EXPECT_NE(settings.GetTotalDiskSpaceMB(), 0x7FFFFFFFu) << "that of the volume of a missing folder";
    }
}

TEST_F(SettingsTest, SetsAGalleryThatCanBeMadeAndMeasured) {
    Settings settings;
    const std::string made = folder_ / "made/new";
    EXPECT_TRUE(settings.SetUserGalleryPath(made));
    EXPECT_TRUE(folder_.Has("made/new"));
    EXPECT_EQ(folder_.Read(file_), DefaultText());
    const std::string file = folder_.Write("file", "");
    for (const std::string& path : {std::string(), std::string("."), made + std::string("\0x", 2), file}) {
        EXPECT_FALSE(settings.SetUserGalleryPath(path)) << path;
        EXPECT_EQ(settings.GetTotalDiskSpaceMB(), 0x7FFFFFFFu);
        EXPECT_EQ(settings.GetUserGalleryPath(), made);
        EXPECT_FALSE(settings.SetTempFolder(path));
    }
    EXPECT_TRUE(settings.SetTempFolder(made));
    std::filesystem::remove_all(folder_ / "made");
    EXPECT_EQ(settings.GetGalleryPath(), made);
    EXPECT_TRUE(folder_.Has("made/new")) << "made again";
}

dev_t DeviceOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    return status.st_dev;
}

TEST_F(SettingsTest, NoGalleryIsMadeWhereItsDriveWas) {
    const ScopedEnv elsewhere("TMPDIR", "/dev/shm");
    const TempFolder drive;
    if (DeviceOf(drive.path()) == DeviceOf(folder_.path())) GTEST_SKIP() << "/dev/shm is no drive of its own";
    const std::string mountPoint = folder_ / "drive";
    Settings settings;
    std::filesystem::create_symlink(drive.path(), mountPoint);
    ASSERT_TRUE(settings.SetUserGalleryPath(mountPoint + "/gallery"));
    std::filesystem::remove_all(drive / "gallery");
    EXPECT_EQ(settings.GetGalleryPath(), mountPoint + "/gallery");
    EXPECT_TRUE(drive.Has("gallery")) << "made again on its drive";

    std::filesystem::remove(mountPoint);
    folder_.MakeFolder("drive");
    EXPECT_THROW(settings.GetGalleryPath(), KXP::Exception);
    EXPECT_FALSE(settings.SetUserGalleryPath(mountPoint + "//gallery/")) << "nor in another spelling";
    EXPECT_FALSE(folder_.Has("drive/gallery"));
}

TEST_F(SettingsTest, ProcessesChangeOneFileWithoutLoss) {
    Settings mine;
    Settings other;
    const std::string there = folder_.MakeFolder("there");
    other.SetCapEnabled(true);
    other.SetMaxSizePercent(40);
    EXPECT_TRUE(other.SetTempFolder(there));
    EXPECT_TRUE(other.SetUserGalleryPath(there));
    other.WriteSettings();
    mine.SetMaxSizePercent(50);
    mine.UpdateTrackerSettings(TrackerUpdateInProgress);
    EXPECT_EQ(folder_.Read(file_), Text("true", "40", there, there, "TrackerUpdateInProgress"))
        << "the mark alone";

    std::string gallery;
    EXPECT_EQ(mine.FollowFile(gallery), unsigned{kCapEnabled | kTempFolder | kUserGalleryPath});
    EXPECT_EQ(gallery, there);
    EXPECT_TRUE(mine.GetCapEnabled());
    EXPECT_EQ(mine.GetTempFolder(), there);
    EXPECT_TRUE(mine.AdoptUserGalleryPath(there));
    EXPECT_EQ(mine.FollowFile(gallery), 0u);
    mine.WriteSettings();
    EXPECT_EQ(folder_.Read(file_), Text("true", "50", there, there, "TrackerUpdateInProgress"));

    // A mark is written even if it says what this process has said before.
    other.UpdateTrackerSettings(TrackerUpdateComplete);
    mine.UpdateTrackerSettings(TrackerUpdateInProgress);
    EXPECT_EQ(Settings().GetTrackerUpdateState(), TrackerUpdateInProgress);
    EXPECT_EQ(other.FollowFile(gallery), unsigned{kMaxSizePercent | kTrackerUpdateState});

    std::thread writer([&] {
        for (int i = 0; i < 500; ++i)
            other.UpdateTrackerSettings(i % 2 == 0 ? TrackerUpdateInProgress : TrackerUpdateComplete);
    });
    for (unsigned i = 0; i < 500; ++i) {
        EXPECT_EQ(mine.FollowFile(gallery) & kMaxSizePercent, 0u) << "lost to a write between read and write";
        mine.SetMaxSizePercent(i);
        mine.WriteSettings();
    }
    writer.join();
}

TEST_F(SettingsTest, WhatCannotBeReadNowIsNotWrittenOver) {
    SKIP_WHERE_DESCRIPTORS_ARE_NEEDED();
    Settings mine;
    {
        Settings other;
        other.SetMaxSizePercent(40);
        other.WriteSettings();
    }
    const std::string before = folder_.Read(file_);
    std::string gallery;
    mine.SetCapEnabled(true);
    {
        const DescriptorLimit none;
        mine.WriteSettings();
        EXPECT_EQ(mine.FollowFile(gallery), 0u);
        EXPECT_EQ(mine.FollowFile(gallery), 0u);
    }
    EXPECT_EQ(folder_.Read(file_), before);
    EXPECT_EQ(log_.Count("The settings cannot be read now: Too many open files"), 1);
    EXPECT_EQ(mine.FollowFile(gallery), unsigned{kMaxSizePercent});
    mine.WriteSettings();
    EXPECT_EQ(folder_.Read(file_), Text("true", "40", gallery_, temp_, "TrackerUpdateNotActive"));
}

TEST_F(SettingsTest, OnceAbandonedItWritesOnlyWhatNobodyElseHas) {
    bool mayWrite = false;
    Settings mine;
    mine.AskOnceAbandoned([&] { return mayWrite; });
    mine.WriteSettings();
    mine.Abandon();
    mine.SetMaxSizePercent(40);
    mine.WriteSettings();
    EXPECT_EQ(folder_.Read(file_), DefaultText());
    EXPECT_TRUE(log_.Has("The settings have another owner by now, and what was not written is dropped"));
    mayWrite = true;
    mine.WriteSettings();
    const std::string written = Text("false", "40", gallery_, temp_, "TrackerUpdateNotActive");
    EXPECT_EQ(folder_.Read(file_), written);
    Settings().UpdateTrackerSettings(TrackerUpdateInProgress);
    const std::string others = folder_.Read(file_);
    mine.SetMaxSizePercent(50);
    mine.WriteSettings();
    EXPECT_EQ(folder_.Read(file_), others);
    EXPECT_TRUE(log_.HasLine(1, "The settings have changed, and what was not written is dropped"));
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
