// What the watcher for macOS does beyond every watcher's contract.
#include <cerrno>

#include <dlfcn.h>
#include <pthread.h>

#include "plugin-modules/Gallery/src/watcher/WatchDecision.h"
#include "tests/support/FakeFileEvents.h"
#include "tests/unit/tracker/FileWatcherTest.h"

namespace {

using fake_events::Refusal;
using Paths = std::vector<std::string>;

class AppleWatcherTest : public FileWatcherTest {
  protected:
    void TearDown() override {
        watcher_.reset();
        fake_events::Refuse(Refusal::None);
        EXPECT_EQ(fake_events::LiveObjects(), 0);
    }
};
INSTANTIATE_TEST_SUITE_P(By, AppleWatcherTest, testing::ValuesIn(WaysToWatch()), NameOfWay);

TEST_P(AppleWatcherTest, PathsAreSpelledAsTheTrackerDoes) {
    const std::string spelled = folder_ / "Moved/Gallery";
    fs::create_directory_symlink(folder_ / "Videos", folder_ / "Moved");
    folder_.MakeFolder("Moved/Other/deep");
    const std::string elsewhere = folder_.MakeFolder("Big/Elsewhere");
    for (const std::string& real : {options_.gallery, elsewhere}) {
        if (real == elsewhere) {
            fs::remove_all(spelled);
            fs::create_directory_symlink(elsewhere, spelled);
        }
        options_.gallery = spelled;
        watcher_ = CreateFileWatcher(folder_ / "Moved/", std::make_unique<Callback>(told_), options_);
        folder_.Write("Videos/Other/deep/b.png", "x");
        folder_.Write("Big/b.png", "x");
        std::ofstream(real + "/a.png") << "x";
        EXPECT_TRUE(told_.WaitForCall("+" + spelled + "/a.png"));
        fs::remove(real + "/a.png");
        EXPECT_TRUE(told_.WaitForCall("-" + spelled + "/a.png"));
        fs::remove(spelled);
        EXPECT_TRUE(told_.WaitForCall("-" + spelled));
        for (const std::string& call : told_.Calls())
            EXPECT_EQ(call.substr(1).rfind(spelled, 0), 0U) << call;
        told_.Forget();
    }
}

TEST_P(AppleWatcherTest, WhatIsOnItsWayIsUnreported) {
    Watch();
    told_.Hold(true);
    EXPECT_EQ(watcher_->Unreported(9)->changed, Paths());
    const std::string file = Write("Game/a.png");
    const std::optional<UnreportedPaths> unreported = watcher_->Unreported(9);
    EXPECT_EQ(std::set<std::string>(unreported->changed.begin(), unreported->changed.end()),
              (std::set<std::string>{At("Game"), file}));
    EXPECT_EQ(unreported->incomplete, Paths());
    EXPECT_FALSE(watcher_->Unreported(1));
    told_.Hold(false);
    EXPECT_TRUE(told_.WaitForCall("+" + file));
}

TEST_P(AppleWatcherTest, ChangesWithoutEventsAreNotKnown) {
    for (const Refusal refusal : {Refusal::Queue, Refusal::Stream, Refusal::Start}) {
        fake_events::Refuse(refusal);
        Watch();
        EXPECT_EQ(watcher_->Unreported(9)->incomplete, Paths{options_.gallery});
    }
    fake_events::Refuse(Refusal::None);
    Watch();
    fake_events::Report(folder_ / "Videos/Other", watcher::MustScanSubDirs | watcher::UserDropped);
    EXPECT_EQ(watcher_->Unreported(9)->incomplete, Paths());
    fake_events::Report("/", watcher::MustScanSubDirs | watcher::KernelDropped);
    EXPECT_EQ(watcher_->Unreported(9)->incomplete, Paths{options_.gallery});
    EXPECT_EQ(log_.Count("No file events to be had"), 3);
}

// The system may unite what happened to a path.
TEST_P(AppleWatcherTest, WhatIsThereSaysWhetherItIsAFolder) {
    Watch();
    fs::create_directory(At("Game"));
    fake_events::Report(
        At("Game"), watcher::ItemIsFile | watcher::ItemIsDir | watcher::ItemRemoved | watcher::ItemCreated);
    Sync();
    EXPECT_EQ(told_.Count("-" + At("Game")), 0);
}

#ifndef GALLERY_SANITIZED
bool g_refuseThreads = false;

TEST_P(AppleWatcherTest, NothingIsLeftWithoutAThread) {
    g_refuseThreads = true;
    Watch();
    g_refuseThreads = false;
    EXPECT_FALSE(watcher_);
    EXPECT_EQ(log_.Count("No thread for the file watcher"), 1);
}
#endif

}  // namespace

#ifndef GALLERY_SANITIZED
// In place of the C library's.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                              void* context) noexcept {
    static const auto real = reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
    return g_refuseThreads ? EAGAIN : real(thread, attributes, run, context);
}
#endif
