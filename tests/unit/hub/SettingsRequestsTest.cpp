#include "common/drives/Drives.h"
#include "plugin-modules/Gallery/src/endpoints/SettingsRequests.h"
#include "tests/support/CaptureBytes.h"
#include "tests/support/DescriptorLimit.h"
#include "tests/support/FakeClock.h"
#include "tests/unit/hub/HubTest.h"

namespace {

class SettingsRequestsTest : public HubTest {
  protected:
    // Sends the request; returns the text of the answer.
    std::string Set(const std::string& settings) {
        Ask("SetSettings", requests_, &SettingsRequests::SetSettings, "{\"settings\":" + settings + "}");
        return result_.text;
    }

    std::string CapState(const char* enabled, const char* percent) {
        return std::string(R"(GalleryCapStateChangeNotification {"capacity":{"enabled":)") + enabled +
               ",\"capacityPercent\":" + percent + R"(,"totalDiskSpaceMB":1000,"usageMB":0}}|)";
    }

    SettingsRequests requests_{hub_};
};

}  // namespace

TEST_F(SettingsRequestsTest, AnswerWithTheSettings) {
    settings().SetTrackerUpdateState(TrackerUpdateComplete);
    const std::string gallery = home_ / "Videos/ZORVEX/Ovirastream";
    EXPECT_EQ(hub_.GetGalleryPath(), gallery + "/");
    EXPECT_EQ(Ask("GetSettings", requests_, &SettingsRequests::GetSettings),
              R"({"settings":{"path":")" + gallery + R"(","userGalleryPath":")" + gallery +
                  R"(","tempFolderPath":")" + settings().GetTempFolder() +
                  R"(","trackerStatus":"TrackerUpdateComplete","capacity":{"enabled":false,)"
                  R"("capacityPercent":100,"usageMB":7,"totalDiskSpaceMB":1000}}})");

    std::filesystem::remove_all(gallery);
    Ask("GetSettings", requests_, &SettingsRequests::GetSettings);
    EXPECT_TRUE(std::filesystem::exists(gallery)) << "made where it is missing";

    const std::string gone = "\"path\":\"" + UnplugTheGallery() + '"';
    EXPECT_NE(Ask("GetSettings", requests_, &SettingsRequests::GetSettings).find(gone), std::string::npos);
    EXPECT_EQ(result_.text, "Success");
    // Neither is there, which does not make them the same.
    EXPECT_EQ(Set("{\"userGalleryPath\":\"" + (home_ / "new") + "\"}"), "Success");
    EXPECT_EQ(hub_.GetGalleryPath(), home_ / "new/");
}

