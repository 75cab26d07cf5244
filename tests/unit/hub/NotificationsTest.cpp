#include <array>
#include <functional>

#include "libraries/share-common/PageWords.h"
#include "tests/unit/hub/HubTest.h"

namespace {

TrackedUGC HighlightAt(const std::string& path) {
    TrackedUGC ugc;
    ugc.path = path;
    ugc.fileType = "video";
    ugc.fileSubType = "Highlight";
    ugc.fileSource = "OVS_SDK";
    ugc.audioType = "Single";
    ugc.shortName = "racer";
    ugc.highlightDefinitionId = "win";
    ugc.highlightName = "as it was";
    return ugc;
}

std::string Json(const TrackedUGC& ugc) {
    KXP::Document value;
    TrackedUGC::CreateUGCJSONValue(ugc, value, value.GetAllocator());
    return KXP::WriteJSONToString(value);
}

std::string Saved(const TrackedUGC& ugc, bool unannounced) {
    return R"(GalleryNotifications {"captureSaved":{"ugc":)" + Json(ugc) +
           ",\"unannounced\":" + (unannounced ? "true}}|" : "false}}|");
}

// As the application writes it, with a name in two languages.
void DefineHighlight(const TemporaryHome& home) {
    home.folder().Write(
        "data/ZORVEX/OvirastreamX/Share/Highlights/racer/config.json",
        R"({"highlights":{"win":{"significance":0,"highlightTags":0,"userInterest":false,"name":)"
        R"({"en-us":"Victory","de":"Sieg"}}},"defaultLocale":"en-US","drsName":"racer",)"
        R"("profileName":"racer","shortName":"racer"})");
}

}  // namespace

TEST_F(HubTest, EveryNotificationHasItsNameAndPayload) {
    const TrackedUGC ugc = HighlightAt("/gallery/a.mp4");
    Highlight highlight;
    highlight.SetId(5);
    KXP::Document highlightValue;
    Highlight::CreateHighlightJSONValue(highlight, highlightValue, highlightValue.GetAllocator());
    const std::string capacity =
        R"({"capacity":{"enabled":false,"capacityPercent":100,"totalDiskSpaceMB":1000,"usageMB":)";
    const std::string gallery = "GalleryNotifications ";
    const std::vector<std::pair<std::function<void()>, std::string>> rows = {
        {[&] { hub_.NotifyGalleryUpdated(); }, "GalleryUpdatedNotification " + capacity + "7}}"},
        {[&] { hub_.UpdateGalleryUsage(8); }, "GalleryUpdatedNotification " + capacity + "8}}"},
        {[&] { hub_.NotifyGalleryCapStateChange(); },
         "GalleryCapStateChangeNotification " + capacity + "0}}"},
        {[&] { hub_.NotifyGalleryPathChange("/g"); }, R"(PathChangeNotification {"path":"/g"})"},
        {[&] { hub_.NotifyGalleryTempFolderChange("/t"); }, R"(TempFolderChangeNotification {"path":"/t"})"},
        {[&] { hub_.NotifyHighlightCaptureFailed(-3); },
         gallery + R"({"highlightCaptureFailed":{"errorCode":-3}})"},
        {[&] { hub_.NotifyUGCDeleted(ugc); }, gallery + R"({"ugcDeleted":{"ugc":)" + Json(ugc) + "}}"},
        {[&] { hub_.NotifyTrackerUpdate(TrackerUpdateInProgress); },
         gallery + R"({"galleryPathUpdateStatus":{"status":"TrackerUpdateInProgress"}})"},
        {[&] { hub_.NotifyHighlightCanceled(highlight); },
         gallery + R"({"highlightCanceled":{"highlight":)" + KXP::WriteJSONToString(highlightValue) + "}}"},
        {[&] { hub_.NotifyDiskSpaceCondition(true); },
         gallery + R"({"checkDiskSpace":{"lowDiskSpace":true}})"},
        {[&] { hub_.NotifyGalleryIsFull(false); }, gallery + R"({"galleryIsFull":false})"},
    };
    for (const auto& [notify, expected] : rows) {
        notify();
        EXPECT_EQ(module_.TakeSent(), expected + "|");
    }
    EXPECT_TRUE(log_.HasLine(2, "NotifyTrackerUpdate::TrackerUpdateInProgress"));

    module_.accepts = false;
    hub_.NotifyGalleryIsFull(true);
    EXPECT_TRUE(log_.HasLine(1, "Unable to send JSON notification"));
}

