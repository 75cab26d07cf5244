// The plug-in over a gallery of its own, and what its answers contain.
#pragma once

#include "common/json/JsonHelpers.h"
#include "tests/abi/PluginLibrary.h"
#include "tests/support/TempGallery.h"

class GalleryRequests : public PluginTest {
  protected:
    ~GalleryRequests() override { EXPECT_TRUE(plugin_.Down(container_)); }

    void Start() {
        EXPECT_TRUE(plugin_.Up(container_));
        // A rebuild that is still running would track files without a notification.
        EXPECT_EQ(container_.WaitFor(6, "Tracker update done").notification, 6);
    }

    // Has the tracker record what is in the gallery, and starts with other texts in the tracker's file.
    void StartWithRecords(const std::vector<std::pair<std::string, std::string>>& replaced) {
        FakeContainer first;
        EXPECT_TRUE(plugin_.Up(first));
        EXPECT_EQ(first.WaitFor(6, "Tracker update done").notification, 6);
        EXPECT_TRUE(plugin_.Down(first));
        std::string records = gallery_.home().Read(gallery_.ShareFile("UGCTracker.json"));
        for (const auto& [from, to] : replaced)
            records.replace(records.find(from), from.size(), to);
        gallery_.home().Write(gallery_.ShareFile("UGCTracker.json"), records);
        EXPECT_TRUE(plugin_.Up(container_));
    }

    // The names of the members, except those of the result.
    static std::string Members(const KXP::Value& answer) {
        std::string names;
        for (const auto& member : answer.GetObject())
            if (member.name.GetString()[0] != '_') names += std::string(member.name.GetString()) + "|";
        return names;
    }

    const TempGallery gallery_{};  // replaces the library's home
};

const std::string kInvalid = std::to_string(static_cast<int32_t>(0x80070057));
const std::string kFailure = std::to_string(static_cast<int32_t>(0x80004005));