TEST_F(SettingsRequestsTest, WhatCannotBeReadAtTheStartIsLeftAloneAndReadLater) {
    SKIP_WHERE_DESCRIPTORS_ARE_NEEDED();
    hub_.EndTracker();
    const std::string there = home_.folder().MakeFolder("there");
    EXPECT_TRUE(settings().SetUserGalleryPath(there));
    settings().SetMaxSizePercent(40);
    settings().WriteSettings();
    const std::string share = "data/ZORVEX/OvirastreamX/Share/";
    const std::string file = share + "GallerySettings.json";
    const std::string defaultGallery = settings().GetDefaultGalleryFolderPath();
    std::filesystem::remove_all(home_ / "Videos");
    for (const bool bySetting : {true, false}) {
        const std::string written = home_.folder().Read(file);
        home_.folder().Write(share + "UGCTracker.json", "whatever");
        const int lines = log_.Count("cannot be read now");
        std::optional<DescriptorLimit> none(std::in_place);
        ZvGalleryAPI hub(module_, module_.task_queue());
        FakeClock clock;
        SettingsRequests requests(hub, clock);
        const auto percent = [&] {
            const std::string answer = Ask("GetSettings", requests, &SettingsRequests::GetSettings);
            EXPECT_NE(answer.find("\"path\":\"" + (hub.GetUGCTracker() ? there : defaultGallery) + '"'),
                      std::string::npos);
            return hub.GetGallerySettings()->GetMaxSizePercent();
        };
        EXPECT_EQ(percent(), 100u);
        clock.Advance(std::chrono::seconds(10));
        EXPECT_EQ(percent(), 100u);
        for (const auto request : {&SettingsRequests::SetSettings, &SettingsRequests::CancelPathUpdate}) {
            Ask("SetSettings", requests, request, R"({"settings":{"capacity":{"enabled":true}}})");
            EXPECT_EQ(KXP::ToStr(result_),
                      "0x80004005[18]: The settings cannot be read now: Too many open files");
        }
        EXPECT_EQ(hub.GetUGCTracker(), nullptr);
        none.reset();
        EXPECT_EQ(log_.Count("cannot be read now"), lines + 1);
        EXPECT_EQ(home_.folder().Read(file), written);
        EXPECT_EQ(home_.folder().Read(share + "UGCTracker.json"), "whatever");
        EXPECT_FALSE(home_.folder().Has("Videos"));
        EXPECT_EQ(percent(), 100u) << "too early";
        if (bySetting) {
            Ask("SetSettings", requests, &SettingsRequests::SetSettings,
                R"({"settings":{"capacity":{"capacityPercent":40}}})");
            EXPECT_EQ(result_.code, 0);
        } else {
            clock.Advance(std::chrono::seconds(10));
        }
        EXPECT_EQ(percent(), 40u);
        EXPECT_NE(hub.GetUGCTracker(), nullptr);
        EXPECT_FALSE(home_.folder().Has("Videos"));
    }
}

TEST_F(SettingsRequestsTest, WithoutAUniqueNameTheOldTrackerStays) {
    for (int number = 0; number < 100; ++number)
        home_.folder().Write("data/ZORVEX/OvirastreamX/Share/UGCTracker_" + std::to_string(number) + ".json",
                             "{}");
    const std::string old = settings().GetUserGalleryPath();
    EXPECT_EQ(Set("{\"userGalleryPath\":\"" + (home_ / "new") + "\"}"),
              "Failed to generate unique tracker name, cannot reset tracker file");
    EXPECT_EQ(settings().GetUserGalleryPath(), old);
    EXPECT_EQ(settings().GetTotalDiskSpaceMB(), 1000u);
    EXPECT_FALSE(log_.Has("Stop tracker"));
}

TEST_F(SettingsRequestsTest, ChangesOfAnotherProcessAreFollowed) {
    const std::string there = home_.folder().MakeFolder("there");
    {
        Settings other;
        other.SetCapEnabled(true);
        EXPECT_TRUE(other.SetTempFolder(there));
        other.WriteSettings();
    }
    requests_.Follow();
    EXPECT_EQ(module_.TakeSent(),
              "TempFolderChangeNotification {\"path\":\"" + there + "\"}|" + CapState("true", "100"));
    Settings other;
    EXPECT_TRUE(other.SetUserGalleryPath(there));
    other.WriteSettings();
    const auto first = hub_.GetUGCTracker();
    Ask("GetSettings", requests_, &SettingsRequests::GetSettings);
    EXPECT_NE(hub_.GetUGCTracker(), first);
    EXPECT_TRUE(Soon([&] { return log_.Has("NotifyTrackerUpdate::TrackerUpdateComplete"); }));
    EXPECT_NE(module_.TakeSent().find("PathChangeNotification {\"path\":\"" + there), std::string::npos);
}

