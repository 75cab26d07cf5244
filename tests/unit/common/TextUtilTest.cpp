#include <gtest/gtest.h>

#include "common/TextUtil.h"
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

}  // namespace
}  // namespace KXP
