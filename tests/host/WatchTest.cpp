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
constexpr const char* kSummary = R"({"openSummary":{"ugc":[{}]},"galleryIsFull":true})";
constexpr const char* kHalf =
    R"({"capacity":{"enabled":true,"capacityPercent":50,"totalDiskSpaceMB":512000}})";

constexpr Case kCases[] = {
    {kGallery,
     R"({"captureSaved":{"ugc":{"path":"/v/Rustwind Rally/Photo finish.png","fileType":"image",)"
     R"("fileSubType":"Highlight","fileSizeKB":2412,"duration":"","highlightName":""},"unannounced":false},)"
     R"("_return_code":0})",
     "saved      Rustwind Rally/Photo finish.png  image, highlight, 2.4 MB"},
    {kGallery,
     R"({"captureSaved":{"ugc":{"path":"/a.mp4","fileType":"video","fileSubType":"Unknown","fileSizeKB":-1,)"
     R"("highlightName":"\u001b[2J","duration":"00:01:15"},"unannounced":true}})",
     "saved      /a.mp4  video, \"\\x1b[2J\", 00:01:15, unannounced"},
    {kGallery, R"({"ugcDeleted":{"ugc":{"path":"a/b\u202e.png","fileType":"image","fileSizeKB":999600}}})",
     "deleted    a/b\\u202e.png  image, screenshot, 1.0 GB"},
    {kGallery, R"({"highlightCaptureFailed":{"errorCode":-2147024894}})",
     "failed     highlight, error 0x80070002"},
    {kGallery,
     R"({"highlightCanceled":{"highlight":{"path":"","type":"video","name":"Goal","app":{"name":7}}}})",
     "canceled   highlight  video, \"Goal\""},
    {"GalleryUpdatedNotification",
     R"({"capacity":{"enabled":true,"capacityPercent":50,"totalDiskSpaceMB":512000,"usageMB":1234}})",
     "usage      1.2 GB of 512 GB (cap 50 %, on)"},
    {"GalleryCapStateChangeNotification",
     R"({"capacity":{"enabled":false,"capacityPercent":5,"totalDiskSpaceMB":2147483647,"usageMB":0}})",
     "cap        off, 5 % of an unknown size (0 kB used)"},
    {"MontageNotification", R"({"progress":45.5})", "montage    45.5 %"},
    // Not of the form known.
    {"GalleryUpdatedNotification", kHalf, nullptr},
    {kGallery, kSummary, nullptr},
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
