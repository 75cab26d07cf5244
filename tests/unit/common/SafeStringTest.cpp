#include <gtest/gtest.h>

#include "common/SafeString.h"
#include "tests/unit/common/Thrown.h"

namespace {

constexpr const char* kInvalidPointer = "0x8000ffff[0]: KXP::Error::InvalidPointer";
constexpr const char* kInvalidArg = "0x8000ffff[0]: KXP::Error::InvalidArg";

TEST(SafeString, ArgumentsAreCheckedAndTheDestinationEmptied) {
    wchar_t buffer[8] = L"old";
    EXPECT_EQ(Thrown([&] { wcscpy_s(buffer, 0, nullptr); }), kInvalidArg);
    EXPECT_STREQ(buffer, L"old");
    EXPECT_EQ(Thrown([&] { wcscpy_s(buffer, 8, nullptr); }), kInvalidPointer);
    EXPECT_STREQ(buffer, L"");
    EXPECT_EQ(wcscpy_s(buffer, 4, L"abc"), 0);
    EXPECT_EQ(Thrown([&] { wcscpy_s(buffer + 2, 6, buffer); }), kInvalidArg) << "overlap";
    EXPECT_EQ(Thrown([&] { wcscpy_s(buffer, 4, L"abcd"); }), kInvalidArg);
    EXPECT_STREQ(buffer, L"");
}

TEST(SafeString, TheCountCutsOrRefuses) {
    wchar_t buffer[6];
    // Not terminated, and not read beyond the count.
    const wchar_t open[3] = {L'a', L'b', L'c'};
    EXPECT_EQ(wcsncpy_s(buffer, 6, open, 3), 0);
    EXPECT_STREQ(buffer, L"abc");
    EXPECT_EQ(wcsncpy_s(buffer, 6, L"abcd", 9), 0);
    EXPECT_STREQ(buffer, L"abcd");
    for (const size_t count : {size_t{0}, size_t{6}, size_t{7}})
        EXPECT_EQ(Thrown([&] { wcsncpy_s(buffer, 6, L"abcdef", count); }), kInvalidArg);
    EXPECT_EQ(wcsncpy_s(buffer, 6, L"abcdef", kTruncate), 80);
    EXPECT_STREQ(buffer, L"abcde");
    EXPECT_EQ(wcsncpy_s(buffer, 6, L"abcde", kTruncate), 0);
}

}  // namespace