// A file may have any words engraved in it; the module holds what is sent against the catalogue.
TEST_F(HubTest, OddWordsOfAFileBecomeOnesThatPagesKnow) {
    const std::array<const char*, 6> rows[] = {
        // type, subtype and source, and what stands for them
        {"screenshot", "StandAlone_Lumis", "StandAlone_Lumis", "image", "Normal_Lumis", "StandAlone_Lumis"},
        {"", "", "", "other", "Unknown", "Undefined"},
        {"film", "\xFF", "Elsewhere", "other", "Unknown", "Undefined"},
    };
    TrackedUGC ugc;
    for (const auto& [type, subtype, source, shownType, shownSubtype, shownSource] : rows) {
        ugc.fileType = type;
        ugc.fileSubType = subtype;
        ugc.fileSource = source;
        hub_.NotifyUGCDeleted(ugc);
        EXPECT_NE(
            module_.TakeSent().find(std::string("\"fileType\":\"") + shownType + "\",\"fileSubType\":\"" +
                                    shownSubtype + "\",\"fileSource\":\"" + shownSource + "\""),
            std::string::npos)
            << type;
    }
    const auto words = [&](const char* definition) {
        return module_.catalogue()["definitions"][definition]["enum"].GetArray();
    };
    for (const KXP::Value& word : words("FileType"))
        EXPECT_EQ(TypeForPages(word.GetString()), word.GetString());
    for (const KXP::Value& word : words("SubType"))
        EXPECT_EQ(SubtypeForPages(word.GetString()), word.GetString());
    for (const KXP::Value& word : words("Source"))
        EXPECT_EQ(SourceForPages(word.GetString()), word.GetString());
}

TEST_F(HubTest, ACompleteUpdateTellsThePathFirstAlsoWithoutItsDrive) {
    const std::string status =
        R"(|GalleryNotifications {"galleryPathUpdateStatus":{"status":"TrackerUpdateComplete"}}|)";
    hub_.NotifyTrackerUpdate(TrackerUpdateComplete);
    EXPECT_EQ(module_.TakeSent(),
              "PathChangeNotification {\"path\":\"" + (home_ / "Videos/ZORVEX/Ovirastream") + "\"}" + status);
    const std::string gone = UnplugTheGallery();
    hub_.NotifyTrackerUpdate(TrackerUpdateComplete);
    EXPECT_EQ(module_.TakeSent(), "PathChangeNotification {\"path\":\"" + gone + "\"}" + status);
}

TEST_F(HubTest, AnAddedFileIsToldAsItsNotificationHasIt) {
    TrackedUGC highlight = HighlightAt("/gallery/a.mp4");
    TrackedUGC screenshot = highlight;
    screenshot.fileSource = "OVS_Share";
    hub_.NotifyUGCAdded(highlight);
    EXPECT_EQ(module_.TakeSent(), Saved(highlight, true)) << "nothing waits: the file came by itself";

    DefineHighlight(home_);
    const ScopedEnv german("LC_ALL", "de_DE.UTF-8");
    const auto announce = [&](const std::string& path, bool unannounced) {
        const std::string payload =
            R"({"highlight":{"path":")" + path + R"("},"unannounced":)" + (unannounced ? "true}" : "false}");
        hub_.OnHighlightSaved(
            KXP::Message::CreateRequest("s", "m", "HighlightSavedNotification", "", "", payload.c_str()));
    };
    announce("/gallery/other.mp4", false);
    hub_.NotifyUGCAdded(highlight);
    EXPECT_EQ(module_.TakeSent(), "") << "another file is waited for";

    for (const bool unannounced : {false, true}) {
        announce(highlight.path, unannounced);
        hub_.NotifyUGCAdded(screenshot);
        EXPECT_EQ(module_.TakeSent(), Saved(screenshot, false));
        announce(highlight.path, unannounced);
        hub_.NotifyUGCAdded(highlight);
        TrackedUGC named = highlight;
        named.highlightName = "Sieg";
        EXPECT_EQ(module_.TakeSent(), Saved(named, unannounced));
        hub_.NotifyUGCAdded(highlight);
        EXPECT_EQ(module_.TakeSent(), "") << "told once";
    }
}

TEST_F(HubTest, AHighlightWithoutADefinitionKeepsItsName) {
    const auto notify = [&](const char* shortName, const char* definition) {
        TrackedUGC ugc = HighlightAt("/gallery/a.mp4");
        ugc.shortName = shortName;
        ugc.highlightDefinitionId = definition;
        hub_.NotifyHighlightSaved(ugc, true);
        EXPECT_EQ(ugc.highlightName, "as it was");
        EXPECT_EQ(module_.TakeSent(), Saved(ugc, true));
    };
    DefineHighlight(home_);
    notify("racer", "no such");
    EXPECT_TRUE(log_.HasLine(1, "NotifyHighlightSaved: Unknown highlight definition ID [no such], skip it"));
    int told = 0;
    for (const char* name : {"unknown", "", "..", "a/b"}) {
        notify(name, "win");
        EXPECT_EQ(log_.Count("NotifyHighlightSaved: Cannot get config data, skip"), ++told) << name;
    }
}

TEST_F(HubTest, TakesTheProgressOfAMontageAndNothingElse) {
    const auto handle = [&](const char* method, const char* payload) {
        return hub_.HandleMsg(KXP::Message::CreateRequest("s", "m", method, "", "", payload));
    };
    EXPECT_FALSE(handle("GetSettings", R"({"progress":1})"));
    EXPECT_THROW(handle("UpdateMontageProgress", "{}"), KXP::JSONFieldError);
    EXPECT_EQ(module_.TakeSent(), "");
    EXPECT_TRUE(handle("UpdateMontageProgress", R"({"progress":0.5})"));
    EXPECT_EQ(module_.TakeSent(), R"(MontageNotification {"progress":0.5}|)");
}
