#include <gtest/gtest.h>

#include "tests/unit/common/Thrown.h"

namespace KXP {
namespace {

TEST(Exception, EveryExceptionEndsInAValueWithBothNumbersInHexadecimal) {
    const Exception ours(static_cast<int>(0x80070057), "m", 26);
    EXPECT_STREQ(ours.what(), "0x80070057[1a]: m");
    EXPECT_EQ(ExceptionText(ours), "m");
    EXPECT_EQ(Thrown([&] { throw ours; }), "0x80070057[1a]: m");
    EXPECT_EQ(Thrown([] { throw JSONFieldError("field"); }), "0x8008f001[0]: field");
    EXPECT_EQ(Thrown([] { throw std::runtime_error("other"); }), "0x8000ffff[0]: other");
    EXPECT_EQ(Thrown([] { throw 5; }), "0x8000ffff[0]: Success");
    EXPECT_EQ(ToStr({0x103, "t", 0}), "0x00000103[0]: t");
}

}  // namespace
}  // namespace KXP
