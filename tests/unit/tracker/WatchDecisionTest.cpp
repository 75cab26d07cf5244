// From an event of the kernel to a call of the tracker: what is collected, and what is decided.
#include <stdexcept>

#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/watcher/EventWindow.h"
#include "plugin-modules/Gallery/src/watcher/WatchDecision.h"
#include "plugin-modules/Gallery/src/watcher/WatchDispatch.h"
#include "tests/support/LogCapture.h"
#include "tests/support/ScopedEnv.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace watcher;
using std::chrono::milliseconds;
using std::chrono::seconds;

// The log asks for its level once, so this holds for the whole program.
const ScopedEnv kTraceLevel("COBALIX_LOG_LEVEL", "4");

struct Recorder : IFileWatcherCallback {
    std::string calls;
    void Track(std::string path, bool isFolder) override { calls += "+" + path + (isFolder ? "/\n" : "\n"); }
    void Untrack(std::string) override { throw std::runtime_error("no such thing"); }
    void Disturbed(std::string path) override { calls += "~" + path + "\n"; }
};

TEST(WatchDispatch, HoldsTheKindOfTheEventAgainstWhatIsThere) {
    const LogCapture log;
    Recorder recorder;
    const auto dispatch = [&](uint32_t flags, ItemKind there) {
        return DispatchWatchEvent(0, 1, {"/a", flags}, there, recorder);
    };
    EXPECT_EQ(dispatch(ItemCreated | ItemIsFile, ItemKind::File), WatchAction::Track);
    EXPECT_EQ(dispatch(ItemCreated | ItemIsDir, ItemKind::File), WatchAction::None);
    EXPECT_EQ(dispatch(ItemRenamed, ItemKind::Folder), WatchAction::Track);
    EXPECT_EQ(dispatch(ItemCreated | ItemIsFile, ItemKind::Other), WatchAction::None);
    EXPECT_EQ(dispatch(ItemXattrMod | ItemIsFile, ItemKind::File), WatchAction::None);
    EXPECT_EQ(dispatch(ItemRemoved | ItemIsFile, ItemKind::Unknown), WatchAction::None);
    EXPECT_EQ(recorder.calls, "+/a\n~/a\n+/a/\n~/a\n");
    EXPECT_EQ(dispatch(ItemRemoved | ItemIsFile, ItemKind::None), WatchAction::None) << "it threw";
    EXPECT_EQ(dispatch(ItemRemoved | ItemIsFile, ItemKind::File), WatchAction::None);
    EXPECT_EQ(dispatch(ItemModified | ItemIsFile, ItemKind::None), WatchAction::None);
    EXPECT_TRUE(log.HasLine(4, "[0] 1 10100 /a"));
    EXPECT_TRUE(log.HasLine(4, "kFSEventStreamEventFlags: ItemCreated ItemIsFile"));
    EXPECT_TRUE(log.HasLine(4, "Calling Track for /a"));
    EXPECT_TRUE(log.HasLine(4, "Calling Untrack for /a"));
    EXPECT_TRUE(log.HasLine(1, "Watcher callback threw no such thing for /a"));
}

TEST(EventWindow, OpensAtTheFirstEventAndClosesAfterItsTimeOrWhenFull) {
    const TimePoint start{};
    EventWindow window(seconds(1), 2);
    EXPECT_FALSE(window.Closes());
    window.Add("a", ItemCreated, start);
    EXPECT_FALSE(window.IsDue(start + milliseconds(999)));
    EXPECT_TRUE(window.IsDue(start + seconds(1)));
    EXPECT_EQ(window.Take().size(), 1U);
    EXPECT_FALSE(window.IsDue(start + seconds(5)));
    window.Add("a", ItemCreated, start + seconds(5));
    EXPECT_EQ(window.Closes(), start + seconds(6));
    window.Add("b", ItemCreated, start + seconds(5));
    EXPECT_TRUE(window.IsDue(start + seconds(5)));
}

}  // namespace