TEST_F(SettingsRequestsTest, AnotherGalleryIsOpenedAndLeftAgain) {
    const std::string old = settings().GetUserGalleryPath();
    const auto first = hub_.GetUGCTracker();
    EXPECT_EQ(Set("{\"userGalleryPath\":\"" + (home_ / "new/gallery") + "\"}"), "Success");
    EXPECT_EQ(settings().GetUserGalleryPath(), home_ / "new/gallery");
    const auto second = hub_.GetUGCTracker();
    EXPECT_NE(second, first);
    EXPECT_EQ(first->DeleteTrackedHighlights({}).text, "No tracker") << "it writes no more";
    std::string lines;
    for (const std::string& line : log_.Lines())
        lines += line;
    EXPECT_LT(lines.find("Stop tracker"), lines.find("File is unique")) << "one at work at a time";
    Ask("CancelPathUpdate", requests_, &SettingsRequests::CancelPathUpdate);
    EXPECT_EQ(result_.text, "Success");
    EXPECT_EQ(settings().GetUserGalleryPath(), old);
    EXPECT_NE(module_.TakeSent().find(
                  R"(GalleryNotifications {"galleryPathUpdateStatus":{"status":"CancelUpdateComplete"}}|)"),
              std::string::npos);
    EXPECT_NE(hub_.GetUGCTracker(), nullptr);
}

// The old tracker's worker is held, as on a disk that does not answer.
TEST_F(SettingsRequestsTest, AGalleryThatDoesNotAnswerIsLeftToItself) {
    Counter held;
    Counter release;
    std::atomic<bool> isFirst{true};
    module_.onSend = [&] {
        if (!isFirst.exchange(false)) return;
        held.Add();
        release.WaitFor(1);
    };
    const auto add = [&](const std::string& name) {
        return home_.folder().Write(name, captures::Png(captures::PngText("Software", "Ovirastream SHARE")));
    };
    const auto old = hub_.GetUGCTracker();
    old->TrackFile(add("Videos/ZORVEX/Ovirastream/Game/a.png"));
    ASSERT_TRUE(held.WaitFor(1));
    old->TrackFile(add("Videos/ZORVEX/Ovirastream/Game/b.png"));
    const std::string capture = add("new/Game/c.png");
    EXPECT_EQ(Set("{\"userGalleryPath\":\"" + (home_ / "new") + "\"}"), "Success");
    EXPECT_FALSE(old->HasStopped());
    EXPECT_TRUE(Soon([&] { return log_.Has("NotifyTrackerUpdate::TrackerUpdateComplete"); }));
    const std::string record = home_.folder().Read("data/ZORVEX/OvirastreamX/Share/UGCTracker.json");
    EXPECT_NE(record.find("c.png"), std::string::npos);
    release.Add();
    EXPECT_TRUE(Soon([&] { return old->HasStopped(); }));
    EXPECT_EQ(home_.folder().Read("data/ZORVEX/OvirastreamX/Share/UGCTracker.json"), record);
    EXPECT_EQ(log_.Count("and what was not written is dropped"), 1);
    EXPECT_EQ(module_.TakeSent().find("b.png"), std::string::npos);
    EXPECT_TRUE(hub_.GetUGCTracker()->IsTrackedFile(capture));
}

TEST_F(SettingsRequestsTest, NothingToRestoreLeavesNoTrackerAndDoesNoHarm) {
    Ask("CancelPathUpdate", requests_, &SettingsRequests::CancelPathUpdate);
    EXPECT_EQ(result_.text, "Invalid path defined");
    EXPECT_EQ(hub_.GetUGCTracker(), nullptr);
    hub_.OnCaptureSaved(
        PageRequest("CaptureSavedNotification", "id", R"({"captureMode":"x","path":"/g/a.png"})"));
    EXPECT_EQ(Set("{\"userGalleryPath\":\"" + (home_ / "new") + "\"}"), "Success");
    EXPECT_NE(hub_.GetUGCTracker(), nullptr);
}

