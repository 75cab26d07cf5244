#include <stdexcept>

#include <gtest/gtest.h>

#include "common/TextUtil.h"
#include "common/TimeUtil.h"
#include "tests/support/LogCapture.h"
#include "tests/unit/common/Thrown.h"

namespace KXP {
namespace {

using Pieces = std::vector<std::string>;

TEST(TextUtil, SplittingAtACharacterHasNoLastEmptyPiece) {
    EXPECT_EQ(SplitString("a::b::", "::"), (Pieces{"a", "b", ""}));
    EXPECT_EQ(SplitString("", "/"), Pieces{""});
    EXPECT_EQ(SplitString("a//b/", '/'), (Pieces{"a", "", "b"}));
    EXPECT_TRUE(SplitString("", '/').empty());
    EXPECT_EQ(Thrown([] { SplitString("a", ""); }), "0x80070057[0]: Empty delimeter string");
}

TEST(TimeUtil, DurationsCountWholeMillisecondsBehindTheDot) {
    LogCapture log;
    EXPECT_EQ(HHMMSSTimeTo100ns("1:02:03.4"), 37230040000);
    EXPECT_EQ(HHMMSSTimeTo100ns("99:99:99.999"), 3624399990000);
    for (const char* bad : {"01:02:03", "001:02:03.4", "1:02:03.4567", " 1:02:03.4", "1:02:03.4\n"})
        EXPECT_EQ(HHMMSSTimeTo100ns(bad), 0) << bad;
    EXPECT_TRUE(log.HasLine(1, "HHMMSSTimeTo100ns : Malformed ts string `01:02:03`"));
    EXPECT_EQ(HHMMSSTimeTo100ns(nullptr), 0);
}

}  // namespace
}  // namespace KXP
