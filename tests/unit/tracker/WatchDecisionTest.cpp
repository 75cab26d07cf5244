// From an event of the kernel to a call of the tracker: what is collected, and what is decided.
#include <map>
#include <random>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/watcher/EventWindow.h"
#include "plugin-modules/Gallery/src/watcher/WatchDecision.h"
#include "plugin-modules/Gallery/src/watcher/WatchDispatch.h"
#include "plugin-modules/Gallery/src/watcher/linux/KnownItems.h"
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

TEST(KnownItems, AreThoseOfAMap) {
    std::map<std::string, int64_t> expected;
    KnownItems known;
    std::mt19937 random;
    for (int step = 0; step < 20000; ++step) {
        // Grows, shrinks and grows again, with names that come back.
        const bool growing = step / 5000 % 2 == 0;
        const std::string name = std::to_string(random() % 2000);
        if (random() % 4 == 0 ? !growing : growing) {
            known.Set(name, {false, 1, step, -step});
            expected[name] = step;
        } else {
            known.Erase(name);
            expected.erase(name);
        }
    }
    std::map<std::string, int64_t> all;
    known.ForEach([&](std::string_view name, const Stamp& stamp) {
        EXPECT_EQ(known.Find(name), stamp);
        all.emplace(name, stamp.size);
    });
    EXPECT_EQ(all, expected);
    EXPECT_FALSE(known.Find("2000"));
}

}  // namespace
