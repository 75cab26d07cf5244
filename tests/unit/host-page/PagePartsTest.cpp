// The parts of the page's server that need no socket.
#include <cstdlib>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "gallery-host/base/Failure.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/page/AppWindow.h"
#include "gallery-host/page/ByteRange.h"
#include "gallery-host/page/Frame.h"
#include "gallery-host/page/Handles.h"
#include "gallery-host/page/HttpMessage.h"
#include "gallery-host/page/HttpRules.h"
#include "gallery-host/page/StaticTable.h"
#include "gallery-host/page/Tokens.h"
#include "tests/support/ScopedEnv.h"
#include "tests/support/TempFolder.h"

namespace host::page {
namespace {

TEST(ByteRange, ReadsOneRangeAndTakesAllElseForNone) {
    using Kind = ByteRange::Kind;
    struct Row {
        const char* field;
        uint64_t size;
        Kind kind;
        uint64_t first;
        uint64_t length;
    };
    const Row rows[] = {
        {"", 10, Kind::kWhole, 0, 10},
        {"bytes=0-0", 10, Kind::kPart, 0, 1},
        {"BYTES= 2-", 10, Kind::kPart, 2, 8},
        {"bytes=9-99", 10, Kind::kPart, 9, 1},
        {"bytes=3-99999999999999999999999", 10, Kind::kPart, 3, 7},
        {"bytes=-3", 10, Kind::kPart, 7, 3},
        {"bytes=-11", 10, Kind::kPart, 0, 10},
        {"bytes=-99999999999999999999999", 10, Kind::kPart, 0, 10},
        {"bytes=0-18446744073709551615", UINT64_MAX, Kind::kPart, 0, UINT64_MAX},
        {"bytes=10-", 10, Kind::kUnsatisfiable, 0, 0},
        {"bytes=99999999999999999999999-", 10, Kind::kUnsatisfiable, 0, 0},
        {"bytes=-0", 10, Kind::kUnsatisfiable, 0, 0},
        {"bytes=0-", 0, Kind::kUnsatisfiable, 0, 0},
        {"bytes=-5", 0, Kind::kWhole, 0, 0},
        {"bytes=5-4", 10, Kind::kWhole, 0, 10},
        {"bytes=0-1,4-5", 10, Kind::kWhole, 0, 10},
        {"bytes=-", 10, Kind::kWhole, 0, 10},
        {"bytes=--1", 10, Kind::kWhole, 0, 10},
        {"bytes=1-+2", 10, Kind::kWhole, 0, 10},
        {"bytes=0x1-", 10, Kind::kWhole, 0, 10},
        {"items=0-1", 10, Kind::kWhole, 0, 10},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.field);
        const ByteRange range = ReadRange(row.field, row.size);
        EXPECT_EQ(range.kind, row.kind);
        EXPECT_EQ(range.first, row.first);
        EXPECT_EQ(range.length, row.length);
    }
}

HttpRequest RequestWith(Fields fields, const std::string& target = "/", const std::string& method = "GET") {
    return {method, target, std::move(fields)};
}

TEST(HttpRules, OnlyTheServersOwnNamesAndPagesPass) {
    const HttpRules rules(26173, "0123");
    const auto status = [&rules](const HttpRequest& request) {
        const auto refusal = rules.Refuse(request);
        return refusal ? refusal->status : 200;
    };
    for (const char* own : {"127.0.0.1:26173", "localhost:26173", "[::1]:26173"})
        EXPECT_EQ(status(RequestWith({{"host", own}, {"origin", std::string("http://") + own}})), 200u);
    for (const char* other :
         {"", "127.0.0.1", "127.0.0.1:26174", "127.0.0.1:26173.example.org", "127.0.0.1.example.org:26173",
          "example.org:26173", "0.0.0.0:26173", "x@127.0.0.1:26173", "[::1%25lo]:26173", " 127.0.0.1:26173"})
        EXPECT_EQ(status(RequestWith({{"host", other}})), 403u) << other;
    const std::pair<std::string, std::string> host{"host", "127.0.0.1:26173"};
    EXPECT_EQ(status(RequestWith({})), 403u);
    EXPECT_EQ(status(RequestWith({host, host})), 403u);
    for (const char* origin : {"null", "", "http://127.0.0.1:8080", "https://127.0.0.1:26173",
                               "http://127.0.0.1:26173.example.org", "http://example.org"})
        EXPECT_EQ(status(RequestWith({host, {"origin", origin}})), 403u) << origin;
    EXPECT_EQ(status(RequestWith({host, {"sec-fetch-site", "same-origin"}})), 200u);
    EXPECT_EQ(status(RequestWith({host, {"sec-fetch-site", "none"}})), 200u);
    for (const char* site : {"cross-site", "same-site", "", "Same-Origin", "same-origin, none"})
        EXPECT_EQ(status(RequestWith({host, {"sec-fetch-site", site}})), 403u) << site;
    const Fields navigation = {host,
                               {"sec-fetch-site", "cross-site"},
                               {"sec-fetch-mode", "navigate"},
                               {"sec-fetch-dest", "document"}};
    EXPECT_EQ(status(RequestWith(navigation, "/launch?token=1")), 200u);
    EXPECT_EQ(status(RequestWith(navigation, "/launch/../media/1")), 403u);
    EXPECT_EQ(status(RequestWith(navigation, "/")), 403u);
    Fields framed = navigation;
    framed.back().second = "iframe";
    EXPECT_EQ(status(RequestWith(framed, "/launch?token=1")), 403u);
    EXPECT_EQ(status(RequestWith({host}, "/", "OPTIONS")), 403u);
    for (const char* method : {"POST", "PUT", "DELETE", "CONNECT", "get"})
        EXPECT_EQ(status(RequestWith({host}, "/", method)), 405u) << method;
    EXPECT_FALSE(rules.MayUpgrade(RequestWith({host})));
    EXPECT_TRUE(rules.MayUpgrade(RequestWith({host, {"origin", "http://localhost:26173"}})));
}

TEST(HttpRules, TheCookieIsTheOneOfThisPort) {
    const HttpRules rules(26173, "0123");
    const auto has = [&rules](const char* cookie) {
        return rules.HasCookie(RequestWith({{"cookie", cookie}}));
    };
    EXPECT_TRUE(has("gallery-26173=0123"));
    EXPECT_TRUE(has("a=b; gallery-26173=9999; gallery-26173=0123; c=d"));
    EXPECT_FALSE(has("gallery-26173=012"));
    EXPECT_FALSE(has("gallery-26173=01234"));
    EXPECT_FALSE(has("gallery-26173"));
    EXPECT_FALSE(has("gallery-26174=0123"));
    EXPECT_FALSE(has("x-gallery-26173=0123; ; ="));
    EXPECT_FALSE(rules.HasCookie(RequestWith({})));
    EXPECT_EQ(rules.SetCookie(), "gallery-26173=0123; Path=/; HttpOnly; SameSite=Strict");
}

TEST(HttpMessage, TargetsAreDecodedOnce) {
    const auto path = [](std::string_view target) {
        const auto read = ReadTarget(target);
        return read ? read->path : "-";
    };
    EXPECT_EQ(path("/a%20b%252e?x=1"), "/a b%2e");
    for (const std::string_view bad :
         {std::string_view("a"), std::string_view(""), std::string_view("*"), std::string_view("http://h/"),
          std::string_view("/%0"), std::string_view("/%g0"), std::string_view("/%00"),
          std::string_view("/\0", 2), std::string_view("/%ff"), std::string_view("/%c0%af"),
          std::string_view("/?%00=1"), std::string_view("/%0d%0aX: y")})
        EXPECT_EQ(path(bad), "-") << bad;
    const auto target = ReadTarget("/t?w=1&h=2%26&w=3&x");
    ASSERT_TRUE(target);
    EXPECT_EQ(target->Query("w"), "1");
    EXPECT_EQ(target->Query("h"), "2&");
    EXPECT_EQ(target->Query("y"), "");
    EXPECT_TRUE(MatchesTag(R"("x", W/"a-1")", R"("a-1")"));
    EXPECT_TRUE(MatchesTag("*", R"("a-1")"));
    EXPECT_FALSE(MatchesTag(R"("a-11", a-1)", R"("a-1")"));
}

TEST(Tokens, ALaunchWorksOnceAndInTimeAndItsFileIsTheUsersOwn) {
    const TempFolder runtime;
    const ScopedEnv folder("XDG_RUNTIME_DIR", runtime.path());
    const auto now = LaunchTokens::Clock::now();
    LaunchTokens tokens;
    const std::string first = tokens.Issue(now);
    const std::string second = tokens.Issue(now);
    EXPECT_NE(first, second);
    EXPECT_EQ(first.size(), 32u);
    auto file = std::make_shared<LaunchFile>("http://127.0.0.1:1/launch?token=" + first);
    const std::string path = file->path();
    tokens.Attach(first, std::move(file));
    struct stat status {};
    ASSERT_EQ(lstat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode, mode_t{S_IFREG | 0600});
    EXPECT_EQ(path.compare(0, runtime.path().size(), runtime.path()), 0);
    EXPECT_FALSE(tokens.Redeem("", now));
    EXPECT_FALSE(tokens.Redeem(first.substr(1), now));
    EXPECT_TRUE(tokens.Redeem(first, now + LaunchTokens::kLifetime - std::chrono::seconds(1)));
    EXPECT_NE(access(path.c_str(), F_OK), 0) << "removed once it was used";
    EXPECT_FALSE(tokens.Redeem(first, now));
    EXPECT_FALSE(tokens.Redeem(second, now + LaunchTokens::kLifetime));
    EXPECT_FALSE(tokens.Redeem(second, now)) << "an expired token stays so";
    EXPECT_EQ(FileAddress("/run/a b/ü.html"), "file:///run/a%20b/%C3%BC.html");
}

std::string HandleOf(Handles& handles, const std::string& record) {
    KXP::Document message;
    std::string error;
    EXPECT_TRUE(ParseObject(R"({"payload":{"recents":[)" + record + "]}}", message, error)) << error;
    handles.AddTo(message, message.GetAllocator());
    return Text(message["payload"]["recents"][0], "handle");
}

TEST(Handles, FollowTheFileAndNotTheRecord) {
    Handles handles(2);
    const auto record = [](const std::string& path, const std::string& rest) {
        return R"({"path":")" + path + R"(","fileType":"video")" + rest + "}";
    };
    const std::string rest = R"(,"date":"2026","fileSizeKB":1,"msDuration":5)";
    const std::string handle = HandleOf(handles, record("/g/a", rest + R"(,"id":1)"));
    EXPECT_EQ(handle.size(), 32u);
    EXPECT_EQ(HandleOf(handles, record("/g/a", rest + R"(,"id":2,"handle":"x")")), handle);
    for (const char* changed : {R"(,"date":"2027","fileSizeKB":1,"msDuration":5)",
                                R"(,"date":"2026","fileSizeKB":2,"msDuration":5)",
                                R"(,"date":"2026","fileSizeKB":1,"msDuration":6)",
                                R"(,"date":"20261","fileSizeKB":"","msDuration":5)"}) {
        Handles other;
        EXPECT_NE(HandleOf(other, record("/g/a", changed)), handle) << changed;
    }
    ASSERT_TRUE(handles.Find(handle));
    EXPECT_EQ(handles.Find(handle)->path, "/g/a");
    EXPECT_TRUE(handles.Find(handle)->isVideo);
    EXPECT_TRUE(handles.Knows("/g/a"));
    EXPECT_FALSE(handles.Knows("/g"));
    for (const std::string& bad : {handle.substr(1), handle + "0", "G" + handle.substr(1), std::string()})
        EXPECT_FALSE(handles.Find(bad)) << bad;
    EXPECT_EQ(HandleOf(handles, R"({"path":"/g/x","fileType":5})"), "");
    // Four more: the oldest are forgotten, the latest two at least are known.
    for (const char* path : {"/g/b", "/g/c", "/g/d"})
        HandleOf(handles, record(path, rest));
    const std::string last = HandleOf(handles, record("/g/e", rest));
    EXPECT_FALSE(handles.Find(handle));
    EXPECT_TRUE(handles.Find(last));
    EXPECT_TRUE(handles.Knows("/g/d"));
}

std::vector<std::string> Drain(OutQueue& queue) {
    std::vector<std::string> texts;
    for (; !queue.empty(); queue.Pop())
        texts.push_back(queue.BeginWrite().head.substr(0, 1));
    return texts;
}

TEST(OutQueue, ASlowPageLosesNotificationsButNeverAnAnswer) {
    using Texts = std::vector<std::string>;
    const auto frame = [](Frame::Kind kind, char letter, size_t size) {
        return Frame{kind, std::string(size, letter), nullptr};
    };
    constexpr auto kNews = Frame::Kind::kNotification;
    constexpr auto kAnswer = Frame::Kind::kAnswer;
    OutQueue queue({100, 200});
    EXPECT_TRUE(queue.Push(frame(kNews, 'w', 40)));
    queue.BeginWrite();
    EXPECT_TRUE(queue.Push(frame(kAnswer, 'a', 30)));
    EXPECT_TRUE(queue.Push(frame(kNews, 'n', 30)));
    EXPECT_TRUE(queue.Push(frame(kNews, 'm', 30)));
    EXPECT_EQ(queue.bytes(), 70u + std::string(R"({"resync":true})").size());
    EXPECT_TRUE(queue.Push(frame(kNews, 'o', 1))) << "stands for this one, too";
    EXPECT_TRUE(queue.Push(frame(kAnswer, 'b', 90)));
    EXPECT_FALSE(queue.Push(frame(kAnswer, 'c', 90)));
    EXPECT_EQ(Drain(queue), (Texts{"w", "a", "{", "b"}));
    EXPECT_EQ(queue.bytes(), 0u);
    // What happens while the resync is being written is told after it.
    EXPECT_TRUE(queue.Push(frame(kAnswer, 'a', 99)));
    EXPECT_TRUE(queue.Push(frame(kNews, 'n', 30)));
    queue.BeginWrite();
    queue.Pop();
    EXPECT_EQ(queue.BeginWrite().head, R"({"resync":true})");
    EXPECT_TRUE(queue.Push(frame(kNews, 'p', 10)));
    queue.Pop();
    EXPECT_EQ(Drain(queue), Texts{"p"});
    EXPECT_TRUE(queue.Push(frame(kAnswer, 'a', 1000))) << "a list may be longer than all bounds";
}

TEST(StaticTable, HoldsWhatWasThereAtTheStart) {
    const TempFolder folder;
    EXPECT_THROW(StaticTable(folder.path()), Failure);
    EXPECT_THROW(StaticTable(folder / "none"), Failure);
    folder.Write("index.html", "<p>");
    folder.Write("assets/a-12.js", "1");
    const StaticTable table(folder.path());
    folder.Write("later.html", "");
    folder.Write("index.html", "changed");
    const auto index = table.Find("/");
    ASSERT_TRUE(index);
    EXPECT_EQ(index->body, "<p>");
    ASSERT_TRUE(table.Find("/assets/a-12.js"));
    EXPECT_EQ(table.Find("/assets/a-12.js")->fields[0].second, "text/javascript; charset=utf-8");
    for (const char* path : {"", "/later.html", "/../index.html", "/assets", "/assets/", "//index.html"})
        EXPECT_FALSE(table.Find(path)) << path;
}

}  // namespace
}  // namespace host::page
