// The plug-in over a gallery of its own, and what its answers contain.
#pragma once

#include "common/JsonHelpers.h"
#include "tests/abi/PluginLibrary.h"
#include "tests/support/TempGallery.h"

class GalleryRequests : public PluginTest {
  protected:
    ~GalleryRequests() override { EXPECT_TRUE(plugin_.Down(container_)); }

    void Start() {
        EXPECT_TRUE(plugin_.Up(container_));
        EXPECT_EQ(container_.WaitFor(6, "Tracker update done").notification, 6);
    }

    // "0 Success", or the code and text of a failure.
    std::string Result(const std::string& method, const std::string& payload) {
        const KXP::Value& answer = Ask(method, payload);
        return std::to_string(KXP::jsonGetValue<int>(answer, "_return_code")) + " " +
               KXP::jsonGetValue<std::string>(answer, "_return_status");
    }

    // The names of the members, except those of the result.
    std::string Members(const KXP::Value& answer) {
        std::string names;
        for (const auto& member : answer.GetObject())
            if (member.name.GetString()[0] != '_') names += std::string(member.name.GetString()) + "|";
        return names;
    }

    std::string FileParameter(const std::string& name, const std::string& more = "") {
        return R"({"file":")" + gallery_.Path(name) + "\"" + more + "}";
    }

    unsigned Crc(const std::string& directory) {
        return KXP::jsonGetValue<unsigned>(Ask("GetFolderCRC", R"({"directory":")" + directory + "\"}"),
                                           "crc");
    }

    const TempGallery gallery_{};  // replaces the library's home
};

const std::string kInvalid = std::to_string(static_cast<int32_t>(0x80070057));
const std::string kFailure = std::to_string(static_cast<int32_t>(0x80004005));

// Lets the tracker record what is in the gallery, so that the next start uses its file as it is.
inline void TrackGallery(const PluginLibrary& plugin) {
    FakeContainer container;
    EXPECT_TRUE(plugin.Up(container));
    EXPECT_EQ(container.WaitFor(6, "Tracker update done").notification, 6);
    EXPECT_TRUE(plugin.Down(container));
}
