// The notifications that a page receives when the capture service announces a capture or a file turns up.

#include <array>

#include <gtest/gtest.h>

#include "tests/abi/PluginLibrary.h"
#include "tests/support/TempGallery.h"

namespace {

class CapturesTest : public testing::Test {
  protected:
    CapturesTest() {
        EXPECT_TRUE(plugin_.Up(container_));
        // A rebuild that is still running would track the files without a notification.
        EXPECT_EQ(container_.WaitFor(6, "Tracker update done").notification, 6);
        plugin_->OnJsonMessage(Envelope("GalleryNotifications", "page", "{}", ",\"type\":3073").c_str());
    }
    ~CapturesTest() override { EXPECT_TRUE(plugin_.Down(container_)); }

    void Notify(const std::string& module, const std::string& method, const std::string& payload) {
        plugin_->OnJsonMessage(
            (R"({"system":"CobalixNative","module":"Gallery","source_system":"CobalixNative",)"
             R"("source_module":")" +
             module + R"(","method":")" + method +
             R"(","uniqueid":"n","reference_uniqueid":"s","type":3073,"payload":)" + payload + "}")
                .c_str());
    }

    static std::string Path(const std::string& path) { return "\"path\":\"" + path + "\""; }

    FakeContainer container_;
    const PluginLibrary plugin_{PRODUCT_ROOT};
    const TempGallery gallery_;  // after the library, whose home it replaces
};

}  // namespace

TEST_F(CapturesTest, EachIsNotifiedOnce) {
    const struct {
        const char* name;
        const char* module;  // null: nobody announces it
        const char* method;
        const char* before;  // the payload before and after the path
        const char* after;
        bool unannounced;
    } rows[] = {
        {"shot.png", "ShareServer", "CaptureSavedNotification", R"({"captureMode":"x",)", "}", false},
        {"lumis.png", "ZvCamera", "LumisShotSavedNotification", R"({"captureMode":"x",)", "}", false},
        {"a.mp4", "ShareServer", "HighlightSavedNotification", R"({"highlight":{"id":7,)", "}}", false},
        {"b.mp4", "ShareServer", "HighlightSavedNotification", R"({"highlight":{"id":8,)",
         R"(},"unannounced":true})", true},
        {"dropped.png", nullptr, nullptr, nullptr, nullptr, true},
        // The watcher keeps the order: once this one has arrived, no other is outstanding.
        {"last.png", nullptr, nullptr, nullptr, nullptr, true},
    };
    for (const auto& row : rows) {
        const std::string name = std::string("Race/") + row.name;
        const std::string path = row.name[1] == '.' ? gallery_.AddHighlight(name) : gallery_.AddImage(name);
        if (row.module) Notify(row.module, row.method, row.before + Path(path) + row.after);
        EXPECT_EQ(container_.WaitFor(3, Path(path)).notification, 3) << row.name;
    }
    for (const auto& row : rows) {
        const auto sent = container_.All(3, Path(gallery_.Path(std::string("Race/") + row.name)));
        ASSERT_EQ(sent.size(), 1u) << row.name;
        EXPECT_NE(sent[0].text.find(R"("payload":{"captureSaved":{"ugc":{)"), std::string::npos);
        EXPECT_NE(sent[0].text.find(row.unannounced ? R"("unannounced":true)" : R"("unannounced":false)"),
                  std::string::npos)
            << sent[0].text;
    }
    EXPECT_NE(container_.All(3, "a.mp4")[0].text.find(R"("ugc":{"id":7,)"), std::string::npos)
        << "the highlight of the announcement is on record";
}

TEST_F(CapturesTest, AFailedCaptureIsPassedOnAndWhatIsMalformedIsLogged) {
    const std::string ofFailure = "HighlightCaptureFailureNotification";
    const std::array<std::string, 3> rows[] = {
        {"CaptureSavedNotification", "{}", "OnCaptureSaved::Invalid parameters"},
        {"HighlightSavedNotification", R"({"highlight":{"path":5}})", "OnHighlightSaved::Invalid path"},
        {ofFailure, R"({"highlight":{}})", "Notification " + ofFailure + " could not be handled"},
    };
    for (const auto& [method, payload, line] : rows) {
        Notify("ShareServer", method, payload);
        EXPECT_EQ(container_.WaitFor(6, line).notification, 6) << line;
    }
    Notify("ShareServer", ofFailure, R"({"highlight":{},"errorCode":-5})");
    EXPECT_NE(container_.WaitFor(3, R"("highlightCaptureFailed":{"errorCode":-5})").text, "");
    EXPECT_EQ(container_.All(3, "\"reference_uniqueid\":\"page\"").size(), 1u);
}
