#include <stdexcept>

#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/tracker/WatchDecision.h"
#include "plugin-modules/Gallery/src/tracker/WatchDispatch.h"
#include "tests/support/LogCapture.h"
#include "tests/support/ScopedEnv.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace watcher;

TEST(WatchDecision, FlagsAndExistenceDecide) {
    const struct {
        uint32_t flags;
        WatchAction there, gone;
    } rows[] = {
        {0x100, WatchAction::Track, WatchAction::None},     // created
        {0x200, WatchAction::None, WatchAction::Untrack},   // removed
        {0x800, WatchAction::Track, WatchAction::Untrack},  // renamed
        {0x1000, WatchAction::Track, WatchAction::None},    // modified
        {0x300, WatchAction::Track, WatchAction::Untrack},  // created and removed
        {0xFE4FF, WatchAction::None, WatchAction::None},    // everything else
        {0, WatchAction::None, WatchAction::None},
    };
    for (const auto& row : rows) {
        for (const uint32_t kind : {0x10000U, 0x20000U, 0x40000U}) {
            EXPECT_EQ(DecideWatchAction(row.flags | kind, true), row.there) << row.flags;
            EXPECT_EQ(DecideWatchAction(row.flags | kind, false), row.gone) << row.flags;
        }
    }
}

// The log asks for its level once, so this holds for the whole program.
const ScopedEnv kTraceLevel("COBALIX_LOG_LEVEL", "4");

struct Recorder : IFileWatcherCallback {
    void Track(std::string path) override { calls += "+" + path + "\n"; }
    void Untrack(std::string) override { throw std::runtime_error("full"); }
    std::string calls;
};

TEST(WatchDispatch, AsksForTheKindThatTheEventTells) {
    const TempFolder folder;
    const LogCapture log;
    const std::string file = folder.Write("a.png", "x");
    Recorder recorder;
    EXPECT_EQ(DispatchWatchEvent(0, 1, {file, ItemCreated | ItemIsFile}, recorder), WatchAction::Track);
    EXPECT_EQ(DispatchWatchEvent(1, 2, {file, ItemCreated | ItemIsDir}, recorder), WatchAction::None);
    EXPECT_EQ(DispatchWatchEvent(2, 3, {folder.path(), ItemRenamed}, recorder), WatchAction::Track);
    EXPECT_EQ(recorder.calls, "+" + file + "\n+" + folder.path() + "\n");
    EXPECT_TRUE(log.HasLine(4, "[0] 1 10100 " + file));
    EXPECT_TRUE(log.HasLine(4, "kFSEventStreamEventFlags: ItemCreated ItemIsFile"));
    EXPECT_TRUE(log.HasLine(4, "Calling Track for " + file));

    EXPECT_EQ(DispatchWatchEvent(3, 4, {folder / "b", ItemRemoved | ItemIsFile}, recorder),
              WatchAction::None);
    EXPECT_TRUE(log.HasLine(4, "Calling Untrack for " + folder / "b"));
    EXPECT_TRUE(log.HasLine(1, "Watcher callback threw full for " + folder / "b"));
}

}  // namespace
