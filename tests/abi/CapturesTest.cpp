// From the capture service's word, or from a file that turns up, to what a page is told.

#include <gtest/gtest.h>

#include "tests/abi/PluginLibrary.h"
#include "tests/support/TempGallery.h"

namespace {

class CapturesTest : public testing::Test {
  protected:
    CapturesTest() {
        EXPECT_TRUE(plugin_.Up(container_));
        // Else a rebuild that goes on would take the files, and tell nobody.
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
    const TempGallery gallery_;  // before the tracker comes up, in place of the library's home
};

}  // namespace

TEST_F(CapturesTest, EachIsToldOnce) {
    const struct {
        const char* name;
        const char* module;  // null: nobody tells of it
        const char* method;
        const char* before;  // of the payload: what stands around the path
        const char* behind;
        bool unannounced;
    } rows[] = {
        {"shot.png", "ShareServer", "CaptureSavedNotification", R"({"captureMode":"x",)", "}", false},
        {"lumis.png", "ZvCamera", "LumisShotSavedNotification", R"({"captureMode":"x",)", "}", false},
        {"a.mp4", "ShareServer", "HighlightSavedNotification", R"({"highlight":{"id":7,)", "}}", false},
        {"b.mp4", "ShareServer", "HighlightSavedNotification", R"({"highlight":{"id":8,)",
         R"(},"unannounced":true})", true},
        {"dropped.png", nullptr, nullptr, nullptr, nullptr, true},
        // The watcher tells in order: when this one has come, no other is still to come.
        {"last.png", nullptr, nullptr, nullptr, nullptr, true},
    };
    for (const auto& row : rows) {
        const std::string name = std::string("Race/") + row.name;
        const std::string path = row.name[1] == '.' ? gallery_.AddHighlight(name) : gallery_.AddImage(name);
        if (row.module) Notify(row.module, row.method, row.before + Path(path) + row.behind);
        EXPECT_EQ(container_.WaitFor(3, Path(path)).notification, 3) << row.name;
    }
    for (const auto& row : rows) {
        const auto told = container_.All(3, Path(gallery_.Path(std::string("Race/") + row.name)));
        ASSERT_EQ(told.size(), 1u) << row.name;
        EXPECT_NE(told[0].text.find(R"("payload":{"captureSaved":{"ugc":{)"), std::string::npos);
        EXPECT_NE(told[0].text.find(row.unannounced ? R"("unannounced":true)" : R"("unannounced":false)"),
                  std::string::npos)
            << told[0].text;
    }
    EXPECT_NE(container_.All(3, "a.mp4")[0].text.find(R"("ugc":{"id":7,)"), std::string::npos)
        << "what was told of a highlight is on record";
}

TEST_F(CapturesTest, AFailedCaptureIsPassedOnAndMalformedWordsHarmNobody) {
    const std::string ofCapture = "CaptureSavedNotification";
    const std::string ofHighlight = "HighlightSavedNotification";
    const std::string ofFailure = "HighlightCaptureFailureNotification";
    const struct {
        std::string method;
        const char* payload;
        std::string log;
    } rows[] = {
        {ofCapture, "{}", "OnCaptureSaved::Invalid parameters"},
        {ofCapture, R"({"captureMode":"x","path":""})", "OnCaptureSaved::empty path"},
        {ofHighlight, R"({"highlight":[]})", "OnHighlightSaved::Invalid notification data"},
        {ofHighlight, R"({"highlight":{"path":5}})", "OnHighlightSaved::Invalid path"},
        {ofHighlight, R"({"highlight":{"path":""}})", "OnHighlightSaved::empty path"},
        {ofFailure, R"({"highlight":{}})", "Notification " + ofFailure + " could not be handled"},
    };
    for (const auto& row : rows) {
        Notify("ShareServer", row.method, row.payload);
        EXPECT_EQ(container_.WaitFor(6, row.log).notification, 6) << row.log;
    }
    EXPECT_TRUE(container_.All(3, "\"reference_uniqueid\":\"page\"").empty());
    Notify("ShareServer", ofFailure, R"({"highlight":{},"errorCode":-5})");
    EXPECT_NE(container_.WaitFor(3, R"("highlightCaptureFailed":{"errorCode":-5})").text, "");
}