TEST_F(SettingsRequestsTest, ChangesAreNotifiedOnceAndWritten) {
    EXPECT_EQ(Set(R"({"capacity":{"enabled":true,"capacityPercent":50}})"), "Success");
    EXPECT_EQ(module_.TakeSent(), CapState("true", "50"));
    // Along with an unchanged path, or an unchanged value.
    const std::string gallery = "\"userGalleryPath\":\"" + settings().GetUserGalleryPath() + '"';
    EXPECT_EQ(Set("{" + gallery + R"(,"capacity":{"enabled":true,"capacityPercent":60}})"), "Success");
    EXPECT_EQ(module_.TakeSent(), CapState("true", "60"));
    EXPECT_EQ(Set(R"({"capacity":{"enabled":false,"capacityPercent":60}})"), "Success");
    EXPECT_EQ(module_.TakeSent(), CapState("false", "60"));
    const std::string temp = home_.folder().MakeFolder("elsewhere");
    EXPECT_EQ(Set("{\"tempFolderPath\":\"" + temp + "\"}"), "Success");
    EXPECT_EQ(module_.TakeSent(), "TempFolderChangeNotification {\"path\":\"" + temp + "\"}|");

    const Settings written;
    EXPECT_EQ(written.GetMaxSizePercent(), 60u);
    EXPECT_FALSE(written.GetCapEnabled());
    EXPECT_EQ(written.GetTempFolder(), temp);

    std::filesystem::remove(written.path());
    for (const std::string& same : {"{" + gallery + "}", "{\"tempFolderPath\":\"" + temp + "\"}",
                                    std::string(R"({"capacity":{"enabled":false,"capacityPercent":60}})")}) {
        EXPECT_EQ(Set(same), "No action taken as all provided values are the same as existing ones");
        EXPECT_EQ(result_.code, 0);
    }
    EXPECT_EQ(module_.TakeSent(), "");
    EXPECT_FALSE(std::filesystem::exists(written.path()));
}

TEST_F(SettingsRequestsTest, WrongOnesAreRefusedWithAText) {
    const std::pair<const char*, const char*> rows[] = {
        {"7", "\"settings\" object not defined"},
        {R"({"capacity":{},"userGalleryPath":""})", "No valid parameter data"},
        {R"({"tempFolderPath":"/no/such/folder"})", "Invalid path defined"},
        {R"({"capacity":{"enabled":1}})", "Found key 'enabled', with unexpected type: Number"},
        {R"({"capacity":{"capacityPercent":4294967296}})",
         "Found key 'capacityPercent', with unexpected type: Number"},
    };
    for (const auto& [settings, text] : rows) {
        EXPECT_EQ(Set(settings), text);
        EXPECT_EQ(result_.code, static_cast<int32_t>(0x80070057)) << text;
    }
    // A folder that cannot be made leaves the tracker where it was.
    const auto tracker = hub_.GetUGCTracker();
    EXPECT_EQ(Set("{\"userGalleryPath\":\"" + home_.folder().Write("file", "") + "/below\"}"),
              "Invalid path defined");
    EXPECT_EQ(hub_.GetUGCTracker(), tracker);
    EXPECT_EQ(module_.TakeSent(), "");

    // What an early step accepts stays in force when a later one fails, and is not written.
    const std::string temp = home_.folder().MakeFolder("elsewhere");
    Set("{\"tempFolderPath\":\"" + temp + R"(","capacity":{"enabled":"yes"}})");
    EXPECT_TRUE(result_.Failed());
    EXPECT_EQ(settings().GetTempFolder(), temp);
    EXPECT_NE(Settings().GetTempFolder(), temp);
}

TEST_F(SettingsRequestsTest, DiskSpaceIsNotLowWhereItCannotBeMeasured) {
    uint32_t freeMB = 0;
    uint32_t totalMB = 0;
    ASSERT_TRUE(KXP::GetDriveSpace(home_.folder().path(), freeMB, totalMB));
    const std::string answer = freeMB < 300 ? R"({"lowDiskSpace":true})" : R"({"lowDiskSpace":false})";
    EXPECT_EQ(Ask("CheckDiskSpace", requests_, &SettingsRequests::CheckDiskSpace), answer);
    EXPECT_TRUE(log_.Has("CheckLowDiskSpace systemTotalSpaceMB[" + std::to_string(totalMB) + "]"));
    UnplugTheGallery();
    EXPECT_EQ(Ask("CheckDiskSpace", requests_, &SettingsRequests::CheckDiskSpace), answer);
    EXPECT_TRUE(log_.HasLine(2, "galleryTotalSpaceMB[2147483647] galleryFreeSpaceMB = 0"));
}
