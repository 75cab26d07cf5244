#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "common/SafeString.h"

namespace {

template <typename Call>
std::string ThrownText(Call call) {
    try {
        call();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "nothing thrown";
}

TEST(SafeString, TheWholeSourceMustFit) {
    wchar_t wide[260];
    EXPECT_EQ(wcscpy_s(wide, 260, std::wstring(259, L'x').c_str()), 0);
    EXPECT_EQ(std::wstring(wide), std::wstring(259, L'x'));
    EXPECT_EQ(ThrownText([&] { wcscpy_s(wide, 260, std::wstring(260, L'x').c_str()); }),
              "KXP::Error::InvalidArg");
    EXPECT_EQ(wide[0], L'\0');
    char narrow[4];
    EXPECT_EQ(strcpy_s(narrow, 4, "abc"), 0);
    EXPECT_STREQ(narrow, "abc");
}

TEST(SafeString, ChecksItsArgumentsInOrder) {
    char buffer[4] = "old";
    EXPECT_EQ(ThrownText([&] { strcpy_s(nullptr, 0, nullptr); }), "KXP::Error::InvalidPointer");
    EXPECT_EQ(ThrownText([&] { strcpy_s(buffer, 0, nullptr); }), "KXP::Error::InvalidArg");
    EXPECT_STREQ(buffer, "old");
    EXPECT_EQ(ThrownText([&] { strcpy_s(buffer, 4, nullptr); }), "KXP::Error::InvalidPointer");
    EXPECT_STREQ(buffer, "");
}

TEST(SafeString, TheCountCutsOrRefuses) {
    char buffer[6] = "12345";
    EXPECT_EQ(strncpy_s(buffer, 6, "abcdefgh", 3), 0);
    EXPECT_STREQ(buffer, "abc");
    EXPECT_EQ(strncpy_s(buffer, 6, "abcd", 9), 0);
    EXPECT_STREQ(buffer, "abcd");
    EXPECT_EQ(strncpy_s(buffer, 6, "abcd", 0), 0);
    EXPECT_STREQ(buffer, "");
    for (const size_t count : {size_t{0}, size_t{6}, size_t{7}})
        EXPECT_EQ(ThrownText([&] { strncpy_s(buffer, 6, "abcdef", count); }), "KXP::Error::InvalidArg");
    EXPECT_EQ(strncpy_s(buffer, 6, "abcdef", kTruncate), 80);
    EXPECT_STREQ(buffer, "abcde");
    EXPECT_EQ(strncpy_s(buffer, 6, "abcde", kTruncate), 0);
    // Not terminated, and not read beyond the count.
    const wchar_t open[3] = {L'a', L'b', L'c'};
    wchar_t wide[6];
    EXPECT_EQ(wcsncpy_s(wide, 6, open, 3), 0);
    EXPECT_STREQ(wide, L"abc");
}

TEST(SafeString, OverlapIsRefused) {
    char buffer[16] = "abcdef";
    EXPECT_EQ(ThrownText([&] { strcpy_s(buffer + 2, 14, buffer); }), "KXP::Error::InvalidArg");
    EXPECT_EQ(buffer[2], '\0');
    char other[16] = "xxxxabc";
    EXPECT_EQ(strcpy_s(other, 16, other + 4), 0);
    EXPECT_STREQ(other, "abc");
}

}  // namespace
