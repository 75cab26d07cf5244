#include <atomic>
#include <cstdlib>
#include <memory>
#include <regex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "CobalixUtil.h"
#include "tests/support/LogCapture.h"

namespace KXP {
namespace {

TEST(Log, LineForm) {
    LogCapture log;
    std::thread([] {
        LogNameThread("GALLERY", "TASK");
        LogMessage(LogMilestone, "src/File.cpp", 12, "%s %d", "text", 5);
        LogNameThread("GALLERY", nullptr);
        LogMessage(LogFailure, "f", 1, "x");
    }).join();
    LogMessage(LogDetail, "f", 1, "y");
    const std::vector<std::string> lines = log.Lines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_TRUE(
        std::regex_match(lines[0], std::regex("\\[\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}Z\\]"
                                              "\\[2\\]\\[GALLERY TASK\\] src/File\\.cpp:12 text 5")))
        << lines[0];
    EXPECT_NE(lines[1].find("][1][GALLERY] f:1 x"), std::string::npos) << lines[1];
    EXPECT_NE(lines[2].find("][3][] f:1 y"), std::string::npos) << lines[2];
}

TEST(Log, OneLineStaysOneLineAtAnyLength) {
    LogCapture log;
    const std::string name = "a\nb\rc";
    const std::string longText(100000, 'x');
    KXP_LOG(LogFailure, "%s", name.c_str());
    EXPECT_TRUE(log.HasLine(1, "a b c"));
    for (const size_t length : {size_t{510}, size_t{511}, size_t{512}, size_t{513}, longText.size()}) {
        log.Clear();
        KXP_LOG(LogFailure, "%s", longText.substr(0, length).c_str());
        EXPECT_TRUE(log.HasLine(1, longText.substr(0, length))) << length;
    }
}

// The level is read once per process, so each case asks a process of its own, which writes to standard error.
void WriteEachLevelAndLeave(const char* level) {
    level ? setenv("COBALIX_LOG_LEVEL", level, 1) : unsetenv("COBALIX_LOG_LEVEL");
    for (const LogLevel each : {LogFailure, LogMilestone, LogDetail, LogTrace})
        LogMessage(each, "f", 1, "level%d", static_cast<int>(each));
    std::exit(0);
}

TEST(LogDeathTest, LevelsAboveTheOneInForceAreDropped) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto leaves = testing::ExitedWithCode(0);
    EXPECT_EXIT(WriteEachLevelAndLeave(nullptr), leaves, "level1\n.*level2\n.*level3\n$");
    EXPECT_EXIT(WriteEachLevelAndLeave("4"), leaves, "level1\n.*level2\n.*level3\n.*level4\n$");
    EXPECT_EXIT(WriteEachLevelAndLeave("1"), leaves, "^[^\n]*level1\n$");
    EXPECT_EXIT(WriteEachLevelAndLeave("loud"), leaves, "level3\n$");
}

struct Counter {
    std::atomic<bool> closed{false};
    std::atomic<int> calls{0};
    std::atomic<int> late{0};
};

void Count(const char*, void* context) {
    auto* counter = static_cast<Counter*>(context);
    ++counter->calls;
    if (counter->closed) ++counter->late;
}

TEST(Log, NoCallbackRunsOnceItIsReplaced) {
    std::atomic<bool> stop{false};
    Counter rest;
    LogInit(LocalApp, Count, &rest);
    std::vector<std::thread> threads;
    threads.reserve(3);
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] {
            while (!stop)
                KXP_LOG(LogFailure, "line");
        });
    }
    int late = 0;
    for (int round = 0; round < 300; ++round) {
        auto counter = std::make_unique<Counter>();
        LogInit(LocalApp, Count, counter.get());
        while (counter->calls == 0)
            std::this_thread::yield();
        LogInit(LocalApp, Count, &rest);
        counter->closed = true;
        late += counter->late;  // and whoever came later would write to freed memory
    }
    stop = true;
    for (std::thread& thread : threads)
        thread.join();
    LogInit(LocalApp, nullptr, nullptr);
    EXPECT_EQ(late, 0);
}

void LogAgain(const char* line, void* context) {
    auto* lines = static_cast<std::vector<std::string>*>(context);
    lines->emplace_back(line);
    if (lines->size() == 1) KXP_LOG(LogFailure, "from the callback");
}

TEST(Log, ACallbackMayLogAndReplaceItself) {
    std::vector<std::string> lines;
    LogInit(LocalApp, LogAgain, &lines);
    KXP_LOG(LogFailure, "first");
    LogInit(
        LocalApp, [](const char*, void* context) { LogInit(LocalApp, LogAgain, context); }, &lines);
    KXP_LOG(LogFailure, "taken by the callback that replaces itself");
    KXP_LOG(LogFailure, "third");
    LogInit(LocalApp, nullptr, nullptr);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_NE(lines[1].find("from the callback"), std::string::npos);
    EXPECT_NE(lines[2].find("third"), std::string::npos);
}

TEST(Log, ACallbackThatThrowsHarmsNobody) {
    LogInit(
        LocalApp, [](const char*, void*) { throw std::runtime_error("callback"); }, nullptr);
    EXPECT_NO_THROW(KXP_LOG(LogFailure, "line"));
    LogCapture log;
    KXP_LOG(LogFailure, "afterwards");
    EXPECT_TRUE(log.Has("afterwards"));
}

}  // namespace
}  // namespace KXP
