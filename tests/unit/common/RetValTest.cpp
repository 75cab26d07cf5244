#include <gtest/gtest.h>

#include "common/Exception.h"
#include "common/RetVal.h"

namespace KXP {
namespace {

template <typename Thrown>
RetVal Caught(Thrown thrown) {
    try {
        throw thrown;
    } catch (...) {
        return ExceptionToRetVal();
    }
}

TEST(RetVal, TextHasBothNumbersInHexadecimal) {
    EXPECT_EQ(ToStr({static_cast<int32_t>(0x80070057), "bad", 0}), "0x80070057[0]: bad");
    EXPECT_EQ(ToStr({0x103, "t", 26}), "0x00000103[1a]: t");
    EXPECT_FALSE(RetVal::Pending().Failed());
    EXPECT_EQ(RetVal::Pending().code, 0x103);
}

TEST(RetVal, NotFoundIsCalledAccessDenied) {
    EXPECT_STREQ(CodeText(static_cast<int32_t>(0x80070002)), "KXP: General access denied error");
    EXPECT_STREQ(CodeText(static_cast<int32_t>(0x80070003)),
                 "KXP: The system cannot find the specified file");
    EXPECT_STREQ(CodeText(static_cast<int32_t>(0x8008F001)), "Unknown error");
}

TEST(Exception, WhatIsTheFormattedText) {
    const Exception error(static_cast<int>(0x80004005), "x", 0);
    EXPECT_STREQ(error.what(), "0x80004005[0]: x");
    EXPECT_EQ(error.message(), "x");
    EXPECT_EQ(ExceptionText(error), "x");
    EXPECT_EQ(ExceptionText(std::runtime_error("y")), "y");
}

TEST(Exception, EveryExceptionEndsInAValue) {
    RetVal value = Caught(Exception(static_cast<int>(0x80070057), "m", 3));
    EXPECT_EQ(ToStr(value), "0x80070057[3]: m");
    value = Caught(JSONFieldError("field"));
    EXPECT_EQ(ToStr(value), "0x8008f001[0]: field");
    value = Caught(std::runtime_error("other"));
    EXPECT_EQ(ToStr(value), "0x8000ffff[0]: other");
    value = Caught(5);
    EXPECT_EQ(ToStr(value), "0x8000ffff[0]: Success");
}

}  // namespace
}  // namespace KXP
