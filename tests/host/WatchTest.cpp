// gallery-host watch: notifications as lines for people, and how watching ends.
#include <csignal>
#include <string>

#include <gtest/gtest.h>

#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/NotificationText.h"
#include "tests/host/HostRun.h"

namespace {

struct Case {
    const char* method;
    const char* payload;
    const char* line;
};

constexpr const char* kGallery = "GalleryNotifications";

constexpr Case kCases[] = {
    {kGallery,
     R"({"captureSaved":{"ugc":{"path":"/v/Rustwind Rally/Photo\u001b[2J.png","fileType":"image",)"
     R"("fileSubType":"Highlight","fileSizeKB":2412,"duration":"","highlightName":"Goal"},"unannounced":true},)"
     R"("_return_code":0})",
     "saved      Rustwind Rally/Photo\\x1b[2J.png  image, highlight, \"Goal\", 2.4 MB, unannounced"},
    {kGallery, R"({"highlightCaptureFailed":{"errorCode":-2147024894}})",
     "failed     highlight, error 0x80070002"},
    {"GalleryCapStateChangeNotification",
     R"({"capacity":{"enabled":false,"capacityPercent":5,"totalDiskSpaceMB":2147483647,"usageMB":0}})",
     "cap        off, 5 % of an unknown size (0 kB used)"},
    // Not of the form known.
    {"GalleryUpdatedNotification", R"({"capacity":{"enabled":true,"capacityPercent":50}})", nullptr},
    {kGallery, R"({"openSummary":{"ugc":[{}]},"galleryIsFull":true})", nullptr},
    {kGallery, R"({"captureSaved":{"ugc":[]}})", nullptr},
    {"MontageNotification", R"({"progress":"half"})", nullptr},
    {"Later", R"({"any":[1,"x"]})", nullptr},
};

TEST(NotificationText, OneLineForEach) {
    for (const Case& one : kCases) {
        KXP::Document payload;
        std::string error;
        ASSERT_TRUE(host::ParseObject(one.payload, payload, error)) << one.payload;
        EXPECT_EQ(host::NotificationText(one.method, payload),
                  one.line ? one.line : std::string(one.method) + "  " + one.payload);
    }
    EXPECT_EQ(host::NotificationText("GalleryNotifications\n", KXP::Value(5)),
              "GalleryNotifications\\x0a  5");
}

TEST(Watch, EndsAtItsCountOrAtAnInterrupt) {
    const Ended counted = RunHost({"watch", "-v", "--json", "--count", "2"}, {}, "notifies");
    EXPECT_EQ(counted.status, 0) << counted.err;
    const std::string payload = R"(","payload":{"n":1,"path":"/g\u001B[2J"}})";
    EXPECT_EQ(counted.out, R"({"notification":"GalleryNotifications)" + payload + "\n" +
                               R"({"notification":"MontageNotification)" + payload + "\n");
    EXPECT_TRUE(Contains(counted.err, "fake: uninit"));

    for (const bool counts : {false, true}) {
        ChildProcess child(WithFake(counts ? std::vector<std::string>{"watch", "--count", "9"}
                                           : std::vector<std::string>{"watch"}),
                           {{"FAKE_PLUGIN=notifies"}, false});
        ASSERT_TRUE(child.ReadErrUntil("gallery-host: watching; Ctrl-C ends\n"));
        ASSERT_TRUE(child.ReadOutUntil("  folder     /g\\x1b[2J\n")) << child.out;
        child.Signal(SIGINT);
        EXPECT_EQ(child.Wait(), counts ? 130 : 0) << child.err;
    }
}

}  // namespace
