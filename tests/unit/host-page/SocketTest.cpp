// The page's WebSocket: who may open it, what it may ask, and how much.
#include <string>

#include "tests/unit/host-page/RunningPage.h"

namespace host::page {
namespace {

TEST(PageSocket, OpensForTheServersOwnPageWithItsToken) {
    RunningPage page;
    const auto status = [&page](const std::string& origin, const std::string& target = "/socket") {
        return WebSocket(page.port(), origin, target).head().substr(9, 3);
    };
    EXPECT_EQ(status("http://" + page.host()), "101");
    EXPECT_EQ(status("http://localhost:" + std::to_string(page.port())), "101");
    for (const std::string& origin : {std::string(), std::string("http://example.org"),
                                      "http://" + page.host() + "\r\nOrigin: http://example.org",
                                      "http://" + page.host() + "\r\nSec-Fetch-Site: same-site"})
        EXPECT_EQ(status(origin), "403") << origin;
    EXPECT_EQ(status("http://" + page.host(), "/media/x"), "403") << "no upgrade elsewhere";
    for (const std::string& first :
         {std::string(R"({"token":")") + std::string(32, '0') + "\"}", std::string("{}"), std::string("x"),
          R"({"token":")" + page.token().substr(1) + "\"}",
          std::string(R"({"method":"GetSettings","uniqueid":"1"})")}) {
        WebSocket socket(page.port());
        socket.Send(first);
        EXPECT_EQ(socket.Read(), "closed 4401") << first;
    }
    WebSocket socket(page.port());
    const std::string ready = socket.Open(page.token());
    for (const char* part : {R"("ready":true)", R"("GetRecentUGC")", R"("GalleryNotifications")",
                             R"("OpenFolder")", R"("version":"1.2.3")"})
        EXPECT_TRUE(Has(ready, part)) << ready;
}

TEST(PageSocket, OnlyWhatIsMeantForPagesGoesThrough) {
    RunningPage page;
    Tab socket(page);
    const auto ask = [&socket](const std::string& envelope) {
        socket.Send(envelope);
        return socket.Read();
    };
    for (const char* method :
         {"UpdateMontageProgress", "EngraveMP4", "WriteEncryptedBitmap", "EnqueuePendingHighlight",
          "TranscodeMediaFile", "JOIN", "LEAVE", "_CmdStop_", "GalleryNotifications", "", "nope"})
        EXPECT_EQ(ask(std::string(R"({"uniqueid":"1","method":")") + method + "\"}"),
                  R"({"error":{"text":"pages cannot ask for this"},"reference_uniqueid":"1"})")
            << method;
    EXPECT_TRUE(Has(ask(R"({"uniqueid":"1","method":"GetSettings","type":3073})"), "no such notification"));
    EXPECT_TRUE(Has(ask(R"({"uniqueid":"1","method":"GetSettings","module":"Other"})"), "no such module"));
    EXPECT_TRUE(Has(ask(R"({"uniqueid":"1","method":"Erase","module":"Host"})"), "no such method"));
    EXPECT_TRUE(Has(ask(R"({"method":"GetSettings"})"), "no uniqueid"));
    EXPECT_TRUE(
        Has(ask(R"({"uniqueid":")" + std::string(300, 'x') + R"(","method":"GetSettings"})"), "no uniqueid"));
    EXPECT_TRUE(Has(ask(std::string(600, '[')), "not JSON"));
    EXPECT_TRUE(Has(ask("[]"), "not a JSON object"));
    // The fake answers with the payload, so this is a list of one record.
    const std::string answer = ask(
        R"({"uniqueid":"a\"b\u0000c","method":"GetRecentUGC","system":"Evil","source_system":"Evil","source_module":"E",)"
        R"("reference_uniqueid":"x","payload":{"count":1,"recents":[{"path":"/g/a.png","fileType":"image"}]}})");
    EXPECT_TRUE(Has(answer, R"("reference_uniqueid":"a\"b\u0000c")")) << answer;
    EXPECT_FALSE(Has(answer, "Evil"));
    const auto capture = page.parts().handles.Find(Between(answer, "\"handle\":\"", "\""));
    EXPECT_EQ(capture ? capture->path : answer, "/g/a.png");
    EXPECT_TRUE(Has(
        ask(R"({"uniqueid":"2","module":"Host","method":"OpenInPlayer","payload":{"file":"/etc/passwd"}})"),
        "Not a capture on record"));
    EXPECT_TRUE(
        Has(ask(R"({"uniqueid":"3","module":"Host","method":"OpenInPlayer","payload":{"file":"/g/a.png"}})"),
            "not in the gallery"));
}

TEST(PageSocket, PreferencesOutliveTheServerWholeOrNotAtAll) {
    RunningPage page;
    Tab socket(page);
    const auto ask = [&socket](const std::string& payload) {
        socket.Send(R"({"uniqueid":"1","module":"Host","method":"Preferences","payload":)" + payload + "}");
        return socket.Read();
    };
    const std::string file = page.home() / "data/ZORVEX/OvirastreamX/Share/PagePreferences.json";
    EXPECT_TRUE(Has(ask("{}"), R"("preferences":{})"));
    const std::string first = R"({"preferences":{"sort":"title","cellSize":200.5,"wide":true}})";
    EXPECT_TRUE(Has(ask(first), R"("_return_code":0)"));
    for (const std::string& wrong :
         {std::string("[]"), std::string("1"), std::string(R"({"a":{}})"), std::string(R"({"a":null})"),
          R"({"a":")" + std::string(4096, 'x') + "\"}"}) {
        const std::string answer = ask(R"({"preferences":)" + wrong + "}");
        EXPECT_TRUE(Has(answer, R"("_return_code":-)")) << answer;
    }
    EXPECT_TRUE(Has(ask("{}"), first.substr(1, first.size() - 2)));
    struct stat status {};
    EXPECT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    page.home().folder().Write("data/ZORVEX/OvirastreamX/Share/PagePreferences.json", "{\"sort\":");
    EXPECT_TRUE(Has(ask("{}"), R"("preferences":{})")) << "a damaged file is none";
}

