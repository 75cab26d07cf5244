#include <gtest/gtest.h>

#include "tests/unit/common/Thrown.h"

namespace KXP {
namespace {

TEST(RetVal, NotFoundIsCalledAccessDenied) {
    EXPECT_STREQ(CodeText(static_cast<int32_t>(0x80070002)), "KXP: General access denied error");
    EXPECT_STREQ(CodeText(static_cast<int32_t>(0x80070003)),
                 "KXP: The system cannot find the specified file");
    EXPECT_STREQ(CodeText(static_cast<int32_t>(0x8008F001)), "Unknown error");
    EXPECT_EQ(RetVal::Pending().code, 0x103);
    EXPECT_FALSE(RetVal::Pending().Failed());
}

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
