// gallery-host serve and watch: lines in and out, and how they end.
#include <csignal>
#include <string>

#include "tests/host/HostRun.h"
#include "tests/support/TemporaryHome.h"

namespace {

size_t Count(const std::string& text, const std::string& part) {
    size_t count = 0;
    for (size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size())
        ++count;
    return count;
}

TEST(Serve, CompletesAndAnswersLines) {
    const Ended ended = RunHost({"serve"},
                                "{\"method\":\"Echo\",\"uniqueid\":\"one\"}\r\n\n"
                                "{\"method\":\"Echo\",\"source_system\":\"Me\",\"source_module\":\"here\"}");
    EXPECT_EQ(ended.status, 0) << ended.err;
    EXPECT_EQ(Count(ended.out, "\n"), 2u) << ended.out;
    EXPECT_TRUE(Contains(ended.out, "\"reference_uniqueid\":\"one\""));
    EXPECT_TRUE(Contains(ended.out, "\"system\":\"Me\",\"module\":\"here\"")) << ended.out;
    EXPECT_TRUE(Contains(ended.err, "fake: start")) << "serve shows log lines";
}

TEST(Serve, BadLinesAreReportedAndServingGoesOn) {
    const Ended ended =
        RunHost({"serve"},
                "nonsense\n{}\n{\"method\":5,\"uniqueid\":\"mine\"}\n"
                "{\"method\":\"ThrowOdd\",\"uniqueid\":\"odd\"}\n\"\xff\"\n" +
                    std::string(600, '[') + "\n{\"method\":\"Echo\",\"uniqueid\":\"good\"}\n");
    EXPECT_EQ(ended.status, 0) << ended.err;
    EXPECT_EQ(Count(ended.out, "{\"error\":"), 6u) << ended.out;
    EXPECT_EQ(Count(ended.err, "gallery-host: line "), 6u);
    EXPECT_TRUE(Contains(ended.out,
                         "{\"error\":{\"line\":3,\"text\":\"Required string method unexpected type\"},"
                         "\"reference_uniqueid\":\"mine\"}\n"));
    EXPECT_TRUE(Contains(ended.out, "an exception of an unknown type\"},\"reference_uniqueid\":\"odd\"}"));
    EXPECT_TRUE(Contains(ended.out, "\"reference_uniqueid\":\"good\""));
}

TEST(Serve, ALineTooLongIsPassedOver) {
    ChildProcess child(WithFake({"serve"}), {});
    const std::string chunk(1 << 20, 'x');
    for (int i = 0; i < 65; ++i)
        child.Write(chunk);
    child.Write("\n{\"method\":\"Echo\",\"uniqueid\":\"after\"}\n");
    EXPECT_TRUE(child.ReadOutUntil("\"reference_uniqueid\":\"after\""));
    EXPECT_EQ(child.Wait(), 0);
    EXPECT_TRUE(Contains(child.out, "{\"error\":{\"line\":1,\"text\":\"longer than 67108864 bytes\"}}\n"));
}

TEST(Serve, NotificationsReachEverySubscriberOnce) {
    const std::string notify =
        R"({"method":"Notify","uniqueid":"ask","payload":{"method":"MontageNotification"}})";
    const auto subscribe = [](const std::string& id) {
        return R"({"method":"MontageNotification","type":3073,"source_system":"Page","uniqueid":")" + id +
               "\"}\n";
    };
    ChildProcess child(WithFake({"serve"}), {});
    child.Write(notify + "\n");
    ASSERT_TRUE(child.ReadOutUntil("\"reference_uniqueid\":\"ask\""));
    child.Write(subscribe("first") + subscribe("second") + notify + "\n");
    EXPECT_EQ(child.Wait(), 0) << child.err;
    EXPECT_EQ(Count(child.out, "\"n\":1"), 3u) << child.out;
    EXPECT_EQ(Count(child.out, "\"reference_uniqueid\":\"MontageNotification\""), 1u);
    EXPECT_EQ(Count(child.out, "\"reference_uniqueid\":\"first\""), 1u);
    EXPECT_EQ(Count(child.out, "\"reference_uniqueid\":\"second\""), 1u);
}

