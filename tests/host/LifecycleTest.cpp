// How gallery-host starts and stops the plug-in, and what it does when that goes wrong or takes too long.
#include <csignal>
#include <filesystem>
#include <string>

#include "tests/host/HostRun.h"
#include "tests/support/TempFolder.h"

namespace {

// The entry calls that the fake plug-in has logged.
std::string Calls(const std::string& err) {
    std::string calls;
    for (size_t at = 0; (at = err.find("fake: ", at)) != std::string::npos;) {
        const size_t end = err.find('\n', at);
        calls += err.substr(at + 6, end - at - 6) + " ";
        at = end;
    }
    return calls;
}

TEST(Lifecycle, APluginThatDoesNotStartIsThree) {
    const struct {
        const char *behaviour, *message, *calls;
    } rows[] = {{"old", "not of interface version 1", ""},
                {"init-fails", "could not be initialized: 0x80004005: it is broken", "init uninit "},
                {"init-throws", "could not be initialized: init threw", "init uninit "},
                {"start-fails", "could not be started: 0x80004005: it is broken", "init start stop uninit "},
                {"start-refuses", "could not be started", "init start stop uninit "}};
    for (const auto& bad : rows) {
        const Ended ended = RunHost({"-v", "call", "Echo"}, {}, bad.behaviour);
        EXPECT_EQ(ended.status, 3) << bad.behaviour;
        EXPECT_EQ(ended.out, "");
        EXPECT_TRUE(Contains(ended.err, bad.message)) << ended.err;
        EXPECT_EQ(Calls(ended.err), bad.calls);
    }
    for (const std::string& path : {std::string("/nowhere/libGallery.so"), std::string(GALLERY_HOST)}) {
        ChildProcess child({"call", "Echo", "--plugin", path}, {});
        EXPECT_EQ(child.Wait(), 3);
        EXPECT_TRUE(Contains(child.err, "cannot load the plug-in " + path)) << child.err;
    }
}

TEST(Lifecycle, NothingIsWaitedForWithoutEnd) {
    const Ended answer = RunHost({"-v", "--timeout", "1", "call", "Never"});
    EXPECT_EQ(answer.status, 4);
    EXPECT_TRUE(Contains(answer.err, "no answer to Never within 1 s")) << answer.err;
    EXPECT_EQ(Calls(answer.err), "init start stop uninit ");
    EXPECT_EQ(RunHost({"--timeout", "1", "call", "Hang"}).status, 4);
    EXPECT_EQ(RunHost({"--timeout", "1", "call", "Echo"}, {}, "start-never").status, 3);
    const Ended stop = RunHost({"--timeout", "1", "call", "Echo"}, {}, "stop-never");
    EXPECT_EQ(stop.status, 4);
    EXPECT_TRUE(Contains(stop.out, "Success"));
    EXPECT_TRUE(Contains(stop.err, "Stop of the plug-in did not end within 1 s")) << stop.err;
    EXPECT_EQ(RunHost({"call", "Echo"}, {}, "stop-fails").status, 1);
}

TEST(Lifecycle, AnInterruptStopsInOrder) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        ChildProcess child(WithFake({"-v", "-d", "trace", "call", "Never"}), {});
        ASSERT_TRUE(child.ReadErrUntil("-> {\"method\":\"Never\""));
        child.Signal(signal);
        EXPECT_EQ(child.Wait(), 130);
        EXPECT_EQ(Calls(child.err), "init start stop uninit ");
    }
    ChildProcess serving(WithFake({"serve"}), {});
    ASSERT_TRUE(serving.ReadErrUntil("fake: start"));
    serving.Signal(SIGTERM);
    EXPECT_EQ(serving.Wait(), 130);
}

TEST(Lifecycle, ServeRunsCommandsInTheirOrder) {
    const Ended ended = RunHost({"serve"},
                                "{\"command\":\"stop\"}\n{\"command\":\"start\"}\n{\"command\":\"dance\"}\n"
                                "{\"command\":\"restart\"}\n{\"method\":\"Echo\"}\n{\"command\":\"stop\"}\n");
    EXPECT_EQ(ended.status, 0) << ended.err;
    EXPECT_EQ(Calls(ended.err), "init start stop start stop uninit init start stop uninit ");
    EXPECT_EQ(ended.out.find("{\"command\":\"stop\"}\n{\"command\":\"start\"}\n{\"error\":{\"line\":3,"), 0u)
        << ended.out;
    EXPECT_TRUE(Contains(ended.out, "\"method\":\"Echo\"")) << "the new instance answers";
}

TEST(Lifecycle, AnInterruptDuringTheStopLetsItEnd) {
    ChildProcess child(WithFake({"-v", "--timeout", "1", "call", "Echo"}), {{"FAKE_PLUGIN=stop-never"}});
    ASSERT_TRUE(child.ReadErrUntil("fake: stop"));
    child.Signal(SIGINT);
    EXPECT_EQ(child.Wait(), 4);
    EXPECT_TRUE(Contains(child.err, "did not end")) << child.err;
}

TEST(Lifecycle, TheSecondInterruptLeavesAtOnceAndADemoNothingBehind) {
    const TempFolder temporary;
    ChildProcess child(WithFake({"-v", "demo"}), {{"TMPDIR=" + temporary.path(), "FAKE_PLUGIN=start-never"}});
    ASSERT_TRUE(child.ReadErrUntil("fake: start"));
    child.Signal(SIGINT);
    ASSERT_TRUE(child.ReadErrUntil("interrupted"));
    child.Signal(SIGINT);
    EXPECT_EQ(child.Wait(), 130);
    EXPECT_TRUE(std::filesystem::is_empty(temporary.path()));
}

}  // namespace
