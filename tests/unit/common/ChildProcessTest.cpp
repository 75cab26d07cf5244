#include <csignal>
#include <system_error>

#include <gtest/gtest.h>
#include <sys/wait.h>

#include "common/system/ChildProcess.h"
#include "tests/support/Counter.h"
#include "tests/support/Processes.h"

namespace {

using KXP::ChildProcess;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kSoon(3000);

struct Outcome {
    std::vector<std::string> lines;
    milliseconds took{0};
};

// Runs a shell's text to its end; `during` is called at the first line.
Outcome RunShell(const std::string& text, const std::function<void(ChildProcess&)>& during = nullptr) {
    Outcome run;
    const auto start = steady_clock::now();
    ChildProcess process("/bin/sh", {"-c", text});
    process.Wait([&](std::string_view line) {
        run.lines.emplace_back(line);
        if (during && run.lines.size() == 1) during(process);
    });
    run.took = std::chrono::duration_cast<milliseconds>(steady_clock::now() - start);
    return run;
}

TEST(ChildProcess, HasStreamsOfItsOwnAndNoOtherDescriptor) {
    const std::ofstream other("/dev/null");
    const Outcome run = RunShell("ls /proc/self/fd | wc -l; cat; echo error >&2; printf 'no end'");
    // The three, and the one that ls looks with.
    EXPECT_EQ(run.lines, (std::vector<std::string>{"4", "error", "no end"}));
    const Outcome longLine = RunShell("head -c 100000 /dev/zero | tr '\\0' a; echo; echo next");
    ASSERT_EQ(longLine.lines.size(), 2u);
    EXPECT_EQ(longLine.lines[0].size(), ChildProcess::kMaxLine);
    EXPECT_THROW(ChildProcess("/no/such/program", {}), std::system_error);
}

TEST(ChildProcess, EndsWithAllThatItStarted) {
    for (const bool terminated : {false, true}) {
        const std::string wait = terminated ? "wait" : "true";
        const Outcome run = RunShell("sleep 1000 & echo $!; " + wait, [&](ChildProcess& process) {
            if (terminated) process.Terminate(std::chrono::seconds(1000));
        });
        ASSERT_EQ(run.lines.size(), 1u);
        EXPECT_TRUE(Soon([&] { return !IsAlive(run.lines[0]); }));
        EXPECT_LT(run.took, kSoon);
    }
}

TEST(ChildProcess, IsKilledWhenItIgnoresTheSignal) {
    const Outcome run =
        RunShell("trap '' TERM; echo ready; while :; do sleep 1; done", [](ChildProcess& process) {
            process.Terminate(std::chrono::seconds(1000));
            process.Terminate(milliseconds(50));
        });
    EXPECT_LT(run.took, kSoon);
    // Nobody waits for this one.
    std::string pid;
    {
        const ChildProcess process("/bin/sh", {"-c", "exec sleep 1000"});
        for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task"))
            std::ifstream(entry.path() / "children") >> pid;
    }
    EXPECT_FALSE(pid.empty());
    EXPECT_FALSE(IsAlive(pid));
}

TEST(ChildProcess, EndsUnderAHostThatIgnoresItsChildren) {
    const auto old = std::signal(SIGCHLD, SIG_IGN);
    const Outcome run = RunShell("echo here");
    std::signal(SIGCHLD, old);
    EXPECT_EQ(run.lines, std::vector<std::string>{"here"});
    EXPECT_LT(run.took, kSoon);
}

}  // namespace
