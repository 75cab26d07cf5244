// The notifications that a page receives when the capture service announces a capture or a file turns up.

#include "tests/abi/GalleryRequests.h"

namespace {

class CapturesTest : public GalleryRequests {
  protected:
    CapturesTest() {
        Start();
        plugin_->OnJsonMessage(Envelope("GalleryNotifications", "page", "{}", ",\"type\":3073").c_str());
    }

    void Notify(const std::string& module, const std::string& method, const std::string& payload) {
        plugin_->OnJsonMessage(
            (R"({"system":"CobalixNative","module":"Gallery","source_system":"CobalixNative",)"
             R"("source_module":")" +
             module + R"(","method":")" + method +
             R"(","uniqueid":"n","reference_uniqueid":"s","type":3073,"payload":)" + payload + "}")
                .c_str());
    }
};

}  // namespace

TEST_F(CapturesTest, EachIsNotifiedOnce) {
    const struct {
        std::string name;
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
        const bool isVideo = row.name.find(".mp4") != std::string::npos;
        const std::string path =
            isVideo ? gallery_.AddHighlight("Race/" + row.name) : gallery_.AddImage("Race/" + row.name);
        if (row.module)
            Notify(row.module, row.method, row.before + ("\"path\":\"" + path + "\"") + row.after);
        EXPECT_EQ(container_.WaitFor(3, path).notification, 3) << row.name;
    }
    for (const auto& row : rows) {
        const auto sent = container_.All(3, gallery_.Path("Race/" + row.name));
        ASSERT_EQ(sent.size(), 1u) << row.name;
        EXPECT_TRUE(Has(sent[0].text, R"("payload":{"captureSaved":{"ugc":{)"));
        EXPECT_TRUE(Has(sent[0].text, row.unannounced ? R"("unannounced":true)" : R"("unannounced":false)"))
            << sent[0].text;
    }
    EXPECT_TRUE(Has(container_.All(3, "a.mp4")[0].text, R"("ugc":{"id":7,)"))
        << "the highlight of the announcement is on record";
}

TEST_F(CapturesTest, AFailedOneIsPassedOnAndAMalformedNotificationLogged) {
    const std::string method = "HighlightCaptureFailureNotification";
    Notify("ShareServer", method, R"({"highlight":{}})");
    EXPECT_NE(container_.WaitFor(6, "Notification " + method + " could not be handled").text, "");
    Notify("ShareServer", method, R"({"highlight":{},"errorCode":-5})");
    EXPECT_NE(container_.WaitFor(3, R"("highlightCaptureFailed":{"errorCode":-5})").text, "");
    EXPECT_EQ(container_.All(3, "\"reference_uniqueid\":\"page\"").size(), 1u);
}
