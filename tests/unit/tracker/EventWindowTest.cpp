#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/watcher/EventWindow.h"

namespace {

using namespace watcher;
using std::chrono::milliseconds;

TEST(EventWindow, FirstEventOpensIt) {
    const TimePoint start{};
    EventWindow window(milliseconds(1000));
    EXPECT_FALSE(window.Closes());
    window.Add("a", ItemCreated, start);
    window.Add("b", ItemCreated, start + milliseconds(900));
    EXPECT_FALSE(window.IsDue(start + milliseconds(999)));
    EXPECT_TRUE(window.IsDue(start + milliseconds(1000)));
    EXPECT_EQ(window.Take().size(), 2U);
    EXPECT_FALSE(window.IsDue(start + milliseconds(5000)));
    window.Add("a", ItemCreated, start + milliseconds(5000));
    EXPECT_EQ(window.Closes(), start + milliseconds(6000));
}

TEST(EventWindow, EachPathOnceInOrderOfFirstArrival) {
    EventWindow window(milliseconds(1000));
    window.Add("b", ItemCreated | ItemIsFile, {});
    window.Add("a", ItemRenamed | ItemIsFile, {});
    window.Add("b", ItemRemoved | ItemIsDir, {});
    const auto events = window.Take();
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0].path, "b");
    EXPECT_EQ(events[0].flags, ItemCreated | ItemRemoved | ItemIsDir);
    EXPECT_EQ(events[1].flags, ItemRenamed | ItemIsFile);
}

TEST(EventWindow, ClosesEarlyWhenFull) {
    EventWindow window(milliseconds(1000), 2);
    window.Add("a", ItemCreated, {});
    EXPECT_FALSE(window.IsDue({}));
    window.Add("b", ItemCreated, {});
    EXPECT_TRUE(window.IsDue({}));
}

}  // namespace