TEST(Serve, TheEndOfInputWaitsForAnswersButNotForEver) {
    const Ended ended = RunHost({"serve", "--timeout", "1"},
                                "{\"method\":\"Never\"}\n{\"method\":\"Echo\",\"uniqueid\":\"one\"}\n");
    EXPECT_EQ(ended.status, 4);
    EXPECT_TRUE(Contains(ended.out, "\"reference_uniqueid\":\"one\""));
    EXPECT_TRUE(Contains(ended.err, "no answer to 1 request(s) within 1 s")) << ended.err;
    EXPECT_TRUE(Contains(ended.err, "fake: uninit"));
}

TEST(Serve, EndsQuietlyWhenNobodyReads) {
    ChildProcess child(WithFake({"serve"}), {});
    child.CloseOutput();
    child.Write("{\"method\":\"Never\"}\n{\"method\":\"Echo\"}\n{\"method\":\"Echo\"}\n");
    EXPECT_TRUE(child.ReadErrUntil("fake: uninit"));
    EXPECT_EQ(child.Wait(), 0);
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
                           {{"FAKE_PLUGIN=notifies"}});
        ASSERT_TRUE(child.ReadErrUntil("watching"));
        ASSERT_TRUE(child.ReadOutUntil("  folder     /g\\x1b[2J\n")) << child.out;
        child.Signal(SIGINT);
        EXPECT_EQ(child.Wait(), counts ? 130 : 0) << child.err;
    }
}

TEST(Serve, RecordsWhatReplayRepeatsAndShowsTheFirstDifference) {
    const TemporaryHome home;
    const std::string file = home / "session.jsonl";
    const std::string secret = home / "Videos/Secret Game/Me.mp4";
    const std::string lines =
        R"({"method":"Echo","uniqueid":"1","payload":{"appName":"Secret Game","n":[1,{"path":")" + secret +
        R"("}]}})" + "\n{\"command\":\"dance\"}\nnonsense\n";
    EXPECT_EQ(RunHost({"serve", "--record", file}, lines).status, 0);
    const std::string recorded = home.folder().Read("session.jsonl");
    EXPECT_TRUE(Contains(recorded, R"("path":"$HOME/Videos/Secret Game/Me.mp4")")) << recorded;
    EXPECT_EQ(RunHost({"serve", "--record", file}, lines).status, 1) << "nothing is overwritten";
    EXPECT_EQ(RunHost({"replay", file}).out, "1 answer as recorded\n");
    std::string changed = recorded;
    const size_t answer = changed.find("\"out\"");
    changed.replace(changed.find("[1,", answer), 3, "[2,");
    home.folder().Write("changed.jsonl", changed);
    const Ended differs = RunHost({"replay", home / "changed.jsonl"});
    EXPECT_EQ(differs.status, 1);
    EXPECT_TRUE(Contains(differs.err, ": Echo: /payload/n/0: recorded 2, now 1")) << differs.err;
    EXPECT_EQ(RunHost({"replay", home / "changed.jsonl", "--ignore", "n"}).status, 0);
    EXPECT_TRUE(
        Contains(RunHost({"replay", home.folder().Write("odd", "{\"ms\":1}\n")}).err, "odd, line 1: "));
    const std::string redacted = home / "redacted.jsonl";
    EXPECT_EQ(RunHost({"serve", "--record", redacted, "--redact"}, lines).status, 0);
    const std::string text = home.folder().Read("redacted.jsonl");
    EXPECT_FALSE(Contains(text, "Secret") || Contains(text, "Me.")) << text;
    EXPECT_TRUE(Contains(text, R"("appName":"word)") && Contains(text, "Echo") && Contains(text, ".mp4"))
        << text;
}

}  // namespace
