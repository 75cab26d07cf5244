// The parts of the page's server that need no socket.
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "gallery-host/message/Envelope.h"
#include "gallery-host/page/ByteRange.h"
#include "gallery-host/page/Frame.h"
#include "gallery-host/page/Handles.h"
#include "gallery-host/page/HttpMessage.h"
#include "gallery-host/page/HttpRules.h"
#include "gallery-host/page/Tokens.h"

namespace host::page {
namespace {

// "first+length", "416", or "all".
std::string Range(std::string_view field, uint64_t size = 10) {
    const ByteRange range = ReadRange(field, size);
    if (range.kind == ByteRange::Kind::kUnsatisfiable) return "416";
    const std::string part = std::to_string(range.first) + "+" + std::to_string(range.length);
    return range.kind == ByteRange::Kind::kPart  ? part
           : part == "0+" + std::to_string(size) ? "all"
                                                 : "wrong";
}

TEST(ByteRange, ReadsOneRangeAndTakesAllElseForNone) {
    const std::pair<const char*, const char*> parts[] = {{"bytes=0-0", "0+1"},
                                                         {"BYTES= 2-", "2+8"},
                                                         {"bytes=9-99", "9+1"},
                                                         {"bytes=-3", "7+3"},
                                                         {"bytes=-11", "0+10"},
                                                         {"bytes=3-99999999999999999999999", "3+7"},
                                                         {"bytes=-99999999999999999999999", "0+10"}};
    for (const auto& [field, part] : parts)
        EXPECT_EQ(Range(field), part) << field;
    EXPECT_EQ(Range("bytes=0-18446744073709551615", UINT64_MAX), "0+18446744073709551615");
    EXPECT_EQ(Range("bytes=0-", 0), "416");
    EXPECT_EQ(Range("bytes=-5", 0), "all");
    for (const char* field : {"bytes=10-", "bytes=99999999999999999999999-", "bytes=-0"})
        EXPECT_EQ(Range(field), "416") << field;
    for (const char* field :
         {"", "bytes=5-4", "bytes=0-1,4-5", "bytes=-", "bytes=--1", "bytes=1-+2", "bytes=0x1-", "items=0-1"})
        EXPECT_EQ(Range(field), "all") << field;
}

HttpRequest RequestWith(Fields fields, const std::string& target = "/") {
    return {"GET", target, std::move(fields)};
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
    for (const char* site : {"same-origin", "none"})
        EXPECT_EQ(status(RequestWith({host, {"sec-fetch-site", site}})), 200u);
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
    EXPECT_FALSE(rules.MayUpgrade(RequestWith({host})));
    EXPECT_TRUE(rules.MayUpgrade(RequestWith({host, {"origin", "http://localhost:26173"}})));
}

TEST(HttpMessage, TargetsAreDecodedOnce) {
    EXPECT_EQ(ReadTarget("/a%20b%252e?x=1")->path, "/a b%2e");
    for (const char* bad : {"", "/%g0", "/?%00=1"})
        EXPECT_FALSE(ReadTarget(bad)) << bad;
    EXPECT_EQ(ReadTarget("/t?w=1&h=2%26&w=3&x")->Query("h"), "2&");
    EXPECT_TRUE(MatchesTag(R"("x", W/"a-1")", R"("a-1")") && MatchesTag("*", R"("a-1")"));
    EXPECT_FALSE(MatchesTag(R"("a-11", a-1)", R"("a-1")"));
}

TEST(Tokens, ALaunchWorksOnceAndInTime) {
    const auto now = LaunchTokens::Clock::now();
    LaunchTokens tokens;
    const std::string first = tokens.Issue(now);
    const std::string second = tokens.Issue(now);
    EXPECT_NE(first, second);
    auto file = std::make_shared<LaunchFile>("http://127.0.0.1:1/");
    const std::string path = file->path();
    tokens.Attach(first, std::move(file));
    EXPECT_EQ(access(path.c_str(), F_OK), 0);
    EXPECT_TRUE(tokens.Redeem(first, now + LaunchTokens::kLifetime - std::chrono::seconds(1)));
    EXPECT_NE(access(path.c_str(), F_OK), 0) << "removed once it was used";
    EXPECT_FALSE(tokens.Redeem(first, now));
    EXPECT_FALSE(tokens.Redeem(second, now + LaunchTokens::kLifetime));
    EXPECT_FALSE(tokens.Redeem(second, now)) << "an expired token stays so";
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
    EXPECT_EQ(HandleOf(handles, record("/g/a", rest + R"(,"id":2,"handle":"x")")), handle);
    Handles others;
    for (const char* changed : {R"(,"date":"2027","fileSizeKB":1,"msDuration":5)",
                                R"(,"date":"2026","fileSizeKB":2,"msDuration":5)",
                                R"(,"date":"2026","fileSizeKB":1,"msDuration":6)"})
        EXPECT_NE(HandleOf(others, record("/g/a", changed)), handle) << changed;
    ASSERT_TRUE(handles.Find(handle));
    EXPECT_TRUE(handles.Find(handle)->isVideo);
    EXPECT_TRUE(handles.Knows("/g/a") && !handles.Knows("/g"));
    for (const std::string& bad : {handle.substr(1), handle + "0", "G" + handle.substr(1), std::string()})
        EXPECT_FALSE(handles.Find(bad)) << bad;
    // Four more: the oldest are forgotten, the latest two at least are known.
    for (const char* path : {"/g/b", "/g/c", "/g/d"})
        HandleOf(handles, record(path, rest));
    EXPECT_TRUE(handles.Find(HandleOf(handles, record("/g/e", rest))));
    EXPECT_TRUE(!handles.Find(handle) && handles.Knows("/g/d"));
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
    // What happens while the resync is being written is sent after it.
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

}  // namespace
}  // namespace host::page
