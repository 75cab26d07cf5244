#include <atomic>
#include <cstdlib>
#include <regex>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include "CobalixUtil.h"
#include "tests/support/Counter.h"
#include "tests/support/LogCapture.h"

namespace KXP {
namespace {

TEST(Log, OneLineStaysOneLineAtAnyLength) {
    LogCapture log;
    std::thread([] {
        LogNameThread("GALLERY", "TASK");
        LogMessage(LogMilestone, "src/File.cpp", 12, "%s %d", "a\nb\rc", 5);
    }).join();
    const std::regex form(R"(\[[-\d]{10}T[:\d]{8}\.\d{3}Z\]\[2\]\[GALLERY TASK\] src/File\.cpp:12 a b c 5)");
    EXPECT_TRUE(std::regex_match(log.Lines().at(0), form)) << log.Lines()[0];
    for (const size_t length : {511, 512, 100000}) {
        const std::string text(length, 'x');
        KXP_LOG(LogFailure, "%s", text.c_str());
        EXPECT_TRUE(log.HasLine(1, text)) << length;
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
    EXPECT_EXIT(WriteEachLevelAndLeave("1"), leaves, "^[^\n]*level1\n$");
    EXPECT_EXIT(WriteEachLevelAndLeave("loud"), leaves, "level3\n$");
}

TEST(Log, NoCallbackRunsOnceItIsReplaced) {
    struct Stay {
        Counter entered, replacing;
        std::atomic<bool> left{false};
    } stay;
    const auto stayAWhile = [](const char*, void* context) {
        auto* here = static_cast<Stay*>(context);
        here->entered.Add();
        here->replacing.WaitFor(1);
        for (int i = 0; i < 10000; ++i)
            std::this_thread::yield();
        here->left = true;
    };
    LogInit(LocalApp, stayAWhile, &stay);
    std::thread writer([] { KXP_LOG(LogFailure, "line"); });
    EXPECT_TRUE(stay.entered.WaitFor(1));
    stay.replacing.Add();
    LogInit(LocalApp, nullptr, nullptr);
    EXPECT_TRUE(stay.left);
    writer.join();
}

void LogAgain(const char* line, void* context) {
    auto* lines = static_cast<std::vector<std::string>*>(context);
    lines->emplace_back(line);
    if (lines->size() == 1) KXP_LOG(LogFailure, "from the callback");
}

TEST(Log, ACallbackMayLogReplaceItselfAndThrow) {
    std::vector<std::string> lines;
    LogInit(LocalApp, LogAgain, &lines);
    KXP_LOG(LogFailure, "first");
    const auto replaceItself = [](const char*, void* context) {
        LogInit(LocalApp, LogAgain, context);
        throw std::runtime_error("callback");
    };
    LogInit(LocalApp, replaceItself, &lines);
    EXPECT_NO_THROW(KXP_LOG(LogFailure, "taken by the callback that replaces itself"));
    KXP_LOG(LogFailure, "third");
    LogInit(LocalApp, nullptr, nullptr);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_NE((lines[1] + lines[2]).find("from the callback"), std::string::npos);
}

}  // namespace
}  // namespace KXP
