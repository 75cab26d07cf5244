// The tracker over a real folder, with its worker's entries run one by one and the watcher's part played by
// the test.
#pragma once

#include <chrono>

#include <gtest/gtest.h>

#include "common/json/JSONFile.h"
#include "common/json/JsonHelpers.h"
#include "plugin-modules/Gallery/src/media/FolderCrc.h"
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"
#include "tests/support/FakeClock.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/TempGallery.h"

class UGCTrackerTest : public testing::Test {
  protected:
    void Open(bool useUniqueFile = false,
              std::chrono::milliseconds sumInPassing = std::chrono::milliseconds(5)) {
        tracker_.reset();
        UGCTracker::Parts parts{clock_, false, false, {}, sumInPassing};
        tracker_ = std::make_unique<UGCTracker>(&host_, useUniqueFile, parts);
    }
    // One entry, with all that were enqueued before it due.
    bool Step() { return Step(*tracker_); }
    bool Step(UGCTracker& tracker) {
        clock_.Advance(std::chrono::microseconds(1));
        return tracker.queue().Step();
    }
    // Runs what is due now or in `after`, without a wait for later entries.
    void RunDue() { RunDue(*tracker_); }
    void RunDue(UGCTracker& tracker, std::chrono::milliseconds after = {}) {
        bool done = false;
        tracker.queue().EnqueueNotification(tracker.queue().Now() + after, [&] { done = true; });
        while (!done)
            ASSERT_TRUE(Step(tracker));
    }
    // Until `told` comes, across any time.
    void RunUntilTold(const std::string& told) {
        for (int i = 0; i < 50; ++i) {
            ASSERT_TRUE(Step());
            const std::string now = host_.Told();
            if (now.empty()) continue;
            ASSERT_EQ(now, told);
            return;
        }
        FAIL() << told;
    }
    void OpenSettled() {
        Open();
        RunDue();
        host_.Told();
    }
    std::string Track(const std::string& path) {
        tracker_->TrackFile(path);
        RunDue();
        return host_.Told();
    }

    KXP::Document File(const std::string& name = "UGCTracker.json") const {
        KXP::JSONFile file;
        file.Init(gallery_.home() / gallery_.ShareFile(name));
        KXP::Document document;
        EXPECT_EQ(file.ReadAndParseJSON(document).code, 0);
        return document;
    }
    // "id name" of each record of the file.
    std::string Records() const {
        std::string text;
        const KXP::Document document = File();
        for (const KXP::Value& record : document["UGC"].GetArray())
            text += std::to_string(record["id"].GetInt()) + " " +
                    std::filesystem::path(record["path"].GetString()).filename().string() + ";";
        return text;
    }
    uint32_t FileCrc() const { return File()["info"]["folderCRC"].GetUint(); }
    uint32_t DiskCrc() const {
        uint32_t crc = 0;
        media::CalculateFolderCRC(gallery_.path(), gallery_.path(), crc);
        return crc;
    }
    TrackedUGC RecordOf(const std::string& path) {
        TrackedUGC record;
        EXPECT_EQ(tracker_->GetUGCData(path, record).code, 0) << path;
        return record;
    }
    std::string CaptionOf(const std::string& path) { return RecordOf(path).topBarText; }
    bool Caption(const std::string& path, const std::string& text) {
        return tracker_->AddMeme(path, text, "").code == 0;
    }
    // The next start does not trust the tracker's file as a whole.
    void RebuildNext() { host_.GetGallerySettings()->SetTrackerUpdateState(TrackerUpdateInProgress); }
    static std::string Ids(const std::vector<TrackedUGC>& records) {
        std::string text;
        for (const TrackedUGC& record : records)
            text += std::to_string(record.id) + " ";
        return text;
    }
    std::string IdsOfGame() { return Ids(tracker_->GetGameUGC("Game")); }
    std::string FilteredIds(int32_t tags) {
        std::vector<TrackedUGC> list;
        EXPECT_EQ(tracker_->GetFilteredHighlights(list, "Game", "group", tags, 0).code, 0);
        return Ids(list);
    }

    TempGallery gallery_;
    LogCapture log_;
    FakeClock clock_;
    RecordingHost host_;
    std::unique_ptr<UGCTracker> tracker_;
};