TEST(PageSocket, AllPagesShareOneSubscription) {
    RunningPage page;
    Tab one(page);
    Tab other(page);
    const std::string subscribe = R"("method":"MontageNotification","type":3073})";
    one.Send(R"({"uniqueid":"s1",)" + subscribe);
    other.Send(R"({"uniqueid":"s2",)" + subscribe);
    other.Send(R"({"uniqueid":"s3",)" + subscribe);
    EXPECT_EQ(page.Seen("MontageNotification"), 1);
    EXPECT_TRUE(Has(other.Ask("CheckDiskSpace", R"({"notify":"MontageNotification"})"),
                    R"("reference_uniqueid":"s2")"));
    EXPECT_TRUE(Has(other.Read(), R"("reference_uniqueid":"s3")"));
    EXPECT_TRUE(Has(other.Read(), R"("method":"CheckDiskSpace")"));
    EXPECT_TRUE(Has(one.Read(), R"("reference_uniqueid":"s1")"));
    // Nobody subscribed to this one, and it came no second time.
    EXPECT_TRUE(Has(one.Ask("CheckDiskSpace", R"({"notify":"PathChangeNotification"})"),
                    R"("method":"CheckDiskSpace")"));
    other.Close();
    EXPECT_TRUE(Has(one.Ask("CheckDiskSpace", R"({"notify":"MontageNotification"})"),
                    R"("reference_uniqueid":"s1")"));
    EXPECT_TRUE(Has(one.Read(), R"("method":"CheckDiskSpace")"));
    for (int i = 0; i < 80; ++i)
        one.Send(R"({"uniqueid":"more",)" + subscribe);
    EXPECT_TRUE(Has(one.Read(), "too many subscriptions"));
}

