// Attacks on the page's server over HTTP.
#include <deque>
#include <filesystem>
#include <string>

#include <sys/stat.h>

#include "sample-media/MadeMedia.h"
#include "tests/unit/host-page/RunningPage.h"

namespace host::page {
namespace {

constexpr const char* kPolicy =
    "Content-Security-Policy: default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data:; "
    "media-src 'self'; connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'; "
    "require-trusted-types-for 'script'; trusted-types lit-html\r\n";

std::string StatusOf(const std::string& answer) {
    return answer.substr(0, 8) == "HTTP/1.1" ? answer.substr(9, 3) : "";
}

std::string BodyOf(const std::string& answer) {
    return answer.substr(answer.find("\r\n\r\n") + 4);
}

TEST(PageHttp, EveryAnswerKeepsOtherSitesOut) {
    RunningPage page;
    const std::string handle = page.HandleFor(page.InGallery("Race/a.png"));
    const std::string answers[] = {page.Get("/"),
                                   page.Get("/assets/app-1.js"),
                                   page.Get("/nothing"),
                                   page.Get("/%00"),
                                   page.Get("/launch?token=0"),
                                   page.Get("/media/" + handle),
                                   page.Get("/media/" + handle, page.cookie()),
                                   page.Get("/thumb/" + handle + "?w=1&h=1", page.cookie()),
                                   page.Get("/", "Host: example.org\r\n"),
                                   page.Get("/", {}, "OPTIONS"),
                                   page.Get("/", {}, "POST"),
                                   page.Get("/socket"),
                                   page.Get("/", "X: " + std::string(9000, 'x') + "\r\n")};
    std::string statuses;
    for (const std::string& answer : answers) {
        SCOPED_TRACE(answer);
        statuses += StatusOf(answer) + " ";
        for (const char* field :
             {kPolicy, "Cross-Origin-Resource-Policy: same-origin\r\n",
              "Cross-Origin-Opener-Policy: same-origin\r\n", "X-Content-Type-Options: nosniff\r\n",
              "Referrer-Policy: no-referrer\r\n", "Cache-Control: "})
            EXPECT_TRUE(Has(answer, field)) << field;
        EXPECT_FALSE(Has(answer, "Access-Control"));
    }
    EXPECT_EQ(statuses, "200 200 404 400 403 403 410 200 403 403 405 404 431 ");
    EXPECT_TRUE(Has(answers[0], "Cache-Control: no-store\r\n"));
    EXPECT_TRUE(Has(answers[1], "immutable"));
}

TEST(PageHttp, OnlyTheLoopbackAddressIsServed) {
    RunningPage page;
    EXPECT_TRUE(RawClient(page.port()).connected());
    EXPECT_FALSE(RawClient(page.port(), 2).connected());
    // A second server goes on to the next port, and fails where there is none.
    PageServer second(page.parts(), {page.port(), 0}, {}, "");
    EXPECT_NE(second.port(), page.port());
    EXPECT_THROW(PageServer(page.parts(), {page.port()}, {}, ""), Failure);
}

TEST(PageHttp, TheLaunchWorksOnce) {
    RunningPage page;
    const std::string token = page.launch().substr(page.launch().find('=') + 1);
    EXPECT_EQ(StatusOf(page.Get("/launch")), "403");
    EXPECT_EQ(StatusOf(page.Get("/launch?token=" + token.substr(1))), "403");
    EXPECT_EQ(StatusOf(page.Get(page.launch(), {}, "HEAD")), "405");
    const std::string answer = page.Get(page.launch());
    EXPECT_EQ(StatusOf(answer), "200");
    for (const std::string& part : {"Set-Cookie: gallery-" + std::to_string(page.port()) + "=",
                                    std::string("; Path=/; HttpOnly; SameSite=Strict\r\n"),
                                    std::string("Clear-Site-Data: \"storage\"\r\n")})
        EXPECT_TRUE(Has(answer, part)) << answer;
    EXPECT_FALSE(Has(answer, token)) << "the three tokens are different ones";
    EXPECT_EQ(StatusOf(page.Get(page.launch())), "403");
}

TEST(PageHttp, NoNameLeadsOutOfTheGallery) {
    RunningPage page;
    const std::string png = "\x89PNG\r\n\x1a\nrest";
    page.home().folder().Write("secret.png", png);
    page.Write("Race/a.png", png);
    page.home().folder().Write("Videos/ZORVEX/Ovirastream-other/a.png", png);
    std::filesystem::create_symlink(page.home() / "secret.png", page.InGallery("Race/link.png"));
    std::filesystem::create_symlink("a.png", page.InGallery("Race/inner.png"));
    std::filesystem::create_directory_symlink(page.home() / "", page.InGallery("linked"));
    ASSERT_EQ(mkfifo(page.InGallery("Race/pipe.png").c_str(), 0600), 0);
    const auto status = [&page](const std::string& path) {
        return StatusOf(page.Get("/media/" + page.HandleFor(path), page.cookie()));
    };
    EXPECT_EQ(status(page.InGallery("Race/a.png")), "200");
    for (const std::string& path :
         {page.home() / "secret.png", page.InGallery("Race/link.png"), page.InGallery("linked/secret.png"),
          page.InGallery("Race/pipe.png"), page.InGallery("Race"), page.InGallery("Race/inner.png"),
          page.InGallery("Race/../../../secret.png"), page.home() / "Videos/ZORVEX/Ovirastream-other/a.png",
          std::string("/etc/passwd"), std::string(),
          page.InGallery("Race/a.png") + std::string(1, '\0') + "b", std::string("/proc/self/environ")})
        EXPECT_EQ(status(path), "404") << path;
    EXPECT_EQ(status(page.InGallery("Race/gone.png")), "410");
    for (const char* target :
         {"/../../etc/passwd", "/%2e%2e/%2e%2e/etc/passwd", "//etc/passwd", "/assets/../index.html",
          "/media/..%2f..%2fetc%2fpasswd", "/media/", "/thumb/?w=1&h=1"})
        EXPECT_EQ(StatusOf(page.Get(target, page.cookie())), "404") << target;
    const std::string handle = page.HandleFor(page.InGallery("Race/a.png"));
    EXPECT_EQ(StatusOf(page.Get("/media/" + handle)), "403") << "without the cookie";
    const std::string cookie = page.cookie().substr(0, page.cookie().size() - 3);
    for (const std::string& wrong :
         {cookie, cookie + "x", page.cookie().substr(0, 8) + "x" + page.cookie().substr(8)})
        EXPECT_EQ(StatusOf(page.Get("/thumb/" + handle + "?w=9&h=9", wrong + "\r\n")), "403") << wrong;
}

TEST(PageHttp, TypesComeFromTheBytes) {
    RunningPage page;
    const auto answer = [&page](const std::string& name, const std::string& bytes, const char* type) {
        return page.Get("/media/" + page.HandleFor(page.Write(name, bytes), type), page.cookie());
    };
    EXPECT_TRUE(Has(answer("a.html", "\xFF\xD8\xFF\xE0", "image"), "Content-Type: image/jpeg\r\n"));
    EXPECT_TRUE(Has(answer("b.png", "....ftypisom", "video"), "Content-Type: video/mp4\r\n"));
    for (const char* type : {"image", "video", "other"}) {
        const std::string html = answer("c.png", "<script>alert(1)</script>", type);
        EXPECT_TRUE(Has(html, "octet-stream\r\nContent-Disposition: attachment\r\n")) << html;
    }
}

TEST(PageHttp, RangesAndTagsHold) {
    RunningPage page;
    const std::string bytes = "\x89PNG\r\n\x1a\n0123456789";
    const std::string target = "/media/" + page.HandleFor(page.Write("a.png", bytes));
    const auto get = [&](const std::string& lines, const char* method = "GET") {
        return page.Get(target, page.cookie() + lines, method);
    };
    const std::string whole = get({});
    EXPECT_EQ(BodyOf(whole), bytes);
    const std::string tag = Between(whole, "ETag: ", "\r\n");
    const std::string head = get({}, "HEAD");
    EXPECT_TRUE(Has(head, "Content-Length: 18\r\n") && Has(head, "Accept-Ranges: bytes\r\n") &&
                BodyOf(head).empty());
    const std::string part = get("Range: bytes=8-9\r\nIf-Range: " + tag + "\r\n");
    EXPECT_EQ(StatusOf(part), "206");
    EXPECT_TRUE(Has(part, "Content-Range: bytes 8-9/18\r\n"));
    EXPECT_EQ(BodyOf(part), "01");
    const std::string beyond = get("Range: bytes=18-\r\n");
    EXPECT_EQ(StatusOf(beyond), "416");
    EXPECT_TRUE(Has(beyond, "bytes */18\r\n"));
    for (const char* lines : {"Range: bytes=0-1,3-4\r\n", "Range: bytes=0-1\r\nRange: bytes=3-4\r\n",
                              "Range: bytes=0-1\r\nIf-Range: \"other\"\r\n"})
        EXPECT_EQ(BodyOf(get(lines)), bytes) << lines;
    EXPECT_EQ(StatusOf(get("If-None-Match: " + tag + "\r\n")), "304");
    page.Write("a.png", bytes + "longer");
    EXPECT_EQ(BodyOf(get("Range: bytes=8-9\r\nIf-Range: " + tag + "\r\n")), bytes + "longer");
    const std::string empty = page.Get("/media/" + page.HandleFor(page.Write("empty.png", "")),
                                       page.cookie() + "Range: bytes=-5\r\n");
    EXPECT_TRUE(StatusOf(empty) == "200" && Has(empty, "Content-Length: 0\r\n")) << empty;
}

TEST(PageHttp, KeyframesComeFromTheTablesOfTheFile) {
    RunningPage page;
    const made::Video video;  // two seconds, with a keyframe for each
    std::filesystem::copy_file(made::Path(video), page.InGallery("a.mp4"));
    const auto get = [&page](const std::string& path, const std::string& lines) {
        return page.Get("/keyframes/" + page.HandleFor(path, "video"), lines);
    };
    EXPECT_EQ(BodyOf(get(page.InGallery("a.mp4"), page.cookie())),
              R"({"keyframes":[0.0,1000.0],"frameMs":33.33})");
    EXPECT_EQ(StatusOf(get(page.InGallery("a.mp4"), {})), "403");
    EXPECT_EQ(StatusOf(get(page.Write("b.mp4", "no video"), page.cookie())), "404");
    EXPECT_EQ(StatusOf(get(made::Path(video), page.cookie())), "404") << "outside of the gallery";
}

TEST(PageHttp, AFileThatShrinksEndsTheAnswerShort) {
    RunningPage page;
    constexpr size_t kSize = size_t{256} << 20;  // more than the sockets' buffers hold
    const std::string path = page.Write("a.png", "x");
    std::filesystem::resize_file(path, kSize);
    RawClient client(page.port());
    client.Send(page.RequestText("/media/" + page.HandleFor(path), page.cookie()));
    std::string start;
    ASSERT_TRUE(client.ReadSome(start));
    EXPECT_TRUE(Has(start, "Content-Length: 268435456\r\n"));
    std::filesystem::resize_file(path, 1000);
    EXPECT_LT(start.size() + client.ReadToEnd().size(), kSize);
    EXPECT_EQ(StatusOf(page.Get("/")), "200");
}

TEST(PageHttp, SlowAndGreedyClientsAreCutOff) {
    ServerLimits limits;
    limits.connections = 4;
    limits.header = limits.progress = std::chrono::milliseconds(200);
    RunningPage page(limits);
    RawClient silent(page.port());
    RawClient halfway(page.port());
    halfway.Send("GET / HTTP/1.1\r\nHost:");
    EXPECT_EQ(silent.ReadToEnd(), "");
    EXPECT_EQ(halfway.ReadToEnd(), "");
    const auto answerTo = [&page](const std::string& text) {
        RawClient client(page.port());
        client.Send(text);
        return StatusOf(client.ReadToEnd());
    };
    EXPECT_EQ(answerTo("GET / HTTP/1.1\r\nX: " + std::string(100000, 'x')), "431");
    EXPECT_EQ(answerTo(page.RequestText("/", "Content-Length: 5\r\n") + "12345"), "413");
    EXPECT_EQ(answerTo("GET\r\n\r\n"), "400");
    // One that does not take its answer.
    const std::string path = page.Write("a.png", "x");
    std::filesystem::resize_file(path, size_t{256} << 20);
    RawClient lazy(page.port());
    lazy.Send(page.RequestText("/media/" + page.HandleFor(path), page.cookie()));
    // Idle connections give way to new ones, so these all get their answers.
    std::deque<RawClient> idle;
    for (int i = 0; i < 12; ++i) {
        idle.emplace_back(page.port()).Send(page.RequestText("/"));
        EXPECT_EQ(StatusOf(idle.back().ReadToEnd(1)), "200") << i;
    }
    EXPECT_EQ(idle.front().ReadToEnd(), "") << "closed for a later one";
    // Once the others are cut off, those that waited are served.
    std::deque<RawClient> slow;
    for (int i = 0; i < 6; ++i)
        slow.emplace_back(page.port());
    EXPECT_EQ(StatusOf(page.Get("/")), "200");
    EXPECT_LT(lazy.ReadToEnd().size(), size_t{256} << 20);
}

TEST(PageHttp, NobodyWaitsForThoseWhoAreIdle) {
    ServerLimits limits;
    limits.connections = 3;
    RunningPage page(limits);
    const std::string held = "/thumb/" + page.HandleFor("held") + "?w=1&h=1";
    std::deque<RawClient> clients;
    for (const std::string& target : {held, held, held, std::string("/")})
        clients.emplace_back(page.port()).Send(page.RequestText(target, page.cookie()));
    while (page.Seen("GetThumbnail") < 3) {
    }
    page.Ask("CheckDiskSpace", R"({"release":1})");
    EXPECT_EQ(StatusOf(clients.back().ReadToEnd(1)), "200");
}

TEST(PageHttp, ThumbnailsAreKeptByTheBrowserAndNotMadeForThoseWhoLeft) {
    RunningPage page;
    const auto target = [&page](const std::string& name, const std::string& box = "?w=320&h=180") {
        return "/thumb/" + page.HandleFor(page.InGallery(name)) + box;
    };
    const std::string answer = page.Get(target("a.png"), page.cookie());
    EXPECT_EQ(BodyOf(answer), "\x89PNG\r\n\x1a\n");
    EXPECT_TRUE(Has(answer, "Content-Type: image/png\r\n"));
    EXPECT_TRUE(Has(answer, "Cache-Control: private, max-age=31536000, immutable\r\n"));
    const std::string condition = "If-None-Match: " + Between(answer, "ETag: ", "\n") + "\n";
    EXPECT_EQ(StatusOf(page.Get(target("a.png"), page.cookie() + condition)), "304");
    EXPECT_EQ(StatusOf(page.Get(target("a.png", "?w=321&h=180"), page.cookie() + condition)), "200");
    EXPECT_EQ(StatusOf(page.Get(target("none.png"), page.cookie())), "422");
    for (const char* box :
         {"", "?w=320", "?w=0&h=1", "?w=-1&h=1", "?w=1x&h=1", "?w=99999999999&h=1", "?w=4000&h=1"})
        EXPECT_EQ(StatusOf(page.Get(target("a.png", box), page.cookie())), "400") << box;

    // Three are being made; of the two that wait, one is no longer wanted.
    std::deque<RawClient> clients;
    for (const char* name : {"held1.png", "held2.png", "held3.png", "left.png", "stays.png"})
        clients.emplace_back(page.port()).Send(page.RequestText(target(name), page.cookie()));
    while (page.Seen("GetThumbnail") < 6) {
    }
    EXPECT_EQ(StatusOf(page.Get("/")), "200") << "the server has read the last request as well";
    page.Seen("GetThumbnail");
    EXPECT_EQ(page.Seen("GetThumbnail"), 6);
    clients[3].Close();
    page.Ask("CheckDiskSpace", R"({"release":1})");
    EXPECT_EQ(StatusOf(clients[4].ReadToEnd(1)), "200");
    EXPECT_EQ(StatusOf(clients[0].ReadToEnd(1)), "200");
    EXPECT_EQ(page.Seen("GetThumbnail"), 7);
}

}  // namespace
}  // namespace host::page