TEST(PageSocket, EqualRequestsThatOnlyReadShareOneAnswer) {
    RunningPage page;
    Tab first(page);
    Tab one(page);
    Tab other(page);
    const auto ask = [](Tab& tab, const char* id) {
        tab.Send(std::string(R"({"uniqueid":")") + id +
                 R"(","method":"GetDriveInfo","payload":{"file":"held"}})");
    };
    const auto release = [&page](int sent) {
        while (page.Seen("GetDriveInfo") < sent) {
        }
        page.Ask("CheckDiskSpace", R"({"release":1})");
    };
    ask(first, "1");
    while (page.Seen("GetDriveInfo") < 1) {
    }
    // The answer that is under way may be out of date already, so these wait for the next one.
    ask(one, "2");
    ask(other, "3");
    for (Tab* tab : {&one, &other})
        EXPECT_TRUE(Has(tab->Ask("GetSettings", "{}"), R"("method":"GetSettings")"));
    release(1);
    EXPECT_TRUE(Has(first.Read(), R"("reference_uniqueid":"1")"));
    release(2);
    EXPECT_TRUE(Has(one.Read(), R"("reference_uniqueid":"2")"));
    EXPECT_TRUE(Has(other.Read(), R"("reference_uniqueid":"3")"));
    EXPECT_EQ(page.Seen("GetDriveInfo"), 2);
}

TEST(PageSocket, RequestsInFlightAreBounded) {
    RunningPage page;
    Tab greedy(page);
    constexpr int kCount = 100;
    for (int i = 0; i < kCount; ++i)
        greedy.Send(R"({"uniqueid":"1","method":"CopyFile","payload":{"file":"held"}})");
    // Other pages are answered meanwhile.
    while (page.Seen("CopyFile") < 8) {
    }
    EXPECT_EQ(page.Seen("CopyFile"), 8);
    for (int answered = 0; answered < kCount;) {
        // All of these are held by now, or answered.
        const int sent = page.Seen("CopyFile");
        page.Ask("CheckDiskSpace", R"({"release":1})");
        for (; answered < sent; ++answered)
            ASSERT_TRUE(Has(greedy.Read(), R"("method":"CopyFile")"));
    }
}

TEST(PageSocket, MisuseEndsTheSocketAlone) {
    ServerLimits limits;
    limits.token = std::chrono::milliseconds(200);
    limits.messageBytes = 1000;
    RunningPage page(limits);
    WebSocket silent(page.port());
    EXPECT_EQ(silent.Read(), "") << "no token came";
    Tab binary(page);
    binary.Send("{}", 2);
    EXPECT_EQ(binary.Read(), "closed 1003");
    Tab large(page);
    large.Send(std::string(1001, ' '));
    EXPECT_EQ(large.Read(), "closed 1009");
    Tab invalid(page);
    invalid.Send("{\"\xff\":1}");
    EXPECT_EQ(invalid.Read(), "closed 1007");
    EXPECT_FALSE(Has(invalid.head(), "permessage-deflate"));
    EXPECT_TRUE(Has(page.Ask("GetSettings", "{}"), "GetSettings"));
}

TEST(PageSocket, ThereAreOnlySoMany) {
    ServerLimits limits;
    limits.sockets = 3;  // the one of RunningPage too
    RunningPage page(limits);
    Tab first(page);
    Tab second(page);
    EXPECT_EQ(WebSocket(page.port()).head().substr(9, 3), "503");
    EXPECT_TRUE(Has(second.Ask("GetSettings", "{}"), "GetSettings"));
}

TEST(PageSocket, APageThatReadsNothingIsClosed) {
    ServerLimits limits;
    limits.out.close = size_t{4} << 20;
    RunningPage page(limits);
    Tab deaf(page);
    // The answers are as long, and more than the system's buffers hold.
    for (int i = 0; i < 200; ++i)
        deaf.Send(R"({"uniqueid":"1","method":"CopyFile","payload":{"file":")" + std::string(200000, 'x') +
                  "\"}}");
    EXPECT_LT(deaf.ReadToEnd().size(), 200u * 200000u);
    EXPECT_TRUE(Has(page.Ask("GetSettings", "{}"), "GetSettings"));
}

}  // namespace
}  // namespace host::page
